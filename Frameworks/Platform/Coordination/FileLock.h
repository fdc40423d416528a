// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <system_error>
#include <utility>

#include "Platform/Descriptors/CloseOnFork.h"

namespace QRVPlatform {

/// An advisory lock on a lock file, held as long as this lives, and never by a forked child.
/// Different locks exclude each other also within one process.
class FileLock {
  public:
    FileLock() = default;
    FileLock(FileLock&&) = default;
    FileLock& operator=(FileLock&&) = default;
    ~FileLock();

    [[nodiscard]] bool isHeld() const { return file_ != nullptr && file_->isOpen(); }

    /// Shared; creates nothing. Not held when there is no lock file, when it cannot be used, or
    /// when an exclusive holder keeps it for longer than `readerLockTimeout`.
    static FileLock shared(const std::string& path);

    /// Makes `lock` an exclusive one. Waits as long as it takes; creates the lock file and the
    /// folders above.
    static std::error_code acquireExclusive(const std::string& path, FileLock& lock);

  private:
    explicit FileLock(CloseOnFork::Handle file) : file_(std::move(file)) {}
    CloseOnFork::Handle file_;
};

}  // namespace QRVPlatform
