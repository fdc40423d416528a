// SPDX-License-Identifier: MIT
#include "Platform/Files/FileFailures.h"

#include <cerrno>
#include <utility>

#include "Platform/Files/Files.h"
#include "Platform/Threads/ReplaceableHandler.h"

namespace QRVPlatform {

namespace {

/// Never destroyed: threads may be at work on files while the process exits.
ReplaceableHandler<const FileFailure&>& currentHandler() {
    static auto& handler = *new ReplaceableHandler<const FileFailure&>;
    return handler;
}

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
                                       std::error_code error) {
    if (error) currentHandler().call(FileFailure{operation, path, error});
    return error;
}

void setFileFailureHandler(std::function<void(const FileFailure&)> handler) {
    currentHandler().replace(std::move(handler));
}

}  // namespace QRVPlatform
