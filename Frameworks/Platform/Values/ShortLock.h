// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>

/// A lock for the few instructions of a look-up or a change. One word, because there is one for
/// every dictionary of a tree; a thread that has to wait sleeps in the kernel.
class ShortLock {
  public:
    void lock() noexcept {
        std::uint32_t expected = free;
        if (state_.compare_exchange_strong(expected, taken, std::memory_order_acquire)) return;
        while (state_.exchange(awaited, std::memory_order_acquire) != free) state_.wait(awaited);
    }
    void unlock() noexcept {
        if (state_.exchange(free, std::memory_order_release) == awaited) state_.notify_one();
    }

  private:
    static constexpr std::uint32_t free = 0;
    static constexpr std::uint32_t taken = 1;
    static constexpr std::uint32_t awaited = 2;
    std::atomic<std::uint32_t> state_{free};
};
