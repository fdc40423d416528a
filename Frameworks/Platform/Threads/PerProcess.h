// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "Platform/Threads/ThreadSafety.h"
#include "Platform/Threads/Threads.h"

namespace QRVPlatform {

/// The one `T` of this process: made at the first use, never destroyed, because threads may use it
/// while the process exits. A forked child gets a `T` of its own. What `T` has:
///
/// - `T()` makes the first one. What it throws, the first use throws.
/// - `lock()` and `unlock()`: no fork happens while another thread holds this lock, so that a child
///   finds the parent's `T` whole.
/// - `T(T& parent)` makes the child's one, in the child. The parent's is locked and stays so: the
///   child has only the thread that forked. It is never destroyed, because that could act on what
///   is the parent's, such as threads and watches. It must not throw.
///
/// A `T` may stand for several objects, all queues of the process for example: its `lock()` then
/// takes the locks of all of them. A fork takes the locks of different types in the reverse order
/// of their first uses. A type that is used while the lock of another is held must therefore be
/// used before that other one.
template <typename T>
class PerProcess {
  public:
    PerProcess() = delete;

    static T& current() {
        static const bool isMade = make();
        static_cast<void>(isMade);
        return current_->object;
    }

  private:
    /// Refers to its parent's, which is never destroyed.
    struct Generation {
        T object;
        Generation* parent = nullptr;
    };

    static bool make() {
        auto first = std::make_unique<Generation>();
        current_ = first.get();
        Threads::observeForks(lock, unlock, startInChild);
        static_cast<void>(first.release());
        return true;
    }
    static void lock() QRV_NOT_CHECKED { current_->object.lock(); }
    static void unlock() QRV_NOT_CHECKED { current_->object.unlock(); }
    static void startInChild() QRV_NOT_CHECKED {
        current_ = new Generation{T(current_->object), current_};
    }

    static inline Generation* current_ = nullptr;
};

}  // namespace QRVPlatform
