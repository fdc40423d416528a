// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <thread>

#include "Platform/Threads/Threads.h"

namespace QRVPlatform {

/// What belongs to one thread of a process: the one that asks first, in a forked child again.
class ThreadAffinity {
  public:
    /// Receives the name of the function that was called on another thread.
    using Report = void (*)(const char* function);
    explicit ThreadAffinity(Report report) : report_(report) {}

    /// On another thread: reports, and then ends the process by an abort.
    void require(const char* function) {
        const unsigned forks = Threads::forkCount();
        if (forks_ != forks) {
            forks_ = forks;
            owner_ = std::thread::id();
        }
        std::thread::id owner;
        const std::thread::id self = std::this_thread::get_id();
        if (!owner_.compare_exchange_strong(owner, self) && owner != self) fail(function);
    }

  private:
    [[noreturn]] void fail(const char* function) const;
    Report report_;
    std::atomic<std::thread::id> owner_{};
    std::atomic<unsigned> forks_ = 0;
};

}  // namespace QRVPlatform
