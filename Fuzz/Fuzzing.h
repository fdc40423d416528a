// SPDX-License-Identifier: MIT
#pragma once

// Shared by the fuzzers: ending a run that breaks an invariant, decoding an input, building trees
// of it, and a model to compare trees with.

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/System/System.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVLogger/DDLog.h"

/// Called for each input by the fuzzing engine, or by the main function that replaces it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Fuzzing {

/// Ends the program unless the invariant holds; the input then is a finding.
template <typename... Details>
void require(bool isKept, std::string_view promise, const Details&... details) {
    if (isKept) return;
    std::cerr << "broken promise: " << promise << '\n';
    ((std::cerr << details << '\n'), ...);
    std::abort();
}

/// Discards log messages: a fuzzer does not check them, and there would be many.
inline void silenceLogs() {
    static const bool once = [] {
        setNSLogSink([](const std::string&) {});
        DDLog::setSink([](const DDLogMessage&) {});
        return true;
    }();
    static_cast<void>(once);
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Takes numbers and texts from the front of an input; zeros at its end.
class Input {
  public:
    explicit Input(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] bool isAtEnd() const { return bytes_.empty(); }
    std::uint8_t byte() {
        if (bytes_.empty()) return 0;
        const auto first = static_cast<std::uint8_t>(bytes_.front());
        bytes_.remove_prefix(1);
        return first;
    }
    /// Below `end`, which is 256 at most.
    std::size_t number(std::size_t end) { return byte() % end; }
    bool flag() { return (byte() & 1U) != 0; }
    std::uint64_t bits() {
        std::uint64_t value = 0;
        for (int index = 0; index < 8; ++index) value = value << 8U | byte();
        return value;
    }
    /// As many bytes as the next byte says, or the rest of the input.
    std::string_view text() {
        const std::string_view taken = bytes_.substr(byte() % 32 % (bytes_.size() + 1));
        const std::string_view text = bytes_.substr(0, bytes_.size() - taken.size());
        bytes_ = taken;
        return text;
    }
    std::string_view rest() { return std::exchange(bytes_, {}); }

  private:
    std::string_view bytes_;
};

/// Builds trees of an input. All texts are UTF-8 except one, "\xFF".
class TreeDecoder {
  public:
    enum class Sharing { None, OfEarlierParts };

    TreeDecoder(Input& input, Sharing sharing) : input_(input), sharing_(sharing) {}

    PropertyListValue value(int levels) {
        const std::size_t choice = input_.number(8);
        if (++values_ > mostValues || levels <= 0) return leaf();
        if (choice < 3) return dictionary(levels);
        if (choice == 3) return array(levels);
        if (choice == 4) return earlierPart();
        if (choice == 5) return nested(levels);
        return leaf();
    }

    /// Mutable in one of two cases.
    NSDictionary dictionary(int levels) {
        const NSMutableDictionary entries;
        const std::size_t before = values_;
        const std::size_t head = input_.byte();
        for (std::size_t count = head / 2 % 6; count > 0; --count) {
            const std::string name = key();
            entries.setObjectForKey(value(levels - 1), name);
        }
        NSDictionary result = head % 2 == 0 ? entries.copy() : NSDictionary(entries);
        parts_.push_back({result, 1 + values_ - before});
        return result;
    }

    std::string key() {
        using namespace std::string_view_literals;
        constexpr std::array keys{"A"sv,  "B"sv,      "C"sv,   "D"sv,
                                  ""sv,   "."sv,      "A.B"sv, "B."sv,
                                  ".A"sv, "\u00e9"sv, "\0"sv,  "a key that is longer"sv};
        const std::size_t choice = input_.number(16);
        return choice < keys.size() ? std::string(keys[choice]) : asciiText();
    }

    PropertyListValue leaf() {
        switch (input_.number(12)) {
            case 0:
                return input_.flag();
            case 1:
                return static_cast<int>(input_.number(3));
            case 2:
                return static_cast<double>(input_.number(3));
            case 3:
                return integerAtAnEnd();
            case 4:
                return realAtAnEnd();
            case 5:
                return static_cast<std::int64_t>(input_.bits());
            case 6:
                return std::bit_cast<double>(input_.bits());
            case 7:
                return NSDate(static_cast<double>(input_.byte()) / 2);
            case 8:
                return NSData(input_.text());
            case 9:
                return std::string(1, static_cast<char>('0' + input_.number(3)));
            case 10:
                return asciiText();
            default:
                return ofMemoryOnly();
        }
    }

  private:
    struct Part {
        PropertyListValue value;
        std::size_t values;
    };
    static constexpr std::size_t mostValues = 2000;

    std::string asciiText() {
        std::string text(input_.text());
        for (char& character : text) character = static_cast<char>(character & 0x7F);
        return text;
    }
    PropertyListValue integerAtAnEnd() {
        constexpr std::int64_t wholeReals = std::int64_t{1} << 53U;
        const std::array<PropertyListValue, 6> integers{std::numeric_limits<std::int64_t>::min(),
                                                        std::numeric_limits<std::int64_t>::max(),
                                                        std::numeric_limits<std::uint64_t>::max(),
                                                        std::uint64_t{1} << 63U,
                                                        wholeReals,
                                                        wholeReals + 1};
        return integers[input_.number(integers.size())];
    }
    PropertyListValue realAtAnEnd() {
        constexpr double twoTo63 = 9223372036854775808.0;
        using Limits = std::numeric_limits<double>;
        constexpr std::array reals{-0.0,
                                   twoTo63,
                                   -twoTo63,
                                   2 * twoTo63,
                                   9007199254740992.0,
                                   Limits::quiet_NaN(),
                                   Limits::infinity(),
                                   -Limits::infinity(),
                                   0.5};
        return reals[input_.number(reals.size())];
    }
    /// A value that no property list can represent.
    PropertyListValue ofMemoryOnly() {
        switch (input_.number(4)) {
            case 0:
                return NSNull{};
            case 1:
                return NSColor{0, 0, static_cast<double>(input_.number(2)), 1};
            case 2:
                return NSDate(1e300);
            default:
                return "\xFF";
        }
    }
    PropertyListValue array(int levels) {
        const NSMutableArray elements;
        for (std::size_t count = input_.number(4); count > 0; --count)
            elements.addObject(value(levels - 1));
        return elements.copy();
    }
    PropertyListValue earlierPart() {
        if (sharing_ == Sharing::None || parts_.empty()) return leaf();
        const Part& part = parts_[input_.number(std::min<std::size_t>(parts_.size(), 256))];
        if (values_ + part.values > mostValues) return leaf();
        values_ += part.values;
        return part.value;
    }
    /// Dictionaries of one entry each.
    PropertyListValue nested(int levels) {
        std::size_t count = input_.number(64);
        PropertyListValue result = value(levels - 1);
        values_ += count;
        for (; count > 0; --count) result = NSDictionary{{"A", result}};
        return result;
    }

    Input& input_;
    const Sharing sharing_;
    std::vector<Part> parts_;
    std::size_t values_ = 0;
};

/// A second implementation of `==`: it converts numbers to a type that holds all of them exactly.
bool isEqualByModel(const PropertyListValue& left, const PropertyListValue& right);

inline bool areNumbersEqualByModel(const PropertyListValue& left, const PropertyListValue& right) {
    static_assert(std::numeric_limits<long double>::digits >= 64);
    const auto number = [](const PropertyListValue& value) -> long double {
        if (value.isReal()) return value.doubleValue();
        if (value.isBeyondSigned()) return static_cast<long double>(value.unsignedValue());
        return static_cast<long double>(value.integerValue());
    };
    const long double one = number(left);
    const long double other = number(right);
    return one == other || (std::isnan(one) && std::isnan(other));
}

inline bool areDictionariesEqualByModel(const NSDictionary& left, const NSDictionary& right) {
    std::size_t found = 0;
    for (const auto& [key, value] : left)
        for (const auto& [otherKey, otherValue] : right)
            if (key == otherKey && isEqualByModel(value, otherValue)) ++found;
    return found == left.count() && found == right.count();
}

inline bool isEqualByModel(const PropertyListValue& left, const PropertyListValue& right) {
    if (left.isNumber() && right.isNumber()) return areNumbersEqualByModel(left, right);
    if (left.kind() != right.kind()) return false;
    if (left.isBoolean()) return left.boolValue() == right.boolValue();
    if (left.isString()) return left.stringView() == right.stringView();
    if (left.isDate()) return left.date() == right.date();
    if (left.isColor()) return left.color() == right.color();
    if (left.isDictionary())
        return areDictionariesEqualByModel(left.dictionary(), right.dictionary());
    const NSData oneData = left.data();
    const NSData otherData = right.data();
    if (oneData.view() != otherData.view()) return false;
    const NSArray oneArray = left.array();
    const NSArray otherArray = right.array();
    if (oneArray.count() != otherArray.count()) return false;
    for (std::size_t index = 0; index < oneArray.count(); ++index)
        if (!isEqualByModel(oneArray.objectAtIndex(index), otherArray.objectAtIndex(index)))
            return false;
    return true;
}

inline bool isSameReal(double left, double right) {
    if (std::isnan(left) || std::isnan(right)) return std::isnan(left) && std::isnan(right);
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

inline bool isSameDate(NSDate left, NSDate right) {
    const bool isNoDate = std::isnan(left.timeIntervalSinceReferenceDate());
    return isNoDate ? std::isnan(right.timeIntervalSinceReferenceDate()) : left == right;
}

/// Whether two trees are equal and have the same types: 1 and 1.0 differ, 0.0 and -0.0 differ, NaN
/// equals NaN. Dates are compared after `dateOf`, if there is one.
template <typename DateOf>
bool isSameTree(const PropertyListValue& left, const PropertyListValue& right, DateOf dateOf) {
    if (left.kind() != right.kind()) return false;
    if (left.isReal()) return isSameReal(left.doubleValue(), right.doubleValue());
    if (left.isDate()) return isSameDate(dateOf(left.date()), dateOf(right.date()));
    if (left.isArray()) {
        const NSArray one = left.array();
        const NSArray other = right.array();
        if (one.count() != other.count()) return false;
        for (std::size_t index = 0; index < one.count(); ++index)
            if (!isSameTree(one.objectAtIndex(index), other.objectAtIndex(index), dateOf))
                return false;
        return true;
    }
    if (left.isDictionary()) {
        const NSDictionary other = right.dictionary();
        if (left.dictionary().count() != other.count()) return false;
        for (const auto& [key, value] : left.dictionary())
            if (!isSameTree(value, other.objectForKey(key), dateOf)) return false;
        return true;
    }
    return left == right;
}

inline bool isSameTree(const PropertyListValue& left, const PropertyListValue& right) {
    return isSameTree(left, right, [](NSDate date) { return date; });
}

inline bool takeRoom(std::size_t bytes, std::size_t& room) {
    if (bytes > room) return false;
    room -= bytes;
    return true;
}

/// Whether the tree is small enough to be written in milliseconds, counted in bytes of text and
/// data and in values. A few references in a binary file can stand for 64 MiB.
inline bool isQuicklyWritten(const PropertyListValue& tree, std::size_t& room) {
    constexpr std::size_t bytesOfElement = 16;
    const NSData data = tree.data();
    if (!takeRoom(bytesOfElement + tree.stringView().size() + data.size(), room)) return false;
    for (const PropertyListValue& element : tree.array())
        if (!isQuicklyWritten(element, room)) return false;
    for (const auto& [key, value] : tree.dictionary())
        if (!takeRoom(key.size(), room) || !isQuicklyWritten(value, room)) return false;
    return true;
}

inline bool isQuicklyWritten(const PropertyListValue& tree) {
    std::size_t room = std::size_t{1} << 19U;
    return isQuicklyWritten(tree, room);
}

/// A date as an XML property list stores it.
inline NSDate wholeSecond(NSDate date) {
    return NSDate(std::floor(date.timeIntervalSinceReferenceDate()));
}

}  // namespace Fuzzing
