// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Platform/Threads/WaitableProperty.h"
#include "QRVSettings/QRVSettings+Writes.h"

#include "Platform/Threads/Threads.h"

namespace QRVInside {

/// What has become of one save.
struct SaveOutcome {
    /// There was no tree to save; what could not be saved before is still missing.
    bool wasWithoutTree = false;
    /// Why nothing was saved; empty when the file was replaced.
    std::string failure;
    /// Key paths of the change records or writes that the save stood for.
    std::vector<std::string> keyPaths;
    /// Writes that were left out, because no property list can hold them.
    std::vector<RefusedWrite> refused;
    /// Whatever this process had written before was part of the save, or was replaced by it.
    bool wasWholeTree = false;
};

/// The saves of this process: how many are pending, so that a reload can tell whether one ran
/// beside it, and what could not be saved. The thread that writes begins saves, the store's queue
/// ends them, any thread may ask. A save that is pending in the parent of a forked child is none of
/// the child's.
class SaveProgress {
  public:
    /// A save is queued.
    void begin() {
        counts_.update([](Counts& counts) {
            if (!counts.areOfThisProcess()) counts.ended = counts.begun;
            counts.forks = QRVPlatform::Threads::forkCount();
            ++counts.begun;
        });
    }
    /// It is over.
    void end(const SaveOutcome& outcome);

    /// Whether a save is queued or under way. Exact on the thread that begins them.
    [[nodiscard]] bool isPending() const {
        return counts_.read([](const Counts& counts) { return counts.arePending(); });
    }
    /// How many saves have ended so far.
    [[nodiscard]] std::uint64_t ended() const {
        return counts_.read([](const Counts& counts) { return counts.ended; });
    }

    /// False when a save that was begun before the call has not ended by the deadline.
    [[nodiscard]] bool waitUntil(std::chrono::steady_clock::time_point deadline) const;

    struct Failures {
        std::string reason;  ///< of the last save that failed; empty when nothing is missing
        std::vector<std::string> keyPaths;  ///< whose last write is not in the file
    };
    [[nodiscard]] Failures failures() const;

  private:
    struct Counts {
        unsigned forks = 0;  ///< of this process, when a save began
        std::uint64_t begun = 0;
        std::uint64_t ended = 0;
        /// Why the last save of a whole tree without key paths failed.
        std::string failureOfTree;
        std::map<std::string, std::string> failures;  ///< reasons by key path
        std::string lastReason;

        [[nodiscard]] bool areOfThisProcess() const {
            return forks == QRVPlatform::Threads::forkCount();
        }
        [[nodiscard]] bool arePending() const { return begun != ended && areOfThisProcess(); }
    };
    QRVPlatform::WaitableProperty<Counts> counts_;
};

}  // namespace QRVInside
