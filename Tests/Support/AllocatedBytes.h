// SPDX-License-Identifier: MIT
#pragma once

#include <malloc.h>

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define QRV_ASKS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QRV_ASKS_SANITIZER
#endif
#endif

#ifdef QRV_ASKS_SANITIZER
#include <sanitizer/allocator_interface.h>
#endif

/// What this process has allocated and not freed.
inline std::size_t allocatedBytes() {
#ifdef QRV_ASKS_SANITIZER
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 all = mallinfo2();
    return all.uordblks + all.hblkhd;
#endif
}
