// SPDX-License-Identifier: MIT
#pragma once

/// Property-list values: the data that settings are made of.
///
/// `PropertyListValue` is a 16-byte handle that is cheap to copy. Booleans, integers, reals, dates
/// and null are held in the handle itself and allocate nothing; strings, data, colours and
/// containers are shared objects with a thread-safe reference count.
///
///     NSDictionary tree{{"CPU", NSDictionary{{"Enabled", true}, {"Width", 40}}},
///                       {"Items", NSArray{"cpu", 2.5}}};
///     for (const auto& [key, value] : tree) ...
///
/// Arrays and dictionaries are objects with identity: copying a handle gives the same object,
/// `copy()` and `mutableCopy()` give another one. Both copies are shallow (the values inside are
/// the same objects) and take constant time: the entries are shared until one side changes. Until
/// then all immutable copies of a mutable object are one.
///
/// `const` belongs to the handle, as with a pointer: a `const NSMutableArray` always refers to the
/// same array, and that array can be changed. All functions that change a container are therefore
/// `const`. Whether the object can be changed is in its type and in `isMutable()`.
///
/// There are five kinds of nothing. A null `PropertyListValue` means "no value", as a null array
/// or dictionary means "no container": it counts 0, a walk over it ends at once, and changes to it
/// are skipped. An empty `std::optional` means that a function has no result, an empty string is a
/// value like any other, and `NSNull` is a value that records "known to be absent".
///
/// Arrays and dictionaries are C++20 forward ranges, for algorithms and views:
///
///     std::ranges::find(array, "cpu");
///     for (const auto& [key, value] : tree | std::views::filter(isSection)) ...
///
/// Threads: a handle belongs to one thread at a time, like any C++ value. Several threads may use
/// the object behind it: an immutable object never changes, and a mutable one may be read (looked
/// up, walked over, copied, compared) on any thread while one other thread changes it. A reader
/// sees it before or after each change, never between. Several calls in a row are not atomic.
///
/// A container that is made to hold itself is never freed.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <iterator>
#include <ranges>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Platform/Export.h"
#include "Platform/Values/ContainerIterator.h"
#include "Platform/Values/NSColor.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/ObjectReference.h"

class NSArray;
class NSDictionary;
class NSMutableArray;
class NSMutableDictionary;

/// The null marker: a value that says "known to be absent". It exists only in memory; no property
/// list can hold it.
struct NSNull {};

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
        String,  ///< this kind and those below are shared objects
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
    /// UTF-8 with any characters, U+0000 included. Text that is not UTF-8 is kept as it is, but no
    /// property list can hold it.
    PropertyListValue(std::string_view text);
    PropertyListValue(const std::string& text) : PropertyListValue(std::string_view(text)) {}
    PropertyListValue(const NSData& value);
    PropertyListValue(const NSColor& value);
    PropertyListValue(const NSArray& value) noexcept;
    PropertyListValue(const NSDictionary& value) noexcept;
    /// Other pointers would silently become booleans.
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

    /// @name Lenient conversions, defined for every kind; a value that cannot be converted gives
    /// false, 0 or "".
    /// @{

    /// A number is true when it is not 0; a string when, after white space, a sign and zeros, it
    /// begins with Y, y, T, t or a digit from 1 to 9.
    [[nodiscard]] bool boolValue() const noexcept {
        return isBoolean() ? payload_.boolean : boolValueOfAnotherKind();
    }
    /// Reals are truncated towards 0, a string gives the decimal integer that it begins with. A
    /// number out of range gives the nearest end of the range, a NaN 0.
    [[nodiscard]] std::int64_t integerValue() const noexcept;
    /// A string gives the decimal number that it begins with (no hexadecimal, no infinity, no NaN).
    [[nodiscard]] double doubleValue() const noexcept;
    [[nodiscard]] float floatValue() const noexcept;
    /// Numbers in the shortest form that reads back, booleans "1" or "0", dates in ISO 8601.
    [[nodiscard]] std::string stringValue() const;
    /// @}

    /// @name Strict access: the value itself, or an empty result when it is of another kind.
    /// @{

    /// True for an integer above 2^63-1: `unsignedValue()` gives it, `integerValue()` only the
    /// largest signed one.
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
    friend struct QRVPlatform::ValueObjects::Access;
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

/// An ordered list of values, or no list at all (`nullptr`). Never holds null.
class QRV_EXPORT NSArray {
  public:
    using Iterator = QRVPlatform::ValueObjects::ContainerIterator<const PropertyListValue&>;

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
    /// Walks over the elements as they are at this moment; later changes do not reach the walk.
    [[nodiscard]] Iterator begin() const;
    [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }
    /// Equal elements in the same order. A null array equals only a null array.
    QRV_EXPORT friend bool operator==(const NSArray& left, const NSArray& right);

  protected:
    friend struct QRVPlatform::ValueObjects::Access;
    explicit NSArray(QRVPlatform::ValueObjects::ObjectReference object) noexcept
        : object_(std::move(object)) {}
    QRVPlatform::ValueObjects::ObjectReference object_;
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
};

/// Values by string key, or no dictionary at all (`nullptr`). Never holds null.
class QRV_EXPORT NSDictionary {
  public:
    /// One entry during a walk; valid as long as an iterator of the walk lives.
    struct Entry {
        std::string_view key;
        const PropertyListValue& value;
    };
    struct InitialEntry {
        std::string_view key;
        PropertyListValue value;
    };
    using Iterator = QRVPlatform::ValueObjects::ContainerIterator<Entry>;

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
    /// The value itself, not a copy; null when the key is missing.
    [[nodiscard]] PropertyListValue objectForKey(std::string_view key) const;
    /// An immutable shallow copy (the object itself when it is immutable); null stays null.
    [[nodiscard]] NSDictionary copy() const;
    [[nodiscard]] NSMutableDictionary mutableCopy() const;
    /// The same object; null when it is not mutable.
    [[nodiscard]] NSMutableDictionary asMutable() const;
    [[nodiscard]] bool isIdenticalTo(const NSDictionary& other) const noexcept {
        return object_.get() == other.object_.get();
    }
    /// Walks over the entries as they are at this moment, in no promised order; later changes do
    /// not reach the walk.
    [[nodiscard]] Iterator begin() const;
    [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }
    /// Equal values under the same keys, mutable or not. A null dictionary equals only a null one.
    QRV_EXPORT friend bool operator==(const NSDictionary& left, const NSDictionary& right);

  protected:
    friend struct QRVPlatform::ValueObjects::Access;
    explicit NSDictionary(QRVPlatform::ValueObjects::ObjectReference object) noexcept
        : object_(std::move(object)) {}
    QRVPlatform::ValueObjects::ObjectReference object_;
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
    /// Makes room for `count` entries, so that adding them allocates no further room.
    void reserve(std::size_t count) const;
};

/// @cond
namespace QRVPlatform::ValueObjects {

template <>
QRV_EXPORT const PropertyListValue& NSArray::Iterator::operator*() const noexcept;
template <>
QRV_EXPORT NSDictionary::Entry NSDictionary::Iterator::operator*() const noexcept;

}  // namespace QRVPlatform::ValueObjects

// Iterators share the ownership of what they walk over, so they may outlive the container.
template <>
inline constexpr bool std::ranges::enable_borrowed_range<NSArray> = true;
template <>
inline constexpr bool std::ranges::enable_borrowed_range<NSMutableArray> = true;
template <>
inline constexpr bool std::ranges::enable_borrowed_range<NSDictionary> = true;
template <>
inline constexpr bool std::ranges::enable_borrowed_range<NSMutableDictionary> = true;
/// @endcond

/// An operation does not apply to its argument: a null where a value is needed, or a write into
/// something that is not a mutable dictionary.
class QRV_EXPORT NSInvalidArgumentException : public std::invalid_argument {
  public:
    explicit NSInvalidArgumentException(const std::string& reason);
    NSInvalidArgumentException(const NSInvalidArgumentException&) noexcept;
    NSInvalidArgumentException& operator=(const NSInvalidArgumentException&) noexcept;
    ~NSInvalidArgumentException() override;
};

namespace QRVPlatform {

/// One line of text for people and logs, keys sorted: `{CPU = {Enabled = true}, Items =
/// ["a", 1.5]}`. A string at the top has no quotes, null is `(null)`. Levels past 64 are shown as
/// `...`.
QRV_EXPORT std::string description(const PropertyListValue& value);

}  // namespace QRVPlatform

QRV_EXPORT std::ostream& operator<<(std::ostream& stream, const PropertyListValue& value);
QRV_EXPORT std::ostream& operator<<(std::ostream& stream, const NSDictionary& value);
QRV_EXPORT std::ostream& operator<<(std::ostream& stream, const NSArray& value);
