// SPDX-License-Identifier: MIT
#include "Platform/Values/NSDate.h"

#include <chrono>

NSDate NSDate::now() {
    const std::chrono::duration<double> sinceEpoch =
        std::chrono::system_clock::now().time_since_epoch();
    return dateWithTimeIntervalSince1970(sinceEpoch.count());
}
