// SPDX-License-Identifier: MIT
// The reader of the binary format.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/Unicode.h"
#include "Platform/Values/ImmutableContainers.h"
#include "Platform/Values/OneThread.h"

namespace QRVPlatform::PropertyLists {
namespace {

constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;

/// Big-endian bytes; at most eight.
std::uint64_t unsignedOf(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) value = value << 8U | static_cast<unsigned char>(byte);
    return value;
}

/// Where the parts of the file are. All sums stay far below 2^64, because each term has been
/// compared with the size of the file.
struct Layout {
    std::size_t offsetSize = 0;
    std::size_t referenceSize = 0;
    std::size_t objectCount = 0;
    std::size_t topObject = 0;
    std::size_t offsetTable = 0;
};

Layout readLayout(std::string_view bytes) {
    if (bytes.size() < headerSize + 1 + trailerSize) fail("the file is too short", bytes.size());
    if (!bytes.starts_with("bplist00")) fail("unknown version of the binary format", 6);
    const std::size_t trailer = bytes.size() - trailerSize;
    const std::size_t room = trailer - headerSize;
    const auto field = [bytes, trailer](std::size_t offset, std::size_t size) {
        return unsignedOf(bytes.substr(trailer + offset, size));
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
    if (offsetTable <= headerSize || offsetTable > trailer) {
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

enum class Marker : unsigned {
    Singleton = 0x0,
    Integer = 0x1,
    Real = 0x2,
    Date = 0x3,
    Data = 0x4,
    ASCIIString = 0x5,
    UTF16String = 0x6,
    UID = 0x8,
    Array = 0xA,
    OrderedSet = 0xB,
    Set = 0xC,
    Dictionary = 0xD,
};

/// Reads each object once, however many places refer to it.
class BinaryReader {
  public:
    explicit BinaryReader(std::string_view bytes)
        : bytes_(bytes),
          layout_(readLayout(bytes)),
          objects_(layout_.objectCount),
          unclaimedBytes_(layout_.offsetTable - headerSize) {}

    PropertyListValue read() {
        PropertyListValue root = OneThread::copy(object(layout_.topObject, 0).value);
        for (Object& object : objects_) OneThread::clear(object.value);
        return root;
    }

  private:
    enum class State : std::uint8_t { Unread, UnderWay, Read };

    struct Object {
        PropertyListValue value;
        std::uint32_t expandedValues = 1;  // at most maximumValues
        std::uint16_t levels = 0;          // at most maximumLevels
        State state = State::Unread;
    };

    /// An object's place in the file, and the two halves of its marker.
    struct Encoded {
        std::size_t offset;
        Marker marker;
        std::size_t low;  // half of the marker
    };

    struct Sized {
        std::size_t count;
        std::size_t contents;  // offset
    };

    const Object& object(std::size_t number, std::size_t levelsAbove) {
        const Object& found = objects_[number];
        if (found.state == State::Read && levelsAbove + found.levels <= maximumLevels) return found;
        return objectReadNow(number, levelsAbove);
    }
    const Object& objectReadNow(std::size_t number, std::size_t levelsAbove);
    void readObject(Object& object, std::size_t number, std::size_t levelsAbove);
    Encoded encoded(std::size_t number) const;

    std::string_view claim(std::size_t offset, std::size_t size, std::size_t objectOffset);
    std::string_view numberBytes(const Encoded& encoded, std::size_t largestPower);
    Sized sized(const Encoded& encoded);
    std::string_view contents(const Encoded& encoded, std::size_t unitSize);

    PropertyListValue scalar(const Encoded& encoded);
    static PropertyListValue singleton(const Encoded& encoded);
    PropertyListValue integer(const Encoded& encoded);
    PropertyListValue real(const Encoded& encoded);
    PropertyListValue date(const Encoded& encoded);
    PropertyListValue asciiString(const Encoded& encoded);
    PropertyListValue utf16String(const Encoded& encoded);

    void array(Object& result, const Encoded& encoded, std::size_t levelsAbove);
    void dictionary(Object& result, const Encoded& encoded, std::size_t levelsAbove);
    const Object& referenced(const char* reference, std::size_t levelsAbove);
    PropertyListValue element(Object& container, const char* reference, std::size_t levelsAbove);

    const std::string_view bytes_;
    const Layout layout_;
    std::vector<Object> objects_;
    // Without it, objects that overlap could take far more memory than the file has bytes.
    std::size_t unclaimedBytes_;
    // The contents of the containers that are being read, the innermost last.
    std::vector<KeyedValue> entries_;
    std::vector<PropertyListValue> elements_;
};

const BinaryReader::Object& BinaryReader::objectReadNow(std::size_t number,
                                                        std::size_t levelsAbove) {
    Object& found = objects_[number];
    if (found.state == State::UnderWay) fail("a container holds itself", encoded(number).offset);
    if (found.state == State::Unread) {
        found.state = State::UnderWay;
        readObject(found, number, levelsAbove);
        found.state = State::Read;
    }
    if (levelsAbove + found.levels > maximumLevels) {
        fail(tooManyLevels(), encoded(number).offset);
    }
    return found;
}

void BinaryReader::readObject(Object& object, std::size_t number, std::size_t levelsAbove) {
    const Encoded place = encoded(number);
    if (place.marker != Marker::Array && place.marker != Marker::Dictionary) {
        object.value = scalar(place);
        return;
    }
    object.levels = 1;
    if (levelsAbove >= maximumLevels) fail(tooManyLevels(), place.offset);
    if (place.marker == Marker::Array) {
        array(object, place, levelsAbove + 1);
    } else {
        dictionary(object, place, levelsAbove + 1);
    }
}

BinaryReader::Encoded BinaryReader::encoded(std::size_t number) const {
    const std::size_t entry = layout_.offsetTable + number * layout_.offsetSize;
    const std::uint64_t offset = unsignedOf({bytes_.data() + entry, layout_.offsetSize});
    if (offset < headerSize || offset >= layout_.offsetTable) {
        fail("the offset of an object is outside the file", entry);
    }
    const auto byte = static_cast<unsigned char>(bytes_[offset]);
    return {offset, static_cast<Marker>(byte >> 4U), byte & 0xFU};
}

// The bytes, unless they are missing or the objects together take more than the file has.
std::string_view BinaryReader::claim(std::size_t offset, std::size_t size,
                                     std::size_t objectOffset) {
    if (size > layout_.offsetTable - offset) fail("an object is cut off", objectOffset);
    if (size > unclaimedBytes_) fail("objects overlap", objectOffset);
    unclaimedBytes_ -= size;
    return {bytes_.data() + offset, size};
}

// The 2^low bytes that follow a marker.
std::string_view BinaryReader::numberBytes(const Encoded& encoded, std::size_t largestPower) {
    if (encoded.low > largestPower) fail("bad size of a number", encoded.offset);
    const std::size_t size = std::size_t{1} << encoded.low;
    return claim(encoded.offset, 1 + size, encoded.offset).substr(1);
}

BinaryReader::Sized BinaryReader::sized(const Encoded& encoded) {
    constexpr std::size_t countFollows = 0xF;
    if (encoded.low != countFollows) {
        claim(encoded.offset, 1, encoded.offset);
        return {encoded.low, encoded.offset + 1};
    }
    const auto head = claim(encoded.offset, 2, encoded.offset);
    const auto sizeMarker = static_cast<unsigned char>(head[1]);
    const std::size_t size = std::size_t{1} << (sizeMarker & 0xFU);
    if (sizeMarker >> 4U != static_cast<unsigned>(Marker::Integer) || size > 8) {
        fail("bad size of an object", encoded.offset + 1);
    }
    const std::uint64_t count = unsignedOf(claim(encoded.offset + 2, size, encoded.offset));
    return {count, encoded.offset + 2 + size};
}

std::string_view BinaryReader::contents(const Encoded& encoded, std::size_t unitSize) {
    const auto [count, offset] = sized(encoded);
    if (count > bytes_.size() / unitSize) fail("an object is cut off", encoded.offset);
    return claim(offset, count * unitSize, encoded.offset);
}

PropertyListValue BinaryReader::scalar(const Encoded& encoded) {
    switch (encoded.marker) {
        case Marker::Singleton:
            return singleton(encoded);
        case Marker::Integer:
            return integer(encoded);
        case Marker::Real:
            return real(encoded);
        case Marker::Date:
            return date(encoded);
        case Marker::Data:
            return NSData(contents(encoded, 1));
        case Marker::ASCIIString:
            return asciiString(encoded);
        case Marker::UTF16String:
            return utf16String(encoded);
        case Marker::UID:
            fail("a UID is no value of a property list", encoded.offset);
        case Marker::OrderedSet:
        case Marker::Set:
            fail("a set is no value of a property list", encoded.offset);
        case Marker::Array:
        case Marker::Dictionary:
            break;  // no scalars: `readObject` reads them
    }
    fail("unknown object", encoded.offset);
}

PropertyListValue BinaryReader::singleton(const Encoded& encoded) {
    switch (encoded.low) {
        case 0x0:
            fail("null is no value of a property list", encoded.offset);
        case 0x8:
            return false;
        case 0x9:
            return true;
        case 0xF:
            fail("a fill byte is no value of a property list", encoded.offset);
        default:
            fail("unknown object", encoded.offset);
    }
}

// One to four bytes are unsigned, eight are signed; sixteen hold what needs more.
PropertyListValue BinaryReader::integer(const Encoded& encoded) {
    const std::string_view bytes = numberBytes(encoded, 4);
    if (bytes.size() < 8) return unsignedOf(bytes);
    const std::uint64_t value = unsignedOf(bytes.substr(bytes.size() - 8));
    const auto signedValue = static_cast<std::int64_t>(value);
    if (bytes.size() == 8) return signedValue;
    const std::uint64_t upper = unsignedOf(bytes.substr(0, 8));
    if (upper == 0) return value;
    if (~upper == 0 && signedValue < 0) return signedValue;
    fail("an integer is out of range", encoded.offset);
}

PropertyListValue BinaryReader::real(const Encoded& encoded) {
    const std::string_view bytes = numberBytes(encoded, 3);
    if (bytes.size() == 8) return std::bit_cast<double>(unsignedOf(bytes));
    if (bytes.size() < 4) fail("bad size of a number", encoded.offset);
    return std::bit_cast<float>(static_cast<std::uint32_t>(unsignedOf(bytes)));
}

PropertyListValue BinaryReader::date(const Encoded& encoded) {
    const std::string_view bytes = numberBytes(encoded, 3);
    if (bytes.size() != 8) fail("bad size of a date", encoded.offset);
    const double seconds = std::bit_cast<double>(unsignedOf(bytes));
    if (!std::isfinite(seconds)) fail("a date is not finite", encoded.offset);
    return NSDate(seconds);
}

PropertyListValue BinaryReader::asciiString(const Encoded& encoded) {
    const std::string_view text = contents(encoded, 1);
    if (!isASCII(text)) fail("an ASCII string holds other bytes", encoded.offset);
    return text;
}

PropertyListValue BinaryReader::utf16String(const Encoded& encoded) {
    const std::string_view units = contents(encoded, 2);
    std::string text;
    if (!appendUTF16(text, units, ByteOrder::BigEndian)) {
        fail("a string is not valid UTF-16", encoded.offset);
    }
    return text;
}

// Reads the object that a container refers to.
const BinaryReader::Object& BinaryReader::referenced(const char* reference,
                                                     std::size_t levelsAbove) {
    const std::uint64_t number = unsignedOf({reference, layout_.referenceSize});
    if (number >= layout_.objectCount) {
        fail("a reference to an object that does not exist",
             static_cast<std::size_t>(reference - bytes_.data()));
    }
    return object(number, levelsAbove);
}

// Adds the element's values and levels to those of its container.
PropertyListValue BinaryReader::element(Object& container, const char* reference,
                                        std::size_t levelsAbove) {
    const Object& found = referenced(reference, levelsAbove);
    container.expandedValues += found.expandedValues;
    if (container.expandedValues > maximumValues) {
        fail(tooManyValues(), static_cast<std::size_t>(reference - bytes_.data()));
    }
    container.levels = std::max(container.levels, static_cast<std::uint16_t>(found.levels + 1));
    return OneThread::copy(found.value);
}

void BinaryReader::array(Object& result, const Encoded& encoded, std::size_t levelsAbove) {
    const std::string_view references = contents(encoded, layout_.referenceSize);
    const std::size_t first = elements_.size();
    for (std::size_t next = 0; next < references.size(); next += layout_.referenceSize) {
        PropertyListValue read = element(result, references.data() + next, levelsAbove);
        elements_.push_back(std::move(read));
    }
    result.value = immutableArray(std::span(elements_).subspan(first));
    elements_.resize(first);
}

void BinaryReader::dictionary(Object& result, const Encoded& encoded, std::size_t levelsAbove) {
    const std::string_view references = contents(encoded, 2 * layout_.referenceSize);
    const std::size_t first = entries_.size();
    const char* key = references.data();
    const char* value = key + references.size() / 2;
    for (const char* const firstValue = value; key != firstValue;
         key += layout_.referenceSize, value += layout_.referenceSize) {
        const Object& name = referenced(key, levelsAbove);  // keys do not count
        if (!name.value.isString()) fail("a key is not a string", encoded.offset);
        PropertyListValue sameName = OneThread::copy(name.value);
        PropertyListValue read = element(result, value, levelsAbove);
        entries_.push_back({std::move(sameName), std::move(read)});
    }
    result.value = immutableDictionary(std::span(entries_).subspan(first));
    entries_.resize(first);
}

}  // namespace

PropertyListValue readBinary(std::string_view bytes) {
    return BinaryReader(bytes).read();
}

}  // namespace QRVPlatform::PropertyLists
