// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "Platform/Coordination/FileLock.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/FolderOwner.h"
#include "Platform/Files/NSFileCoordinator.h"

namespace QRVPlatform {

namespace {

using Clock = std::chrono::steady_clock;

// Never waits for a pipe in the place of the lock file.
constexpr int safely = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

CloseOnFork::Handle opened(const std::string& path, int flags) {
    return CloseOnFork::open(path, flags | safely);
}

/// Sets the mode after the creation, which the umask limits.
CloseOnFork::Handle created(const std::string& path) {
    constexpr mode_t mode = S_IRUSR | S_IWUSR;
    auto file = CloseOnFork::open(path, O_RDWR | O_CREAT | O_EXCL | safely, mode);
    if (file) fchmod(file->number(), mode);
    if (file) FolderOwner::give(*file, path);
    return file;
}

bool isRegular(const FileDescriptor& file) {
    struct stat status {};
    return fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Opened for writing, because some file systems lock exclusively only then.
std::error_code openOrCreate(const std::string& path, CloseOnFork::Handle& file) {
    for (;;) {
        file = opened(path, O_RDWR);
        if (!file && errno == ENOENT) file = created(path);
        if (file)
            return isRegular(*file) ? std::error_code()
                                    : make_error_code(std::errc::invalid_argument);
        if (errno == EEXIST) continue;  // Another process has created it.
        if (errno != ENOENT) return FileFailures::lastError();
        if (const auto error = FilePaths::createFolder(FilePaths::folderOf(path))) return error;
    }
}

/// Otherwise the lock file was deleted or replaced between opening and locking, and others lock
/// another one.
bool isNamedBy(const FileDescriptor& file, const std::string& path) {
    struct stat locked {};
    struct stat named {};
    return fstat(file.number(), &locked) == 0 && lstat(path.c_str(), &named) == 0 &&
           locked.st_dev == named.st_dev && locked.st_ino == named.st_ino;
}

std::error_code waitForExclusiveLock(const FileDescriptor& file) {
    while (flock(file.number(), LOCK_EX) != 0)
        if (errno != EINTR) return FileFailures::lastError();
    return {};
}

// The first pauses are short: a reader often comes just when a writer has replaced the file, and
// the writer then releases the lock within microseconds.
bool waitForSharedLock(const FileDescriptor& file, Clock::time_point deadline) {
    constexpr std::chrono::microseconds longestPause(20'000);
    std::chrono::microseconds pause(10);
    while (flock(file.number(), LOCK_SH | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK || Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, longestPause);
    }
    return true;
}

}  // namespace

// Closing alone would keep the lock while another process has the descriptor: one that was made
// without the fork handlers (vfork, clone).
FileLock::~FileLock() {
    if (isHeld()) flock(file_->number(), LOCK_UN);
}

FileLock FileLock::shared(const std::string& path) {
    const Clock::time_point deadline = Clock::now() + readerLockTimeout;
    do {
        CloseOnFork::Handle file = opened(path, O_RDONLY);
        if (!file || !isRegular(*file) || !waitForSharedLock(*file, deadline)) return {};
        if (isNamedBy(*file, path)) return FileLock(std::move(file));
    } while (Clock::now() < deadline);
    return {};
}

std::error_code FileLock::acquireExclusive(const std::string& path, FileLock& lock) {
    for (;;) {
        CloseOnFork::Handle file;
        if (const auto error = openOrCreate(path, file)) return error;
        if (const auto error = waitForExclusiveLock(*file)) return error;
        if (isNamedBy(*file, path)) {
            lock = FileLock(std::move(file));
            return {};
        }
    }
}

}  // namespace QRVPlatform
