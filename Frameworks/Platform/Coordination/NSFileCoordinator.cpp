// SPDX-License-Identifier: MIT
#include "Platform/Files/NSFileCoordinator.h"

#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Coordination/FileLock.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/Files.h"
#include "Platform/Presenters/PresenterRegistry.h"

using namespace QRVPlatform;

namespace {

std::error_code lockForWriting(const std::string& path, FileLock& lock) {
    const std::string lockPath = filesBeside(path).lock;
    if (lockPath.empty()) return make_error_code(std::errc::is_a_directory);
    return FileLock::acquireExclusive(lockPath, lock);
}

}  // namespace

// Without a lock file no writer is at work, and one that starts now replaces the file as a whole.
// So reading without the lock is safe, there and wherever the lock cannot be had.
std::error_code NSFileCoordinator::coordinateReadingItemAtURL(const std::string& url,
                                                              ReadingOptions,
                                                              const Accessor& accessor) {
    const auto [path, error] = resolvedPath(url);
    if (error) return FileFailures::reported("coordinate reading", url, error);
    const FileLock lock = FileLock::shared(filesBeside(path).lock);
    accessor(path);
    return {};
}

// The access outlives the lock, so that readers need not wait for the sync of the folder. Another
// writer may come before that sync. It syncs the folder too, and each sync writes the latest name,
// so their order does not matter.
std::error_code QRVPlatform::coordinateWriting(
    const NSFileCoordinator& coordinator, const std::string& url, NSFileCoordinator::WritingOptions,
    const std::function<void(WriteAccess& access)>& accessor) {
    auto [path, error] = resolvedPath(url);
    WriteAccess access(coordinator.performer(), path);
    FileLock lock;
    if (!error) error = lockForWriting(path, lock);
    if (error) return FileFailures::reported("coordinate writing", url, error);
    accessor(access);
    return {};
}

std::error_code NSFileCoordinator::coordinateWritingItemAtURL(const std::string& url,
                                                              WritingOptions options,
                                                              const Accessor& accessor) {
    return coordinateWriting(*this, url, options, [&accessor](WriteAccess& access) {
        const WriteAccess::OnThisThread current(access);
        accessor(access.path());
    });
}

void NSFileCoordinator::addFilePresenter(NSFilePresenter& presenter) {
    PresenterRegistry::add(presenter);
}

void NSFileCoordinator::removeFilePresenter(NSFilePresenter& presenter) {
    PresenterRegistry::remove(presenter);
}

NSFilePresenter::~NSFilePresenter() = default;
