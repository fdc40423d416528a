// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

#include "Platform/Dispatch/ThreadAffinity.h"

namespace QRVInside {

/// Called by every function that belongs to the host's thread; in a build with assertions the
/// process ends when it is another one. There, what was read from a layer could enter the cache
/// after it has changed.
#ifdef NDEBUG
inline void requireHostThread() noexcept {}
#else
inline void requireHostThread(const char* function = __builtin_FUNCTION()) {
    static QRVPlatform::ThreadAffinity host;
    host.require(function);
}
#endif

}  // namespace QRVInside
