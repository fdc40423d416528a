// SPDX-License-Identifier: MIT
// The reader of the binary format.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/BinaryLayout.h"
#include "Platform/PropertyLists/KnownObject.h"
#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/Unicode.h"
#include "Platform/Values/ContainerObjects.h"
#include "Platform/Values/OneThread.h"

namespace QRVPlatform::PropertyLists {
namespace {

using ValueObjects::Access;
using ValueObjects::ArrayContents;
using ValueObjects::DictionaryContents;
using ValueObjects::Reference;
using ValueObjects::StringObject;

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

std::uint64_t unsignedOf(std::string_view bytes) noexcept {
    return unsignedBefore(bytes.data() + bytes.size(), bytes.size());
}

/// Reads each object once, however many places refer to it. The containers that are being read are
/// in a list, so that the depth of a tree costs no stack. A container is built when all that it
/// holds has been read.
class BinaryReader {
  public:
    explicit BinaryReader(std::string_view bytes)
        : bytes_(bytes),
          layout_(readBinaryLayout(bytes)),
          objects_(layout_.objectCount),
          unclaimedBytes_(layout_.offsetTable - BinaryLayout::headerSize),
          pages_(bytes.size()) {}
    BinaryReader(const BinaryReader&) = delete;
    BinaryReader& operator=(const BinaryReader&) = delete;
    ~BinaryReader();

    PropertyListValue read();

  private:
    using State = KnownObject::State;

    /// What a container holds, each part as often as it is referred to.
    struct ContainerExtent {
        std::size_t contents = 0;  // bytes of text and data
        std::size_t values = 1;
        std::size_t levels = 1;

        [[nodiscard]] bool isOfEmpty() const noexcept { return values == 1; }
    };

    struct Finished {
        PropertyListValue container;
        ContainerExtent extent;
    };

    /// A container that is being read.
    struct Frame {
        std::size_t object;
        const char* begin;  // the references to the elements, or keys
        const char* next;   // the first of them that has not been read
        const char* end;
        std::size_t valueDistance;  // from the reference to a key to that of its value, else 0
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
    KnownObject referenced(const char* reference);
    KnownObject referencedFirst(const char* reference, std::uint64_t number);
    bool readContents(Frame& frame);
    bool readNext(Frame& frame);
    void count(Frame& frame, KnownObject added) const;
    [[noreturn]] void failTooLarge(const Frame& frame) const;
    void finishInnermost();
    PropertyListValue dictionaryOf(const Frame& frame);
    PropertyListValue arrayOf(const Frame& frame);
    PropertyListValue valueOf(std::size_t number);
    PropertyListValue scalarAgain(std::size_t number);

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
    PropertyListValue stringOf(std::string_view text);

    const std::string_view bytes_;
    const BinaryLayout layout_;
    std::vector<KnownObject> objects_;
    std::vector<Finished> finished_;
    // Without it, objects that overlap could take far more memory than the file has bytes.
    std::size_t unclaimedBytes_;
    ValueObjects::ValuePages pages_;
    std::vector<Frame> frames_;  // the containers that are being read; the innermost last
};

BinaryReader::~BinaryReader() {
    for (const KnownObject object : objects_) {
        if (object.state() == State::Shared) OneThread::release(object.object());
    }
    for (Finished& finished : finished_) {
        if (!finished.extent.isOfEmpty()) OneThread::release(Access::leak(finished.container));
    }
}

PropertyListValue BinaryReader::read() {
    begin(layout_.topObject);
    while (!frames_.empty()) {
        if (readContents(frames_.back())) finishInnermost();
    }
    return valueOf(layout_.topObject);
}

// Reads a scalar, or puts a container into `frames_`.
void BinaryReader::begin(std::size_t number) {
    const Encoded place = encoded(number);
    const bool isDictionary = place.marker == Marker::Dictionary;
    if (place.marker != Marker::Array && !isDictionary) {
        objects_[number] = KnownObject(scalar(place));
        if (objects_[number].contents() > maximumContents) fail(tooMuchContents(), place.offset);
        return;
    }
    if (frames_.size() >= maximumLevels) fail(tooManyLevels(), place.offset);
    objects_[number] = KnownObject(State::UnderWay);
    const std::size_t lists = isDictionary ? 2 : 1;
    const std::string_view references = contents(place, lists * layout_.referenceSize);
    const std::size_t sizeOfList = references.size() / lists;
    frames_.push_back({.object = number,
                       .begin = references.data(),
                       .next = references.data(),
                       .end = references.data() + sizeOfList,
                       .valueDistance = references.size() - sizeOfList,
                       .isDictionary = isDictionary});
}

inline std::uint64_t BinaryReader::numberAt(const char* reference) const {
    return unsignedBefore(reference + layout_.referenceSize, layout_.referenceSize);
}

// Under way when the object is a container that has only now begun.
inline KnownObject BinaryReader::referenced(const char* reference) {
    const std::uint64_t number = numberAt(reference);
    if (number < layout_.objectCount && objects_[number].isScalar()) return objects_[number];
    return referencedFirst(reference, number);
}

// The same for a container, and for an object that has not been read.
KnownObject BinaryReader::referencedFirst(const char* reference, std::uint64_t number) {
    if (number >= layout_.objectCount) {
        fail("a reference to an object that does not exist",
             static_cast<std::size_t>(reference - bytes_.data()));
    }
    const KnownObject found = objects_[number];
    if (found.state() == State::UnderWay) fail("a container holds itself", encoded(number).offset);
    if (found.state() == State::Unread) {
        begin(number);
        return objects_[number];
    }
    if (frames_.size() + finished_[found.payload()].extent.levels > maximumLevels)
        fail(tooManyLevels(), encoded(number).offset);
    return found;
}

// False when a nested container has begun, which comes first. The frame may have moved then.
bool BinaryReader::readContents(Frame& frame) {
    for (; frame.next != frame.end; frame.next += layout_.referenceSize) {
        if (!readNext(frame)) return false;
    }
    return true;
}

inline void BinaryReader::count(Frame& frame, KnownObject added) const {
    ContainerExtent& extent = frame.extent;
    if (added.isScalar()) {
        extent.contents += added.contents();
        ++extent.values;
    } else {
        const ContainerExtent& nested = finished_[added.payload()].extent;
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

inline bool BinaryReader::readNext(Frame& frame) {
    const char* const reference = frame.next;
    if (frame.isDictionary) {
        const std::size_t number = frame.object;
        const KnownObject key = referenced(reference);
        if (!key.isString()) fail("a key is not a string", encoded(number).offset);
        const KnownObject value = referenced(reference + frame.valueDistance);
        if (value.state() == State::UnderWay) return false;
        frame.extent.contents += key.contents();
        count(frame, value);
        return true;
    }
    const KnownObject element = referenced(reference);
    if (element.state() == State::UnderWay) return false;
    count(frame, element);
    return true;
}

void BinaryReader::finishInnermost() {
    const Frame& frame = frames_.back();
    const KnownObject finished(State::Container, finished_.size());
    finished_.push_back({frame.isDictionary ? dictionaryOf(frame) : arrayOf(frame), frame.extent});
    objects_[frame.object] = finished;
    frames_.pop_back();
}

PropertyListValue BinaryReader::dictionaryOf(const Frame& frame) {
    if (frame.begin == frame.end) return NSDictionary();
    const std::size_t size = layout_.referenceSize;
    const auto entries = static_cast<std::size_t>(frame.end - frame.begin) / size;
    Reference<DictionaryContents> result = DictionaryContents::make(entries, &pages_);
    for (const char* next = frame.begin; next != frame.end; next += size) {
        auto* const key = static_cast<StringObject*>(objects_[numberAt(next)].object());
        OneThread::retain(*key);
        result->set(Reference<StringObject>(key), valueOf(numberAt(next + frame.valueDistance)));
    }
    return Access::valueOwning(result.leak());
}

PropertyListValue BinaryReader::arrayOf(const Frame& frame) {
    if (frame.begin == frame.end) return NSArray();
    const std::size_t size = layout_.referenceSize;
    const auto elements = static_cast<std::size_t>(frame.end - frame.begin) / size;
    Reference<ArrayContents> result = ArrayContents::make(elements, &pages_);
    for (const char* next = frame.begin; next != frame.end; next += size)
        result->append(valueOf(numberAt(next)));
    return Access::valueOwning(result.leak());
}

// Of an object that has been read.
inline PropertyListValue BinaryReader::valueOf(std::size_t number) {
    const KnownObject known = objects_[number];
    switch (known.state()) {
        case State::Shared:
            OneThread::retain(*known.object());
            return Access::valueOwning(known.object());
        case State::Boolean:
            return known.payload() != 0;
        case State::Integer:
            return known.payload();
        case State::Container: {
            const Finished& finished = finished_[known.payload()];
            if (finished.extent.isOfEmpty()) return finished.container;
            return OneThread::copyOfContainer(finished.container);
        }
        case State::Unread:
        case State::UnderWay:
        case State::Again:
            break;
    }
    return scalarAgain(number);
}

PropertyListValue BinaryReader::scalarAgain(std::size_t number) {
    // Its bytes have been claimed.
    const std::size_t unclaimed = std::exchange(unclaimedBytes_, bytes_.size());
    PropertyListValue value = scalar(encoded(number));
    unclaimedBytes_ = unclaimed;
    return value;
}

inline BinaryReader::Encoded BinaryReader::encoded(std::size_t number) const {
    const std::size_t entry = layout_.offsetTable + number * layout_.offsetSize;
    const std::uint64_t offset =
        unsignedBefore(bytes_.data() + entry + layout_.offsetSize, layout_.offsetSize);
    if (offset < BinaryLayout::headerSize || offset >= layout_.offsetTable) {
        fail("the offset of an object is outside the file", entry);
    }
    const auto byte = static_cast<unsigned char>(bytes_[offset]);
    return {offset, static_cast<Marker>(byte >> 4U), byte & 0xFU};
}

// The bytes, unless they are missing or the objects together take more than the file has.
inline std::string_view BinaryReader::claim(std::size_t offset, std::size_t size,
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
    return stringOf(text);
}

PropertyListValue BinaryReader::utf16String(const Encoded& encoded) {
    const std::string_view units = contents(encoded, 2);
    std::string text;
    if (!appendUTF16(text, units, ByteOrder::BigEndian)) {
        fail("a string is not valid UTF-16", encoded.offset);
    }
    return stringOf(text);
}

PropertyListValue BinaryReader::stringOf(std::string_view text) {
    return Access::valueOwning(
        StringObject::make(text, ValueObjects::hashOf(text), &pages_).leak());
}

}  // namespace

PropertyListValue readBinary(std::string_view bytes) {
    return BinaryReader(bytes).read();
}

}  // namespace QRVPlatform::PropertyLists
