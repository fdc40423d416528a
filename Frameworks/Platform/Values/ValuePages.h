// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace QRVPlatform::ValueObjects {

/// Memory for the objects of one file. They are made together and mostly released together, so they
/// share pages, which costs less time and memory than an allocation for each. A page counts its
/// living objects and ends with the last of them: a string that is kept keeps a page, not the file.
///
/// One thread takes; any thread releases. A fork finds nothing half done, because pages come from
/// the heap and have no lock of their own.
class ValuePages {
  public:
    /// AddressSanitizer finds a use after the end of an object only when the object has an
    /// allocation of its own.
#if defined(__SANITIZE_ADDRESS__)
    static constexpr bool areUsed = false;
#elif defined(__has_feature)
    static constexpr bool areUsed = !__has_feature(address_sanitizer);
#else
    static constexpr bool areUsed = true;
#endif
    static constexpr std::size_t pageSize = 4096;
    /// A smaller file is not worth a page.
    static constexpr std::size_t smallestFile = 2048;

    explicit ValuePages(std::size_t sizeOfFile) : isOpen_(areUsed && sizeOfFile >= smallestFile) {}
    ValuePages(const ValuePages&) = delete;
    ValuePages& operator=(const ValuePages&) = delete;
    ~ValuePages() {
        closePage();
    }

    /// Null when the object is to have an allocation of its own.
    void* take(std::size_t bytes) {
        const std::size_t size = (bytes + 7) & ~std::size_t{7};
        if (size > room_ && !openPage(size)) return nullptr;
        char* const place = next_;
        next_ += size;
        room_ -= size;
        ++taken_;
        return place;
    }
    /// Ends the life of what `take` gave.
    static void release(void* place) noexcept {
        const auto offset = reinterpret_cast<std::uintptr_t>(place) % pageSize;
        auto* const page = reinterpret_cast<Page*>(static_cast<char*>(place) - offset);
        releaseMany(page, 1);
    }

  private:
    struct Page {
        /// Begins with `mostObjects`; what was not taken is subtracted when the page is closed.
        alignas(8) std::atomic<std::uint32_t> living;
    };
    static constexpr std::uint32_t mostObjects = pageSize;

    static void releaseMany(Page* page, std::uint32_t count) noexcept {
        // Nobody else is left who could write.
        if (page->living.load(std::memory_order_acquire) == count ||
            page->living.fetch_sub(count, std::memory_order_acq_rel) == count)
            freePage(page);
    }
    bool openPage(std::size_t size);
    void closePage() noexcept {
        if (page_ != nullptr) releaseMany(page_, mostObjects - taken_);
    }
    static Page* newPage();
    static void freePage(Page* page) noexcept;

    const bool isOpen_;
    Page* page_ = nullptr;
    char* next_ = nullptr;
    std::size_t room_ = 0;
    std::uint32_t taken_ = 0;
};

}  // namespace QRVPlatform::ValueObjects
