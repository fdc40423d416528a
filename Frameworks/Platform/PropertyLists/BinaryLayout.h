// SPDX-License-Identifier: MIT
#pragma once

// The outline of a file in the binary format: header, objects, table of their offsets, trailer.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace QRVPlatform::PropertyLists {

/// Big-endian bytes; at most eight.
inline std::uint64_t unsignedOf(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) value = value << 8U | static_cast<unsigned char>(byte);
    return value;
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
