// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

/// The descriptor that a host's loop polls for the main queue: readable while it is set ready, and
/// from the time set on.
class MainQueueSignal {
  public:
    /// Throws std::system_error when the system has no descriptors left.
    MainQueueSignal();

    [[nodiscard]] int fd() const noexcept { return poll_.number(); }
    void setReady(bool isReady) noexcept;
    void setTime(std::optional<std::chrono::steady_clock::time_point> time) noexcept;
    /// Replaces the descriptors shared with the parent by new ones, not ready and without a time;
    /// `fd()` keeps its number, or is -1 if the system has none left.
    void startInChild() noexcept;

  private:
    FileDescriptor ready_;
    FileDescriptor timer_;
    FileDescriptor poll_;
};

}  // namespace QRVPlatform
