// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>
#include <system_error>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

/// The descriptor that a host's loop polls for the main queue: readable while it is set ready, and
/// from the time set on. Closed at the start, and then nothing can be set.
class MainQueueSignal {
  public:
    /// Opens it, not ready and without a time. On an error it stays closed.
    std::error_code open() noexcept;

    [[nodiscard]] bool isOpen() const noexcept { return poll_.isOpen(); }
    /// -1 when it is closed.
    [[nodiscard]] int fd() const noexcept { return poll_.number(); }
    void setReady(bool isReady) noexcept;
    void setTime(std::optional<std::chrono::steady_clock::time_point> time) noexcept;
    /// Replaces the descriptors shared with the parent, if there are any, by new ones, not ready
    /// and without a time. `fd()` keeps its number. Closed if the system has none left.
    void startInChild() noexcept;

  private:
    void close() noexcept;

    FileDescriptor ready_;
    FileDescriptor timer_;
    FileDescriptor poll_;
};

}  // namespace QRVPlatform
