// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <thread>

namespace QRVPlatform {

/// What belongs to one thread: the one that asks first. Inner header of the library.
class ThreadAffinity {
  public:
    /// Ends the process, with a line in the system log, when this is another thread.
    void require(const char* function) {
        std::thread::id owner;
        const std::thread::id self = std::this_thread::get_id();
        if (!owner_.compare_exchange_strong(owner, self) && owner != self) fail(function);
    }

  private:
    [[noreturn]] static void fail(const char* function);
    std::atomic<std::thread::id> owner_{};
};

}  // namespace QRVPlatform
