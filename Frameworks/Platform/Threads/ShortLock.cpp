// SPDX-License-Identifier: MIT
#include "Platform/Threads/ShortLock.h"

#include <chrono>
#include <thread>

namespace QRVPlatform {

// The holder releases the lock within a moment if it is running at all. On a single processor it
// runs only when this thread yields.
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
