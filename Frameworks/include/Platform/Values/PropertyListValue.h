// SPDX-License-Identifier: MIT
#pragma once

/// Property-list values: the data that settings are made of.
///
/// `PropertyListValue` is a 16-byte handle that is cheap to copy. Booleans, integers, reals, dates
/// and null live in the handle itself and allocate nothing; strings, data, colours and containers
/// are shared objects with a thread-safe reference count.
///
///     NSDictionary tree{{"CPU", NSDictionary{{"Enabled", true}, {"Width", 40}}},
///                       {"Items", NSArray{"cpu", 2.5}}};
///     for (const auto& [key, value] : tree) ...
///
/// Dictionaries and arrays are objects with identity: copying a handle gives the same object,
/// `copy()` and `mutableCopy()` give another one. Both copies are shallow (the values inside are
/// the same objects) and take constant time: the entries are shared until one side changes. Until
/// then all immutable copies of a mutable object are one.
///
/// Threads: a handle belongs to one thread at a time, like any C++ value. The object behind it may
/// be used by several: an immutable object never changes, and a mutable one may be read (looked up,
/// iterated, copied, compared) on any thread while one other thread changes it; a reader sees it
/// before or after each change, never between. What spans several calls is not protected.
///
/// A container that is made to hold itself is never freed.

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Platform/Export.h"

class PropertyListValue;
class NSMutableArray;
class NSMutableDictionary;

namespace QRVPlatform::ValueObjects {
struct Object;
struct StringObject;
struct DataObject;
struct ColorObject;
struct ArrayObject;
struct DictionaryObject;
class ArrayContents;
class DictionaryContents;
template <typename ObjectType>
class CurrentContents;
struct Building;
QRV_EXPORT void retain(Object* object) noexcept;
QRV_EXPORT void release(Object* object) noexcept;

/// Shares the ownership of one object; empty when there is none.
template <typename ObjectType>
class Reference {
  public:
    Reference() = default;
    /// Takes over one reference that the caller owns.
    explicit Reference(ObjectType* owned) noexcept : object_(owned) {}
    Reference(const Reference& other) noexcept : object_(other.object_) { retainObject(); }
    Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Reference& operator=(Reference other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Reference() {
        if (object_ != nullptr) release(reinterpret_cast<Object*>(object_));
    }
    [[nodiscard]] ObjectType* get() const noexcept { return object_; }
    ObjectType* operator->() const noexcept { return object_; }
    [[nodiscard]] ObjectType* leak() noexcept { return std::exchange(object_, nullptr); }

  private:
    void retainObject() const noexcept {
        if (object_ != nullptr) retain(reinterpret_cast<Object*>(object_));
    }
    ObjectType* object_ = nullptr;
};
}  // namespace QRVPlatform::ValueObjects

/// An operation was applied to a value that does not know it: a store into something that is not a
/// mutable dictionary, or a null where a value is needed.
class QRV_EXPORT NSInvalidArgumentException : public std::invalid_argument {
  public:
    explicit NSInvalidArgumentException(const std::string& reason);
    NSInvalidArgumentException(const NSInvalidArgumentException&) noexcept;
    NSInvalidArgumentException& operator=(const NSInvalidArgumentException&) noexcept;
    ~NSInvalidArgumentException() override;
};

/// The null marker: a value that says "known to be absent". Lives only in memory; no property list
/// can hold it.
struct NSNull {};

/// An instant: seconds, with fraction, since 2001-01-01 00:00:00 UTC (leap seconds not counted).
/// Resolution is that of the double: better than a microsecond for this century.
class QRV_EXPORT NSDate {
  public:
    /// Seconds from 1970-01-01 to the reference date 2001-01-01.
    static constexpr double timeIntervalBetween1970AndReferenceDate = 978307200.0;

    constexpr explicit NSDate(double secondsSinceReferenceDate)
        : seconds_(secondsSinceReferenceDate) {}
    static NSDate now();
    static constexpr NSDate dateWithTimeIntervalSince1970(double seconds) {
        return NSDate(seconds - timeIntervalBetween1970AndReferenceDate);
    }
    [[nodiscard]] constexpr double timeIntervalSinceReferenceDate() const { return seconds_; }
    [[nodiscard]] constexpr double timeIntervalSince1970() const {
        return seconds_ + timeIntervalBetween1970AndReferenceDate;
    }
    constexpr auto operator<=>(const NSDate&) const = default;

  private:
    double seconds_;
};

/// Bytes; immutable and shared.
class QRV_EXPORT NSData {
  public:
    NSData() = default;
    explicit NSData(std::span<const std::byte> bytes);
    explicit NSData(std::string_view bytes);
    /// The bytes; they live as long as this handle.
    [[nodiscard]] std::span<const std::byte> bytes() const& noexcept;
    std::span<const std::byte> bytes() && = delete;
    [[nodiscard]] std::string_view view() const& noexcept;
    std::string_view view() && = delete;
    [[nodiscard]] std::size_t size() const noexcept;
    QRV_EXPORT friend bool operator==(const NSData& left, const NSData& right) noexcept;

  private:
    friend class PropertyListValue;
    QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::DataObject> object_;
};

/// A colour in the sRGB space, four components of which 0 to 1 is the usual range (nothing is
/// clamped). Lives only in memory; no property list can hold it.
struct QRV_EXPORT NSColor {
    double redComponent = 0;
    double greenComponent = 0;
    double blueComponent = 0;
    double alphaComponent = 1;

    static constexpr NSColor colorWithSRGBRed(double red, double green, double blue, double alpha) {
        return NSColor{red, green, blue, alpha};
    }
    bool operator==(const NSColor&) const = default;
};

/// An ordered list of values, or no list at all (`nullptr`). Never holds null.
class QRV_EXPORT NSArray {
  public:
    class Iterator;
    struct Sentinel {};

    /// The empty array.
    NSArray();
    NSArray(std::nullptr_t) noexcept {}
    /// Throws NSInvalidArgumentException when a value is null.
    ///
    /// For one value that is an array itself, use `arrayWithObject`: of `NSArray{NSArray{1}}` some
    /// compilers make a copy of the inner array instead.
    NSArray(std::initializer_list<PropertyListValue> values);
    explicit NSArray(std::span<const PropertyListValue> values);
    [[nodiscard]] static NSArray arrayWithObject(const PropertyListValue& value);

    [[nodiscard]] bool isNull() const noexcept { return object_.get() == nullptr; }
    [[nodiscard]] bool isMutable() const noexcept;
    /// 0 when null.
    [[nodiscard]] std::size_t count() const;
    /// Null when there is no array or `index` is past its end.
    [[nodiscard]] PropertyListValue objectAtIndex(std::size_t index) const;
    /// An immutable shallow copy (the object itself when it is immutable); null stays null.
    [[nodiscard]] NSArray copy() const;
    [[nodiscard]] NSMutableArray mutableCopy() const;
    /// The same object; null when it is not mutable.
    [[nodiscard]] NSMutableArray asMutable() const;
    [[nodiscard]] bool isIdenticalTo(const NSArray& other) const noexcept {
        return object_.get() == other.object_.get();
    }
    /// Iterates over the elements as they are at this moment.
    [[nodiscard]] Iterator begin() const;
    [[nodiscard]] Sentinel end() const noexcept { return {}; }
    /// Equal elements in the same order. A null array equals only a null array.
    QRV_EXPORT friend bool operator==(const NSArray& left, const NSArray& right);

  protected:
    friend class PropertyListValue;
    friend struct QRVPlatform::ValueObjects::Building;
    explicit NSArray(QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::ArrayObject>
                         object) noexcept
        : object_(std::move(object)) {}
    QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::ArrayObject> object_;
};

/// An array that can be changed, or no array (`nullptr`): then every change is skipped.
class QRV_EXPORT NSMutableArray : public NSArray {
  public:
    /// A new empty array.
    NSMutableArray();
    NSMutableArray(std::nullptr_t) noexcept : NSArray(nullptr) {}
    NSMutableArray(std::initializer_list<PropertyListValue> values);

    /// Throws NSInvalidArgumentException when `value` is null.
    void addObject(PropertyListValue value) const;
    void addObjectsFromArray(const NSArray& values) const;
    /// Removes every element equal to `value`.
    void removeObject(const PropertyListValue& value) const;
    void removeAllObjects() const;
    /// Replaces all elements by those of `values` (none when it is null) in one step.
    void setArray(const NSArray& values) const;

  private:
    friend class NSArray;
};

/// Values by string key, or no dictionary at all (`nullptr`). Never holds null.
class QRV_EXPORT NSDictionary {
  public:
    struct Entry;
    struct InitialEntry;
    class Iterator;
    struct Sentinel {};

    /// The empty dictionary.
    NSDictionary();
    NSDictionary(std::nullptr_t) noexcept {}
    /// Of two entries with one key the later wins. Throws NSInvalidArgumentException when a value
    /// is null.
    NSDictionary(std::initializer_list<InitialEntry> entries);

    [[nodiscard]] bool isNull() const noexcept { return object_.get() == nullptr; }
    [[nodiscard]] bool isMutable() const noexcept;
    /// 0 when null.
    [[nodiscard]] std::size_t count() const;
    /// The value itself, not a copy; null where there is none.
    [[nodiscard]] PropertyListValue objectForKey(std::string_view key) const;
    /// An immutable shallow copy (the object itself when it is immutable); null stays null.
    [[nodiscard]] NSDictionary copy() const;
    [[nodiscard]] NSMutableDictionary mutableCopy() const;
    /// The same object; null when it is not mutable.
    [[nodiscard]] NSMutableDictionary asMutable() const;
    [[nodiscard]] bool isIdenticalTo(const NSDictionary& other) const noexcept {
        return object_.get() == other.object_.get();
    }
    /// Iterates over the entries as they are at this moment, in no promised order.
    [[nodiscard]] Iterator begin() const;
    [[nodiscard]] Sentinel end() const noexcept { return {}; }
    /// Equal values under the same keys, mutable or not. A null dictionary equals only a null one.
    QRV_EXPORT friend bool operator==(const NSDictionary& left, const NSDictionary& right);

  protected:
    friend class PropertyListValue;
    friend struct QRVPlatform::ValueObjects::Building;
    template <typename ObjectType>
    friend class QRVPlatform::ValueObjects::CurrentContents;
    explicit NSDictionary(
        QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::DictionaryObject>
            object) noexcept
        : object_(std::move(object)) {}
    QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::DictionaryObject> object_;
};

/// A dictionary that can be changed, or no dictionary (`nullptr`): then every change is skipped.
class QRV_EXPORT NSMutableDictionary : public NSDictionary {
  public:
    /// A new empty dictionary.
    NSMutableDictionary();
    NSMutableDictionary(std::nullptr_t) noexcept : NSDictionary(nullptr) {}
    NSMutableDictionary(std::initializer_list<InitialEntry> entries);

    /// A null value removes the key.
    void setObjectForKey(PropertyListValue value, std::string_view key) const;
    void removeObjectForKey(std::string_view key) const;
    void removeAllObjects() const;
    void addEntriesFromDictionary(const NSDictionary& other) const;
    /// Prepares for `count` entries, so that adding them moves nothing.
    void reserve(std::size_t count) const;

  private:
    friend class NSDictionary;
};

/// One value of a property list, the null marker, a colour, or null (no value).
class QRV_EXPORT PropertyListValue {
  public:
    enum class Kind : std::uint8_t {
        Null,
        Boolean,
        Integer,  ///< from -2^63 to 2^64-1
        Real,
        Date,
        NullMarker,
        String,
        Data,
        Color,
        Array,
        Dictionary,
    };

    constexpr PropertyListValue() noexcept = default;
    constexpr PropertyListValue(std::nullptr_t) noexcept {}
    constexpr PropertyListValue(std::same_as<bool> auto value) noexcept
        : kind_(Kind::Boolean), payload_{.boolean = value} {}
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && !std::same_as<Integer, char> &&
             sizeof(Integer) <= 8) constexpr PropertyListValue(Integer value) noexcept
        : kind_(Kind::Integer), payload_{.integer = static_cast<std::int64_t>(value)} {
        if constexpr (std::is_unsigned_v<Integer> && sizeof(Integer) == 8)
            isBeyondSigned_ = payload_.integer < 0;
    }
    constexpr PropertyListValue(std::floating_point auto value) noexcept
        : kind_(Kind::Real), payload_{.real = static_cast<double>(value)} {}
    constexpr PropertyListValue(NSDate value) noexcept
        : kind_(Kind::Date), payload_{.real = value.timeIntervalSinceReferenceDate()} {}
    constexpr PropertyListValue(NSNull) noexcept : kind_(Kind::NullMarker) {}
    /// A null pointer gives null.
    PropertyListValue(const char* text);
    /// UTF-8; may hold any character, U+0000 included. Text that is not UTF-8 is kept as it is, but
    /// no property list can hold it.
    PropertyListValue(std::string_view text);
    PropertyListValue(const std::string& text) : PropertyListValue(std::string_view(text)) {}
    PropertyListValue(const NSData& value);
    PropertyListValue(const NSColor& value);
    PropertyListValue(const NSArray& value) noexcept;
    PropertyListValue(const NSDictionary& value) noexcept;
    /// Other pointers would become booleans by surprise.
    template <typename Type>
    requires(!std::same_as<std::remove_cv_t<Type>, char>) PropertyListValue(Type*)
    = delete;

    PropertyListValue(const PropertyListValue& other) noexcept
        : kind_(other.kind_), isBeyondSigned_(other.isBeyondSigned_), payload_(other.payload_) {
        if (kind_ >= Kind::String) QRVPlatform::ValueObjects::retain(payload_.object);
    }
    constexpr PropertyListValue(PropertyListValue&& other) noexcept
        : kind_(std::exchange(other.kind_, Kind::Null)),
          isBeyondSigned_(other.isBeyondSigned_),
          payload_(other.payload_) {}
    PropertyListValue& operator=(PropertyListValue other) noexcept {
        swap(other);
        return *this;
    }
    constexpr ~PropertyListValue() {
        if (kind_ >= Kind::String) QRVPlatform::ValueObjects::release(payload_.object);
    }
    void swap(PropertyListValue& other) noexcept {
        std::swap(kind_, other.kind_);
        std::swap(isBeyondSigned_, other.isBeyondSigned_);
        std::swap(payload_, other.payload_);
    }

    [[nodiscard]] constexpr Kind kind() const noexcept { return kind_; }
    [[nodiscard]] constexpr bool isNull() const noexcept { return kind_ == Kind::Null; }
    [[nodiscard]] constexpr bool isBoolean() const noexcept { return kind_ == Kind::Boolean; }
    [[nodiscard]] constexpr bool isInteger() const noexcept { return kind_ == Kind::Integer; }
    [[nodiscard]] constexpr bool isReal() const noexcept { return kind_ == Kind::Real; }
    /// Integer or real; a boolean is no number.
    [[nodiscard]] constexpr bool isNumber() const noexcept { return isInteger() || isReal(); }
    [[nodiscard]] constexpr bool isString() const noexcept { return kind_ == Kind::String; }
    [[nodiscard]] constexpr bool isDate() const noexcept { return kind_ == Kind::Date; }
    [[nodiscard]] constexpr bool isData() const noexcept { return kind_ == Kind::Data; }
    [[nodiscard]] constexpr bool isArray() const noexcept { return kind_ == Kind::Array; }
    [[nodiscard]] constexpr bool isDictionary() const noexcept { return kind_ == Kind::Dictionary; }
    [[nodiscard]] constexpr bool isNullMarker() const noexcept { return kind_ == Kind::NullMarker; }
    [[nodiscard]] constexpr bool isColor() const noexcept { return kind_ == Kind::Color; }
    /// Both are of one kind, an integer and a real counting as one kind (number).
    [[nodiscard]] constexpr bool isSameKindAs(const PropertyListValue& other) const noexcept {
        return kind_ == other.kind_ || (isNumber() && other.isNumber());
    }

    /// @name Lenient conversions, defined for every kind; what has no such meaning gives false, 0
    /// or "".
    /// @{

    /// A number is true when it is not 0; a string when, after white space, a sign and zeros, it
    /// begins with Y, y, T, t or a digit from 1 to 9.
    [[nodiscard]] bool boolValue() const noexcept {
        return isBoolean() ? payload_.boolean : boolValueOfAnotherKind();
    }
    /// Reals are cut towards 0, a string gives the decimal integer that it begins with; what is out
    /// of range gives the nearest end of the range, a NaN 0.
    [[nodiscard]] std::int64_t integerValue() const noexcept;
    /// A string gives the decimal number that it begins with (no hexadecimal, no infinity, no NaN).
    [[nodiscard]] double doubleValue() const noexcept;
    [[nodiscard]] float floatValue() const noexcept;
    /// Numbers in the shortest form that reads back, booleans "1" or "0", dates in ISO 8601.
    [[nodiscard]] std::string stringValue() const;
    /// @}

    /// @name Strict access: what the value is, or an empty answer when it is of another kind.
    /// @{

    /// True for an integer above 2^63-1: its value is `unsignedValue()`, and `integerValue()` is
    /// cut.
    [[nodiscard]] constexpr bool isBeyondSigned() const noexcept {
        return isBeyondSigned_ && isInteger();
    }
    /// The value of an integer of 0 and above; 0 for anything else.
    [[nodiscard]] constexpr std::uint64_t unsignedValue() const noexcept {
        return isInteger() && (isBeyondSigned_ || payload_.integer >= 0)
                   ? static_cast<std::uint64_t>(payload_.integer)
                   : 0;
    }
    /// The characters of a string; they live as long as this handle.
    [[nodiscard]] std::string_view stringView() const& noexcept;
    std::string_view stringView() && = delete;
    [[nodiscard]] NSDate date() const noexcept { return NSDate(isDate() ? payload_.real : 0); }
    [[nodiscard]] NSData data() const;
    [[nodiscard]] NSColor color() const noexcept;
    /// Null when the value is no array.
    [[nodiscard]] NSArray array() const noexcept;
    /// Null when the value is no dictionary.
    [[nodiscard]] NSDictionary dictionary() const& noexcept;
    [[nodiscard]] NSDictionary dictionary() && noexcept;
    /// @}

    /// Both handles are of one kind and hold the same object, or the same scalar to the bit.
    [[nodiscard]] bool isIdenticalTo(const PropertyListValue& other) const noexcept;

    /// Numbers by numeric value, exactly (1 equals 1.0; NaN equals NaN, so that a tree equals
    /// itself); a boolean never equals a number; strings and data by their bytes, dates by instant,
    /// arrays by elements in order, dictionaries by entries. Depth costs no stack.
    QRV_EXPORT friend bool operator==(const PropertyListValue& left,
                                      const PropertyListValue& right);

  private:
    friend struct QRVPlatform::ValueObjects::Building;
    template <typename ObjectType>
    friend class QRVPlatform::ValueObjects::CurrentContents;
    union Payload {
        bool boolean;
        std::int64_t integer;
        double real;
        QRVPlatform::ValueObjects::Object* object;
    };
    [[nodiscard]] bool boolValueOfAnotherKind() const noexcept;

    Kind kind_ = Kind::Null;
    bool isBeyondSigned_ = false;
    Payload payload_{.integer = 0};
};

static_assert(sizeof(PropertyListValue) == 16);

struct NSDictionary::InitialEntry {
    std::string_view key;
    PropertyListValue value;
};

/// One entry during an iteration; valid as long as the iterator lives.
struct NSDictionary::Entry {
    std::string_view key;
    const PropertyListValue& value;
};

/// Walks over a dictionary's entries as they were at the beginning; later changes do not reach it.
class QRV_EXPORT NSDictionary::Iterator {
  public:
    Iterator(const Iterator&) = delete;
    Iterator(Iterator&& other) noexcept;
    Iterator& operator=(const Iterator&) = delete;
    Iterator& operator=(Iterator&&) = delete;
    ~Iterator();
    Entry operator*() const noexcept;
    Iterator& operator++() noexcept;
    bool operator!=(Sentinel) const noexcept;

  private:
    friend class NSDictionary;
    QRV_HIDDEN explicit Iterator(
        QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::DictionaryContents>
            contents);
    QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::DictionaryContents> contents_;
    std::size_t position_ = 0;
    std::size_t count_ = 0;
};

/// Walks over an array's elements as they were at the beginning; later changes do not reach it.
class QRV_EXPORT NSArray::Iterator {
  public:
    Iterator(const Iterator&) = delete;
    Iterator(Iterator&& other) noexcept;
    Iterator& operator=(const Iterator&) = delete;
    Iterator& operator=(Iterator&&) = delete;
    ~Iterator();
    const PropertyListValue& operator*() const noexcept;
    Iterator& operator++() noexcept;
    bool operator!=(Sentinel) const noexcept;

  private:
    friend class NSArray;
    QRV_HIDDEN explicit Iterator(
        QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::ArrayContents> contents);
    QRVPlatform::ValueObjects::Reference<QRVPlatform::ValueObjects::ArrayContents> contents_;
    std::size_t position_ = 0;
    std::size_t count_ = 0;
};

namespace QRVPlatform {

/// One line of text for people and logs, keys sorted: `{CPU = {Enabled = true}, Items =
/// ["a", 1.5]}`. A string at the top stands bare, null is `(null)`. Levels past 64 are shown as
/// `...`.
QRV_EXPORT std::string description(const PropertyListValue& value);

}  // namespace QRVPlatform

QRV_EXPORT std::ostream& operator<<(std::ostream& stream, const PropertyListValue& value);
QRV_EXPORT std::ostream& operator<<(std::ostream& stream, const NSDictionary& value);
QRV_EXPORT std::ostream& operator<<(std::ostream& stream, const NSArray& value);
QRV_EXPORT std::ostream& operator<<(std::ostream& stream, const NSDate& value);
