// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <utility>

#include "Platform/Threads/Mutex.h"

namespace QRVPlatform {

/// A property that any thread may read and change, and on which threads may wait.
template <typename Value>
class WaitableProperty {
  public:
    /// Returns what `reader(value)` returns; a change waits for it.
    template <typename Reader>
    auto read(Reader&& reader) const {
        const LockGuard guard(mutex_);
        return reader(value_);
    }
    /// Returns what `edit(value)` returns, after a change in place that others see whole. Wakes the
    /// threads that wait.
    template <typename Edit>
    auto update(Edit&& edit) {
        const LockGuard guard(mutex_);
        changed_.notify_all();
        return edit(value_);
    }
    /// Waits until `condition(value)` is true; false when it is not by the deadline.
    template <typename Condition>
    bool waitUntil(std::chrono::steady_clock::time_point deadline, Condition&& condition) const {
        MutexLock lock(mutex_);
        while (!condition(value_)) {
            if (std::chrono::steady_clock::now() >= deadline) return false;
            lock.waitFor(changed_, deadline);
        }
        return true;
    }

  private:
    mutable Mutex mutex_;
    mutable std::condition_variable changed_;
    Value value_ QRV_GUARDED_BY(mutex_){};
};

}  // namespace QRVPlatform
