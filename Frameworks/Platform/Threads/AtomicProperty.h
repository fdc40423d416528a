// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "Platform/Threads/ShortLock.h"

namespace QRVPlatform {

/// A property that any thread may read and replace: a reader gets the value before or after a
/// replacement, whole.
template <typename Value>
class AtomicProperty {
  public:
    AtomicProperty() = default;
    explicit AtomicProperty(Value value) : value_(std::move(value)) {}

    [[nodiscard]] Value load() const {
        const LockGuard guard(lock_);
        return value_;
    }
    /// Returns what `reader(value)` returns; a replacement waits for it.
    template <typename Reader>
    auto read(Reader&& reader) const {
        const LockGuard guard(lock_);
        return reader(value_);
    }
    /// The value without the lock, for a thread that alone changes what it reads there: all other
    /// threads only read that part.
    [[nodiscard]] const Value& ofItsWriter() const noexcept QRV_NOT_CHECKED { return value_; }
    /// What `edit(value)` returns, after a change in place that readers see whole. An old part that
    /// `edit` returns is destroyed after the lock is released.
    template <typename Edit>
    auto update(Edit&& edit) {
        const LockGuard guard(lock_);
        return edit(value_);
    }
    /// The old value is destroyed after the lock is released.
    void store(Value value) {
        const LockGuard guard(lock_);
        std::swap(value_, value);
    }

  private:
    mutable ShortLock lock_;
    Value value_ QRV_GUARDED_BY(lock_){};
};

}  // namespace QRVPlatform
