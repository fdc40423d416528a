// SPDX-License-Identifier: MIT
#pragma once

// The outline of a file in the binary format: header, objects, table of their offsets, trailer.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace QRVPlatform::PropertyLists {

/// A big-endian number of 1 to 8 bytes that ends before `end`. A file begins with eight bytes that
/// belong to no number, so that eight can be loaded at once.
inline std::uint64_t unsignedBefore(const char* end, std::size_t size) noexcept {
    std::uint64_t word;
    std::memcpy(&word, end - sizeof word, sizeof word);
    if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
    return word & (~std::uint64_t{0} >> (64 - 8 * size));
}

/// Where the parts of the file are. All sums stay far below 2^64, because each term has been
/// compared with the size of the file.
struct BinaryLayout {
    static constexpr std::size_t headerSize = 8;

    std::size_t offsetSize = 0;
    std::size_t referenceSize = 0;
    std::size_t objectCount = 0;
    std::size_t topObject = 0;
    std::size_t offsetTable = 0;
};

/// Throws ReadFailure for an outline that does not fit the file.
BinaryLayout readBinaryLayout(std::string_view bytes);

}  // namespace QRVPlatform::PropertyLists
