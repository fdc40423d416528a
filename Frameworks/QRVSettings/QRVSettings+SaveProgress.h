// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>

#include "Platform/Threads/Threads.h"

namespace QRVInside {

/// Counts the saves of this process, so that a reload can tell whether one ran beside it. The
/// thread that writes begins saves, the store's queue ends them, any thread may ask.
///
/// A save counts as ended before it stops being pending: who first asks `isPending` and then
/// `ended` misses none. The other way round there would be a moment when a finished save is
/// neither. A save that is pending in the parent of a forked child is none of the child's.
class SaveProgress {
  public:
    /// A save is queued.
    void begin() {
        if (!isOfThisProcess()) {
            forks_ = QRVPlatform::Threads::forkCount();
            pending_ = 0;
        }
        ++pending_;
    }
    /// It is over, whatever became of it.
    void end() {
        ++ended_;
        --pending_;
    }

    /// Whether a save is queued or under way. Exact on the thread that begins them.
    [[nodiscard]] bool isPending() const { return isOfThisProcess() && pending_ != 0; }
    /// How many saves have ended so far.
    [[nodiscard]] std::uint64_t ended() const { return ended_; }

  private:
    [[nodiscard]] bool isOfThisProcess() const {
        return forks_ == QRVPlatform::Threads::forkCount();
    }

    std::atomic<unsigned> forks_ = 0;
    std::atomic<std::uint64_t> pending_ = 0;
    std::atomic<std::uint64_t> ended_ = 0;
};

}  // namespace QRVInside
