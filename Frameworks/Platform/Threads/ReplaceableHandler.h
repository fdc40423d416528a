// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "Platform/Threads/Mutex.h"

namespace QRVPlatform {

/// Holds one function, or none; for any threads. It may be replaced while it is being called.
template <typename... Arguments>
class ReplaceableHandler {
  public:
    using Function = std::function<void(Arguments...)>;

    /// Returns the previous one; a null function stands for none.
    Function replace(Function function) {
        auto replaced = std::make_shared<const Function>(std::move(function));
        {
            const LockGuard lock(mutex_);
            function_.swap(replaced);
        }
        return replaced ? *replaced : Function();
    }

    /// False when there is none.
    template <typename... Values>
    bool call(Values&&... values) const {
        const std::shared_ptr<const Function> function = current();
        if (!function || !*function) return false;
        (*function)(std::forward<Values>(values)...);
        return true;
    }

  private:
    std::shared_ptr<const Function> current() const {
        const LockGuard lock(mutex_);
        return function_;
    }

    mutable Mutex mutex_;
    std::shared_ptr<const Function> function_ QRV_GUARDED_BY(mutex_);
};

}  // namespace QRVPlatform
