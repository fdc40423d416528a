// SPDX-License-Identifier: MIT
#include <pthread.h>

#include <system_error>

#include "Platform/Threads/Threads.h"

namespace QRVPlatform {

void Threads::nameCurrentThread(const std::string& label) {
    constexpr std::size_t longestName = 15;
    const std::string tail = label.substr(label.rfind('.') + 1, longestName);
    pthread_setname_np(pthread_self(), tail.c_str());
}

void Threads::observeForks(void (*before)(), void (*inParent)(), void (*inChild)()) {
    if (const int error = pthread_atfork(before, inParent, inChild); error != 0)
        throw std::system_error(error, std::generic_category(), "observing forks");
}

}  // namespace QRVPlatform
