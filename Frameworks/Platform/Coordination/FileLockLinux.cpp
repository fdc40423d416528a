// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "Platform/Coordination/FileLock.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/FolderOwner.h"
#include "Platform/Files/NSFileCoordinator.h"

namespace QRVPlatform {

namespace {

using Clock = std::chrono::steady_clock;

// Never waits for a pipe in the place of the file.
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

bool isRegular(const FileDescriptor& file, struct stat& status) {
    return fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Opened for writing, because some file systems lock exclusively only then.
std::error_code openOrCreate(const std::string& path, CloseOnFork::Handle& file,
                             struct stat& status) {
    for (;;) {
        file = opened(path, O_RDWR);
        if (!file && errno == ENOENT) file = created(path);
        if (file)
            return isRegular(*file, status) ? std::error_code()
                                            : make_error_code(std::errc::invalid_argument);
        if (errno == EEXIST) continue;  // Another process has created it.
        if (errno != ENOENT) return FileFailures::lastError();
        if (const auto error = FilePaths::createFolder(FilePaths::folderOf(path))) return error;
    }
}

/// Otherwise the file was deleted or replaced between opening and locking, and others lock another
/// one.
bool isNamedBy(const struct stat& locked, const std::string& path) {
    struct stat named {};
    return lstat(path.c_str(), &named) == 0 && locked.st_dev == named.st_dev &&
           locked.st_ino == named.st_ino;
}

// The first pauses are short: those who wait for each other for the sake of one replacement do so
// for microseconds.
std::error_code pollForLock(const FileDescriptor& file, int operation, Clock::time_point deadline) {
    constexpr std::chrono::microseconds longestPause(5'000);
    std::chrono::microseconds pause(10);
    while (flock(file.number(), operation | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return FileFailures::lastError();
        if (Clock::now() >= deadline) return make_error_code(std::errc::timed_out);
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, longestPause);
    }
    return {};
}

std::error_code waitForLock(const FileDescriptor& file) {
    while (flock(file.number(), LOCK_EX) != 0)
        if (errno != EINTR) return FileFailures::lastError();
    return {};
}

/// Waits as `wait` says, and sets its handler to null when that was called.
std::error_code waitForLock(const FileDescriptor& file, LockWait& wait) {
    const std::error_code error = pollForLock(file, LOCK_EX, Clock::time_point::min());
    if (error != std::errc::timed_out) return error;
    if (const auto onWaiting = std::exchange(wait.onWaiting, nullptr)) onWaiting();
    return wait.deadline ? pollForLock(file, LOCK_EX, *wait.deadline) : waitForLock(file);
}

/// Readers and writers lock the file at `path` itself.
bool locksFileItself(const std::string& path) {
    struct statfs system {};
    if (statfs(FilePaths::folderOf(path).c_str(), &system) != 0)
        return errno == ENOENT || errno == ENOTDIR;
    return !FileStatus::movesOpenFilesAway(system);
}

}  // namespace

// Closing alone would keep the lock while another process has the descriptor: one that was made
// without the fork handlers (vfork, clone).
void FileLock::release() {
    if (isHeld()) flock(file_->number(), LOCK_UN);
    isReleased_ = true;
}

bool FileLock::isOn(const std::string& path) const {
    struct stat locked {};
    return isHeld() && fstat(file_->number(), &locked) == 0 && isNamedBy(locked, path);
}

FileLock FileLock::withinTimeout(const std::string& path, int operation) {
    const Clock::time_point deadline = Clock::now() + readerLockTimeout;
    do {
        CloseOnFork::Handle file = opened(path, O_RDONLY);
        struct stat status {};
        if (!file || !isRegular(*file, status)) return {};
        if (pollForLock(*file, operation, deadline)) return {};
        if (isNamedBy(status, path)) return FileLock(std::move(file));
    } while (Clock::now() < deadline);
    return {};
}

FileLock FileLock::ofReader(const std::string& path) {
    return withinTimeout(locksFileItself(path) ? path : filesBeside(path).lock, LOCK_SH);
}

FileLock FileLock::againstReaders(const std::string& path) {
    return locksFileItself(path) ? withinTimeout(path, LOCK_EX) : FileLock();
}

std::error_code FileLock::acquireExclusive(const std::string& lockPath, FileLock& lock,
                                           const LockWait& wait) {
    LockWait waitLeft = wait;
    for (;;) {
        CloseOnFork::Handle file;
        struct stat status {};
        if (const auto error = openOrCreate(lockPath, file, status)) return error;
        if (const auto error = waitForLock(*file, waitLeft)) return error;
        if (isNamedBy(status, lockPath)) {
            lock = FileLock(std::move(file));
            return {};
        }
    }
}

}  // namespace QRVPlatform
