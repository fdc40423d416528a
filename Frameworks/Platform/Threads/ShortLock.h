// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

#include "Platform/Threads/ThreadSafety.h"

namespace QRVPlatform {

/// A lock for the few instructions of a look-up or a change. It takes one byte, because every
/// dictionary of a tree has one, and one atomic instruction, because every read locks one. A thread
/// that has to wait yields at first, and then sleeps.
class QRV_LOCK ShortLock {
  public:
    void lock() noexcept QRV_ACQUIRES() {
        while (isTaken_.exchange(true, std::memory_order_acquire)) waitUntilFree();
    }
    void unlock() noexcept QRV_RELEASES() { isTaken_.store(false, std::memory_order_release); }

  private:
    void waitUntilFree() const noexcept;
    std::atomic<bool> isTaken_{false};
};

}  // namespace QRVPlatform
