// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/BinaryLayout.h"

#include "Platform/PropertyLists/Readers.h"

namespace QRVPlatform::PropertyLists {
namespace {

constexpr std::size_t trailerSize = 32;

}  // namespace

BinaryLayout readBinaryLayout(std::string_view bytes) {
    if (bytes.size() < BinaryLayout::headerSize + 1 + trailerSize)
        fail("the file is too short", bytes.size());
    if (!bytes.starts_with("bplist0")) fail("unknown version of the binary format", 6);
    const std::size_t trailer = bytes.size() - trailerSize;
    const std::size_t room = trailer - BinaryLayout::headerSize;
    const auto field = [bytes, trailer](std::size_t offset, std::size_t size) {
        return unsignedBefore(bytes.data() + trailer + offset + size, size);
    };
    const std::uint64_t offsetSize = field(6, 1);
    const std::uint64_t referenceSize = field(7, 1);
    const std::uint64_t objectCount = field(8, 8);
    const std::uint64_t topObject = field(16, 8);
    const std::uint64_t offsetTable = field(24, 8);
    if (offsetSize < 1 || offsetSize > 8) fail("bad size of an offset", trailer + 6);
    if (referenceSize < 1 || referenceSize > 8) fail("bad size of a reference", trailer + 7);
    if (objectCount < 1 || objectCount > room) fail("bad number of objects", trailer + 8);
    if (topObject >= objectCount) fail("the top object does not exist", trailer + 16);
    if (offsetTable <= BinaryLayout::headerSize || offsetTable > trailer) {
        fail("the offset table is outside the file", trailer + 24);
    }
    // A gap, or a table that runs into the trailer, shows that bytes are missing.
    if (offsetTable + objectCount * offsetSize != trailer) {
        fail("the offset table does not end where the trailer begins", trailer + 24);
    }
    // Each value has at most one key, so no tree within the limit has more objects.
    if (objectCount > 2 * maximumValues) fail(tooManyValues(), trailer + 8);
    return {offsetSize, referenceSize, objectCount, topObject, offsetTable};
}

}  // namespace QRVPlatform::PropertyLists
