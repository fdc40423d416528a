// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "Platform/Threads/ThreadSafety.h"

namespace QRVPlatform {

/// A mutex whose use clang checks.
class QRV_LOCK Mutex {
  public:
    void lock() QRV_ACQUIRES() { mutex_.lock(); }
    void unlock() QRV_RELEASES() { mutex_.unlock(); }

  private:
    friend class MutexLock;
    std::mutex mutex_;
};

/// Holds a mutex; can unlock it, lock it again, and wait for a condition.
class QRV_SCOPED_LOCK MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) QRV_ACQUIRES(mutex) : lock_(mutex.mutex_) {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;
    ~MutexLock() QRV_RELEASES() {}

    void lock() QRV_ACQUIRES() { lock_.lock(); }
    void unlock() QRV_RELEASES() { lock_.unlock(); }
    /// Both may return early: the caller checks the condition again.
    void waitFor(std::condition_variable& changed) { changed.wait(lock_); }
    void waitFor(std::condition_variable& changed, std::chrono::steady_clock::time_point deadline) {
        changed.wait_until(lock_, deadline);
    }

  private:
    std::unique_lock<std::mutex> lock_;
};

}  // namespace QRVPlatform
