// SPDX-License-Identifier: MIT
#include "Platform/Dispatch/ThreadAffinity.h"

#include <cstdlib>

#include "Platform/System/System.h"

namespace QRVPlatform {

void ThreadAffinity::fail(const char* function) {
    NSLog("%@ was called on a thread other than the one that it belongs to", {function});
    std::abort();
}

}  // namespace QRVPlatform
