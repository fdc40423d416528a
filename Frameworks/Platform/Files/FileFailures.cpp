// SPDX-License-Identifier: MIT
#include "Platform/Files/FileFailures.h"

#include <cerrno>
#include <set>
#include <tuple>
#include <utility>

#include "Platform/Files/Files.h"
#include "Platform/Threads/Mutex.h"
#include "Platform/Threads/ReplaceableHandler.h"

namespace QRVPlatform {

namespace {

/// Never destroyed: threads may be at work on files while the process exits.
ReplaceableHandler<const FileFailure&>& currentHandler() {
    static auto& handler = *new ReplaceableHandler<const FileFailure&>;
    return handler;
}

class ReportedFailures {
  public:
    /// True the first time.
    bool insert(const std::string& operation, const std::string& path, const std::string& keyPath) {
        const LockGuard lock(mutex_);
        return failures_.emplace(operation, path, keyPath).second;
    }

  private:
    Mutex mutex_;
    std::set<std::tuple<std::string, std::string, std::string>> failures_ QRV_GUARDED_BY(mutex_);
};

}  // namespace

std::error_code FileFailures::lastError() {
    return {errno, std::generic_category()};
}

bool FileFailures::isShortage(std::error_code error) {
    return error == std::errc::too_many_files_open ||
           error == std::errc::too_many_files_open_in_system ||
           error == std::errc::not_enough_memory || error == std::errc::no_space_on_device;
}

std::error_code FileFailures::reported(const std::string& operation, const std::string& path,
                                       std::error_code error, const std::string& keyPath) {
    if (error) currentHandler().call(FileFailure{operation, path, error, keyPath});
    return error;
}

void FileFailures::reportOnce(const std::string& operation, const std::string& path,
                              std::error_code error, const std::string& keyPath) {
    static auto& reportedFailures = *new ReportedFailures;
    if (reportedFailures.insert(operation, path, keyPath))
        reported(operation, path, error, keyPath);
}

bool FileFailures::isRefusal(std::error_code error) {
    return error == std::errc::operation_not_permitted ||
           error == std::errc::operation_not_supported ||
           error == std::errc::function_not_supported;
}

void setFileFailureHandler(std::function<void(const FileFailure&)> handler) {
    currentHandler().replace(std::move(handler));
}

void reportFileFailure(const FileFailure& failure) {
    currentHandler().call(failure);
}

}  // namespace QRVPlatform
