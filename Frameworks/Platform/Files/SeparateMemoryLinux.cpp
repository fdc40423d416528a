// SPDX-License-Identifier: MIT
// Memory of which parts can be given back (`SeparateMemory`).

#include <sys/mman.h>
#include <unistd.h>

#include "Platform/Files/TransientContents.h"

namespace QRVPlatform {

SeparateMemory::SeparateMemory(std::size_t size) noexcept {
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    start_ = static_cast<char*>(memory);
    size_ = size;
}

SeparateMemory::~SeparateMemory() {
    if (start_ != nullptr) munmap(start_, size_);
}

void SeparateMemory::giveBackBefore(const char* place) noexcept {
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const auto end = static_cast<std::size_t>(place - start_) / pageSize * pageSize;
    if (end <= givenBack_) return;
    // It cannot fail for memory of one's own, and would only keep it.
    static_cast<void>(madvise(start_ + givenBack_, end - givenBack_, MADV_DONTNEED));
    givenBack_ = end;
}

}  // namespace QRVPlatform
