// SPDX-License-Identifier: MIT
#pragma once

// Searches in text, eight bytes at a time.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace QRVPlatform::PropertyLists {

/// Eight bytes of a text, the first one lowest.
inline std::uint64_t wordAt(const char* bytes) noexcept {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

/// Eight bytes of `character`.
constexpr std::uint64_t wordOf(char character) noexcept {
    return 0x0101010101010101ULL * static_cast<unsigned char>(character);
}

/// How many bytes at the start of `word` are zero.
constexpr std::size_t zeroBytesOf(std::uint64_t word) noexcept {
    return static_cast<std::size_t>(std::countr_zero(word)) / 8;
}

/// The place of the first zero byte in `word`; 8 when there is none.
constexpr std::size_t firstZeroByteOf(std::uint64_t word) noexcept {
    // A borrow marks wrong bytes only after the first right one.
    return zeroBytesOf((word - wordOf('\x01')) & ~word & wordOf('\x80'));
}

}  // namespace QRVPlatform::PropertyLists
