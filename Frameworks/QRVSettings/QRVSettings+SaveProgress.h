// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>

namespace QRVInside {

/// Counts the saves of this process, so that a reload can tell whether one ran beside it. The
/// thread that writes begins saves, the store's queue ends them, any thread may ask.
///
/// A save counts as ended before it stops being pending: who first asks `isPending` and then
/// `ended` misses none. The other way round there would be a moment when a finished save is
/// neither.
class SaveProgress {
  public:
    /// A save is queued.
    void begin() { ++pending_; }
    /// It is over, whatever became of it.
    void end() {
        ++ended_;
        --pending_;
    }

    /// Whether a save is queued or under way. Exact on the thread that begins them.
    [[nodiscard]] bool isPending() const { return pending_ != 0; }
    /// How many saves have ended so far.
    [[nodiscard]] std::uint64_t ended() const { return ended_; }

  private:
    std::atomic<std::uint64_t> pending_ = 0;
    std::atomic<std::uint64_t> ended_ = 0;
};

}  // namespace QRVInside
