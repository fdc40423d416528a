// SPDX-License-Identifier: MIT
#include "Platform/Threads/ShortLock.h"

#include <chrono>
#include <thread>

namespace QRVPlatform {

// Whoever holds the lock is through within a moment when it runs at all; on a single processor it
// may need ours.
void ShortLock::waitUntilFree() const noexcept {
    constexpr int patience = 100;
    for (int round = 0; isTaken_.load(std::memory_order_relaxed); ++round) {
        if (round < patience)
            std::this_thread::yield();
        else
            std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
}

}  // namespace QRVPlatform
