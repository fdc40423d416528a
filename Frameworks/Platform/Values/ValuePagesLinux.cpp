// SPDX-License-Identifier: MIT
#include "Platform/Values/ValuePages.h"

#include <stdlib.h>

#include <new>

namespace QRVPlatform::ValueObjects {
namespace {

// The heap keeps the size of the next block in these bytes, so that pages lie side by side.
constexpr std::size_t heapBytes = 8;

}  // namespace

ValuePages::Page* ValuePages::newPage() {
    void* memory = nullptr;
    if (posix_memalign(&memory, pageSize, pageSize - heapBytes) != 0) throw std::bad_alloc();
    return new (memory) Page{mostObjects};
}

void ValuePages::freePage(Page* page) noexcept {
    page->~Page();
    free(page);
}

// A large object leaves no gap behind: it does without a page when the current one has room left
// for many small ones.
bool ValuePages::openPage(std::size_t size) {
    constexpr std::size_t largestObject = 1024;
    constexpr std::size_t largestGap = 256;
    if (!isOpen_ || size > largestObject || room_ > largestGap) return false;
    Page* const page = newPage();
    closePage();
    page_ = page;
    next_ = reinterpret_cast<char*>(page + 1);
    room_ = pageSize - heapBytes - sizeof(Page);
    taken_ = 0;
    return true;
}

}  // namespace QRVPlatform::ValueObjects
