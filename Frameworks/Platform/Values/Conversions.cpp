// SPDX-License-Identifier: MIT
// The lenient conversions of values of any kind.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "Platform/Values/PropertyListValue.h"
#include "Platform/Values/ReadableScalars.h"

using namespace QRVPlatform;

namespace {

constexpr bool isWhiteSpace(char character) noexcept {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

constexpr bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

std::string_view withoutLeading(std::string_view text, auto&& isSkipped) noexcept {
    while (!text.empty() && isSkipped(text.front())) text.remove_prefix(1);
    return text;
}

bool textIsTrue(std::string_view text) noexcept {
    text = withoutLeading(text, isWhiteSpace);
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    text = withoutLeading(text, [](char character) { return character == '0'; });
    if (text.empty()) return false;
    return std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

std::int64_t integerAtStart(std::string_view text) noexcept {
    text = withoutLeading(text, isWhiteSpace);
    if (text.starts_with('+') && text.size() > 1 && isDigit(text[1])) text.remove_prefix(1);
    std::int64_t result = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (error != std::errc::result_out_of_range) return result;
    return text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                               : std::numeric_limits<std::int64_t>::max();
}

// For a decimal number too large or too small for a double. The place of the first digit that is
// not 0, moved by the exponent, tells which: before the decimal point it is too large.
double nearestEndOfRange(std::string_view number) noexcept {
    const bool isNegative = number.starts_with('-');
    const std::size_t mark = number.find_first_of("eE");
    const std::string_view digits = number.substr(isNegative ? 1 : 0, mark - (isNegative ? 1 : 0));
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = digits.find_first_of("123456789");
    double place = static_cast<double>(point) - static_cast<double>(first);
    if (mark != std::string_view::npos)
        place += static_cast<double>(integerAtStart(number.substr(mark + 1)));
    const double magnitude = place > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return isNegative ? -magnitude : magnitude;
}

double realAtStart(std::string_view text) noexcept {
    text = withoutLeading(text, isWhiteSpace);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return 0;
    }
    const std::string_view unsignedText = text.starts_with('-') ? text.substr(1) : text;
    if (unsignedText.empty() || (!isDigit(unsignedText.front()) && unsignedText.front() != '.')) {
        return 0;  // from_chars would read "inf" and "nan"
    }
    double result = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (error == std::errc::result_out_of_range) {
        return nearestEndOfRange(text.substr(0, static_cast<std::size_t>(end - text.data())));
    }
    return result;
}

std::int64_t realCutToInteger(double real) noexcept {
    constexpr double twoTo63 = 9223372036854775808.0;
    if (std::isnan(real)) return 0;
    if (real >= twoTo63) return std::numeric_limits<std::int64_t>::max();
    if (real < -twoTo63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(real);
}

}  // namespace

bool PropertyListValue::boolValueOfAnotherKind() const noexcept {
    switch (kind_) {
        case Kind::Integer:
            return payload_.integer != 0;
        case Kind::Real:
            return payload_.real != 0;
        case Kind::String:
            return textIsTrue(stringView());
        case Kind::Null:
        case Kind::Boolean:
        case Kind::Date:
        case Kind::NullMarker:
        case Kind::Data:
        case Kind::Color:
        case Kind::Array:
        case Kind::Dictionary:
            break;
    }
    return false;
}

std::int64_t PropertyListValue::integerValue() const noexcept {
    switch (kind_) {
        case Kind::Boolean:
            return payload_.boolean ? 1 : 0;
        case Kind::Integer:
            return isBeyondSigned_ ? std::numeric_limits<std::int64_t>::max() : payload_.integer;
        case Kind::Real:
            return realCutToInteger(payload_.real);
        case Kind::String:
            return integerAtStart(stringView());
        case Kind::Null:
        case Kind::Date:
        case Kind::NullMarker:
        case Kind::Data:
        case Kind::Color:
        case Kind::Array:
        case Kind::Dictionary:
            break;
    }
    return 0;
}

double PropertyListValue::doubleValue() const noexcept {
    switch (kind_) {
        case Kind::Boolean:
            return payload_.boolean ? 1 : 0;
        case Kind::Integer:
            return isBeyondSigned_ ? static_cast<double>(unsignedValue())
                                   : static_cast<double>(payload_.integer);
        case Kind::Real:
            return payload_.real;
        case Kind::String:
            return realAtStart(stringView());
        case Kind::Null:
        case Kind::Date:
        case Kind::NullMarker:
        case Kind::Data:
        case Kind::Color:
        case Kind::Array:
        case Kind::Dictionary:
            break;
    }
    return 0;
}

float PropertyListValue::floatValue() const noexcept {
    return static_cast<float>(doubleValue());
}

std::string PropertyListValue::stringValue() const {
    switch (kind_) {
        case Kind::Boolean:
            return payload_.boolean ? "1" : "0";
        case Kind::Integer:
            return isBeyondSigned_ ? std::to_string(unsignedValue())
                                   : std::to_string(payload_.integer);
        case Kind::Real:
            return ReadableScalars::real(payload_.real);
        case Kind::Date:
            return ReadableScalars::date(date());
        case Kind::String:
            return std::string(stringView());
        case Kind::Null:
        case Kind::NullMarker:
        case Kind::Data:
        case Kind::Color:
        case Kind::Array:
        case Kind::Dictionary:
            break;
    }
    return {};
}
