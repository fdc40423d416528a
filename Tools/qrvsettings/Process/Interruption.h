// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>

namespace Tool {

/// SIGINT and SIGTERM as something to wait for. Once one of these is made neither ends the process,
/// not even where it was ignored. Make it before the process starts a thread.
class Interruption {
  public:
    enum class Reason { Readable, Interrupted, TimedOut };

    /// Throws std::system_error when the system has no descriptors left.
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    /// Waits until one of the signals has come, the deadline has passed, or the descriptor is
    /// readable, in this order of precedence.
    [[nodiscard]] Reason waitFor(
        int descriptor, std::optional<std::chrono::steady_clock::time_point> deadline) const;

  private:
    int signals_;
};

}  // namespace Tool
