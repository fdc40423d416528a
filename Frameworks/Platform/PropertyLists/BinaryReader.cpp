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

#include "Platform/PropertyLists/BinaryLayout.h"
#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/Unicode.h"
#include "Platform/Values/ImmutableContainers.h"
#include "Platform/Values/OneThread.h"

namespace QRVPlatform::PropertyLists {
namespace {

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

std::uint32_t contentsOf(const PropertyListValue& scalar, std::size_t offset) {
    if (scalar.kind() < PropertyListValue::Kind::String) return 0;
    const std::size_t bytes = scalar.isData() ? scalar.data().size() : scalar.stringView().size();
    if (bytes > maximumContents) fail(tooMuchContents(), offset);
    return static_cast<std::uint32_t>(bytes);
}

/// Reads each object once, however many places refer to it. The containers that are being read are
/// in a list, so that the depth of a tree costs no stack.
class BinaryReader {
  public:
    explicit BinaryReader(std::string_view bytes)
        : bytes_(bytes),
          layout_(readBinaryLayout(bytes)),
          objects_(layout_.objectCount),
          unclaimedBytes_(layout_.offsetTable - BinaryLayout::headerSize) {}

    PropertyListValue read();

  private:
    enum class State : std::uint8_t { Unread, UnderWay, Scalar, Container };

    struct Object {
        PropertyListValue value;
        // Of a scalar the bytes of its text or data; of a container its place in `extents_`.
        std::uint32_t extent = 0;
        State state = State::Unread;
    };
    static_assert(sizeof(Object) == 24, "there are many of them");

    /// What a container holds, each part as often as it is referred to.
    struct ContainerExtent {
        std::size_t contents = 0;  // bytes of text and data
        std::size_t values = 1;
        std::size_t levels = 1;
    };

    /// A container that is being read.
    struct Frame {
        std::size_t object;
        const char* next;           // the reference to the next element, or key
        const char* end;            // of these references
        std::size_t valueDistance;  // from the reference to a key to that of its value, else 0
        std::size_t first;          // of its contents in `entries_` or `elements_`
        bool isDictionary;
        ContainerExtent extent = {};
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

    Encoded encoded(std::size_t number) const;
    void begin(std::size_t number);
    std::uint64_t numberAt(const char* reference) const;
    const Object* referenced(const char* reference);
    const Object* referencedFirst(const char* reference, std::uint64_t number);
    bool addContents(Frame& frame);
    bool addNext(Frame& frame);
    void count(Frame& frame, const Object& added) const;
    [[noreturn]] void failTooLarge(const Frame& frame) const;
    void finishInnermost();

    std::string_view claim(std::size_t offset, std::size_t size, std::size_t objectOffset);
    std::string_view numberBytes(const Encoded& encoded, std::size_t largestPower);
    Sized sized(const Encoded& encoded);
    std::string_view contents(const Encoded& encoded, std::size_t unitSize);

    PropertyListValue scalar(const Encoded& encoded);
    static PropertyListValue singleton(const Encoded& encoded);
    PropertyListValue integer(const Encoded& encoded);
    PropertyListValue real(const Encoded& encoded);
    PropertyListValue date(const Encoded& encoded);
    PropertyListValue string(const Encoded& encoded);
    PropertyListValue utf16String(const Encoded& encoded);

    const std::string_view bytes_;
    const BinaryLayout layout_;
    std::vector<Object> objects_;
    std::vector<ContainerExtent> extents_;
    // Without it, objects that overlap could take far more memory than the file has bytes.
    std::size_t unclaimedBytes_;
    // The containers that are being read, and their contents; the innermost last.
    std::vector<Frame> frames_;
    std::vector<KeyedValue> entries_;
    std::vector<PropertyListValue> elements_;
};

PropertyListValue BinaryReader::read() {
    begin(layout_.topObject);
    while (!frames_.empty()) {
        if (addContents(frames_.back())) finishInnermost();
    }
    PropertyListValue root = OneThread::copy(objects_[layout_.topObject].value);
    for (Object& object : objects_) OneThread::clear(object.value);
    return root;
}

// Reads a scalar, or puts a container into `frames_`.
void BinaryReader::begin(std::size_t number) {
    const Encoded place = encoded(number);
    Object& object = objects_[number];
    const bool isDictionary = place.marker == Marker::Dictionary;
    if (place.marker != Marker::Array && !isDictionary) {
        object.value = scalar(place);
        object.extent = contentsOf(object.value, place.offset);
        object.state = State::Scalar;
        return;
    }
    if (frames_.size() >= maximumLevels) fail(tooManyLevels(), place.offset);
    object.state = State::UnderWay;
    const std::size_t lists = isDictionary ? 2 : 1;
    const std::string_view references = contents(place, lists * layout_.referenceSize);
    const std::size_t sizeOfList = references.size() / lists;
    frames_.push_back({.object = number,
                       .next = references.data(),
                       .end = references.data() + sizeOfList,
                       .valueDistance = references.size() - sizeOfList,
                       .first = isDictionary ? entries_.size() : elements_.size(),
                       .isDictionary = isDictionary});
}

std::uint64_t BinaryReader::numberAt(const char* reference) const {
    // The usual sizes, without a loop.
    const auto first = static_cast<unsigned char>(reference[0]);
    if (layout_.referenceSize == 1) return first;
    if (layout_.referenceSize == 2)
        return unsigned{first} << 8U | static_cast<unsigned char>(reference[1]);
    return unsignedOf({reference, layout_.referenceSize});
}

// Null when the object is a container that has only now begun.
inline const BinaryReader::Object* BinaryReader::referenced(const char* reference) {
    const std::uint64_t number = numberAt(reference);
    if (number < layout_.objectCount && objects_[number].state == State::Scalar)
        return &objects_[number];
    return referencedFirst(reference, number);
}

// The same for a container, and for an object that has not been read.
const BinaryReader::Object* BinaryReader::referencedFirst(const char* reference,
                                                          std::uint64_t number) {
    if (number >= layout_.objectCount) {
        fail("a reference to an object that does not exist",
             static_cast<std::size_t>(reference - bytes_.data()));
    }
    const Object& found = objects_[number];
    if (found.state == State::UnderWay) fail("a container holds itself", encoded(number).offset);
    if (found.state == State::Unread) {
        begin(number);
        return found.state == State::Scalar ? &found : nullptr;
    }
    if (frames_.size() + extents_[found.extent].levels > maximumLevels) {
        fail(tooManyLevels(), encoded(number).offset);
    }
    return &found;
}

// False when a nested container has begun, which comes first. The frame may have moved then.
bool BinaryReader::addContents(Frame& frame) {
    for (; frame.next != frame.end; frame.next += layout_.referenceSize) {
        if (!addNext(frame)) return false;
    }
    return true;
}

inline void BinaryReader::count(Frame& frame, const Object& added) const {
    ContainerExtent& extent = frame.extent;
    if (added.state == State::Scalar) {
        extent.contents += added.extent;
        ++extent.values;
    } else {
        const ContainerExtent& nested = extents_[added.extent];
        extent.contents += nested.contents;
        extent.values += nested.values;
        extent.levels = std::max(extent.levels, nested.levels + 1);
    }
    if (extent.values > maximumValues || extent.contents > maximumContents) failTooLarge(frame);
}

void BinaryReader::failTooLarge(const Frame& frame) const {
    const auto offset = static_cast<std::size_t>(frame.next - bytes_.data());
    fail(frame.extent.values > maximumValues ? tooManyValues() : tooMuchContents(), offset);
}

bool BinaryReader::addNext(Frame& frame) {
    const char* const reference = frame.next;
    if (!frame.isDictionary) {
        const Object* const element = referenced(reference);
        if (element == nullptr) return false;
        count(frame, *element);
        elements_.push_back(OneThread::copy(element->value));
        return true;
    }
    const std::size_t number = frame.object;
    const Object* const key = referenced(reference);
    if (key == nullptr || !key->value.isString()) {
        fail("a key is not a string", encoded(number).offset);
    }
    const Object* const value = referenced(reference + frame.valueDistance);
    if (value == nullptr) return false;
    frame.extent.contents += key->extent;
    count(frame, *value);
    entries_.push_back({OneThread::copy(key->value), OneThread::copy(value->value)});
    return true;
}

void BinaryReader::finishInnermost() {
    const Frame& frame = frames_.back();
    Object& object = objects_[frame.object];
    if (frame.isDictionary) {
        object.value = immutableDictionary(std::span(entries_).subspan(frame.first));
        entries_.resize(frame.first);
    } else {
        object.value = immutableArray(std::span(elements_).subspan(frame.first));
        elements_.resize(frame.first);
    }
    object.extent = static_cast<std::uint32_t>(extents_.size());
    extents_.push_back(frame.extent);
    object.state = State::Container;
    frames_.pop_back();
}

BinaryReader::Encoded BinaryReader::encoded(std::size_t number) const {
    const std::size_t entry = layout_.offsetTable + number * layout_.offsetSize;
    const std::uint64_t offset = unsignedOf({bytes_.data() + entry, layout_.offsetSize});
    if (offset < BinaryLayout::headerSize || offset >= layout_.offsetTable) {
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
            return string(encoded);
        case Marker::UTF16String:
            return utf16String(encoded);
        case Marker::UID:
            fail("a UID is no value of a property list", encoded.offset);
        case Marker::OrderedSet:
        case Marker::Set:
            fail("a set is no value of a property list", encoded.offset);
        case Marker::Array:
        case Marker::Dictionary:
            break;  // no scalars: `begin` reads them
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
    if (std::string fault = faultOf(NSDate(seconds)); !fault.empty()) {
        fail(std::move(fault), encoded.offset);
    }
    return NSDate(seconds);
}

// ASCII by the format, but some writers put UTF-8 there.
PropertyListValue BinaryReader::string(const Encoded& encoded) {
    const std::string_view text = contents(encoded, 1);
    if (!isASCII(text) && positionOfBrokenUTF8(text)) {
        fail("a string is neither ASCII nor UTF-8", encoded.offset);
    }
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

}  // namespace

PropertyListValue readBinary(std::string_view bytes) {
    return BinaryReader(bytes).read();
}

}  // namespace QRVPlatform::PropertyLists
