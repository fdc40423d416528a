// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "Platform/Descriptors/CloseOnFork.h"

namespace QRVPlatform {

/// How a writer waits for other writers.
struct LockWait {
    /// From then on std::errc::timed_out; without one, a writer waits as long as it takes.
    std::optional<std::chrono::steady_clock::time_point> deadline{};
    /// Called once, on the thread that waits, when the lock cannot be had at once. May be null.
    std::function<void()> onWaiting{};
};

/// An advisory lock on a file, held as long as this lives, and never by a forked child. Different
/// locks exclude each other also within one process. What is locked is the file that the path
/// names when the lock is taken.
class FileLock {
  public:
    FileLock() = default;
    FileLock(FileLock&& other) noexcept { *this = std::move(other); }
    /// The other one gets the lock that this one had.
    FileLock& operator=(FileLock&& other) noexcept {
        std::swap(file_, other.file_);
        std::swap(isReleased_, other.isReleased_);
        return *this;
    }
    ~FileLock() { release(); }

    /// Ends the lock. The file stays open as long as this lives: closing the last descriptor of a
    /// file that was replaced frees its space, which may take as long as a sync.
    void release();
    [[nodiscard]] bool isHeld() const {
        return file_ != nullptr && file_->isOpen() && !isReleased_;
    }
    /// Held, and `path` still names the file.
    [[nodiscard]] bool isOn(const std::string& path) const;

    /// The lock of a reader of the file at `path`: shared, on that file itself. Creates nothing.
    /// Not held when there is no file, when it cannot be locked, or when an exclusive holder keeps
    /// it for longer than `readerLockTimeout`.
    ///
    /// Some file systems cannot replace an open file in one step: network ones and FUSE. There it
    /// is a shared lock on the lock file of the writers.
    static FileLock ofReader(const std::string& path);

    /// The lock that keeps readers out while the file at `path` changes: exclusive, on that file
    /// itself. Not held in the same cases, nor on those file systems.
    static FileLock againstReaders(const std::string& path);

    /// Makes `lock` the exclusive lock of a writer, on a lock file. Creates the lock file and the
    /// folders above.
    static std::error_code acquireExclusive(const std::string& lockPath, FileLock& lock,
                                            const LockWait& wait = {});

  private:
    explicit FileLock(CloseOnFork::Handle file) : file_(std::move(file)) {}
    static FileLock withinTimeout(const std::string& path, int operation);

    CloseOnFork::Handle file_;
    bool isReleased_ = false;
};

}  // namespace QRVPlatform
