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

using AccessAccessor = std::function<void(WriteAccess& access)>;

std::error_code lockForWriting(const std::string& path, const LockWait& wait, FileLock& lock) {
    const std::string lockPath = filesBeside(path).lock;
    if (lockPath.empty()) return make_error_code(std::errc::is_a_directory);
    return FileLock::acquireExclusive(lockPath, lock, wait);
}

// The access outlives the lock, so that nobody need wait for the sync of the folder. Another writer
// may come before that sync. It syncs the folder too, and each sync writes the latest name, so
// their order does not matter.
std::error_code coordinate(const NSFilePresenter* performer, const std::string& url,
                           WriteAccess::ReadersWait readersWait, const LockWait& wait,
                           const AccessAccessor& accessor) {
    auto [path, error] = resolvedPath(url);
    WriteAccess access(performer, path, readersWait);
    FileLock lock;
    if (!error) error = lockForWriting(path, wait, lock);
    if (error) return FileFailures::reported("coordinate writing", url, error);
    access.lockAgainstReaders();
    accessor(access);
    return {};
}

}  // namespace

// Where the lock cannot be had, reading without it is safe, because writers replace the file as a
// whole.
std::error_code NSFileCoordinator::coordinateReadingItemAtURL(const std::string& url,
                                                              ReadingOptions,
                                                              const Accessor& accessor) {
    const auto [path, error] = resolvedPath(url);
    if (error) return FileFailures::reported("coordinate reading", url, error);
    FileLock lock;
    if (WriteAccess::onThisThreadTo(path) == nullptr) lock = FileLock::ofReader(path);
    accessor(path);
    return {};
}

std::error_code QRVPlatform::coordinateWriting(const NSFileCoordinator& coordinator,
                                               const std::string& url,
                                               NSFileCoordinator::WritingOptions,
                                               const AccessAccessor& accessor,
                                               const LockWait& wait) {
    return coordinate(coordinator.performer(), url, WriteAccess::ReadersWait::DuringReplacement,
                      wait, accessor);
}

// The accessor of a host may change the file by any means, at any moment.
std::error_code NSFileCoordinator::coordinateWritingItemAtURL(const std::string& url,
                                                              WritingOptions,
                                                              const Accessor& accessor) {
    return coordinate(performer_, url, WriteAccess::ReadersWait::DuringAccess, {},
                      [&accessor](WriteAccess& access) {
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
