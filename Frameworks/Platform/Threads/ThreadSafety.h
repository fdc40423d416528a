// SPDX-License-Identifier: MIT
#pragma once

// Annotations of locks, which clang checks while it compiles (-Wthread-safety): which lock guards a
// variable, and which functions need it held. Other compilers ignore them.

#if defined(__clang__)
#define QRV_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define QRV_THREAD_SAFETY(attribute)
#endif

#define QRV_LOCK QRV_THREAD_SAFETY(capability("lock"))
#define QRV_SCOPED_LOCK QRV_THREAD_SAFETY(scoped_lockable)
#define QRV_GUARDED_BY(lock) QRV_THREAD_SAFETY(guarded_by(lock))
#define QRV_REQUIRES(lock) QRV_THREAD_SAFETY(requires_capability(lock))
#define QRV_ACQUIRES(...) QRV_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define QRV_RELEASES(...) QRV_THREAD_SAFETY(release_capability(__VA_ARGS__))
#define QRV_NOT_CHECKED QRV_THREAD_SAFETY(no_thread_safety_analysis)

namespace QRVPlatform {

/// Holds a lock as long as this lives.
template <typename Lock>
class QRV_SCOPED_LOCK LockGuard {
  public:
    explicit LockGuard(Lock& lock) QRV_ACQUIRES(lock) : lock_(lock) { lock_.lock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;
    ~LockGuard() QRV_RELEASES() { lock_.unlock(); }

  private:
    Lock& lock_;
};

}  // namespace QRVPlatform
