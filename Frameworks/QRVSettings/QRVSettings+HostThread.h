// SPDX-License-Identifier: MIT
#pragma once

// The rule that most functions belong to one thread.

#include "QRVSettings/QRVSettings+State.h"

namespace QRVInside {

/// Called by every function that belongs to the host's thread. In a build with assertions, a call
/// on another thread ends the process: there, a value read from a layer could enter the cache after
/// that layer has changed.
#ifdef NDEBUG
inline void requireHostThread() noexcept {}
#else
inline void requireHostThread(const char* function = __builtin_FUNCTION()) {
    StoreInside::state().hostThread.require(function);
}
#endif

}  // namespace QRVInside
