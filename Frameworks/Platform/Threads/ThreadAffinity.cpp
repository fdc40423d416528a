// SPDX-License-Identifier: MIT
#include "Platform/Threads/ThreadAffinity.h"

#include <cstdlib>

namespace QRVPlatform {

void ThreadAffinity::fail(const char* function) const {
    report_(function);
    std::abort();
}

}  // namespace QRVPlatform
