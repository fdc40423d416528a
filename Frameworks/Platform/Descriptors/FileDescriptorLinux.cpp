// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cerrno>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

bool FileDescriptor::close() noexcept {
    if (!isOpen()) return true;
    // An interrupted close has closed: a retry could close another thread's new descriptor.
    return ::close(std::exchange(number_, -1)) == 0 || errno == EINTR;
}

}  // namespace QRVPlatform
