// SPDX-License-Identifier: MIT
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

#include "Platform/Values/ContainerObjects.h"
#include "Platform/Values/Text.h"

using namespace QRVPlatform;

using ValueObjects::ColorObject;
using ValueObjects::DataObject;
using ValueObjects::Reference;
using ValueObjects::StringObject;

NSInvalidArgumentException::NSInvalidArgumentException(const std::string& reason)
    : std::invalid_argument(reason) {}
NSInvalidArgumentException::NSInvalidArgumentException(const NSInvalidArgumentException&) noexcept =
    default;
NSInvalidArgumentException& NSInvalidArgumentException::operator=(
    const NSInvalidArgumentException&) noexcept = default;
NSInvalidArgumentException::~NSInvalidArgumentException() = default;

NSDate NSDate::now() {
    const std::chrono::duration<double> sinceEpoch =
        std::chrono::system_clock::now().time_since_epoch();
    return dateWithTimeIntervalSince1970(sinceEpoch.count());
}

NSData::NSData(std::string_view bytes) : object_(new DataObject(bytes)) {}

NSData::NSData(std::span<const std::byte> bytes)
    : NSData(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size())) {}

std::string_view NSData::view() const& noexcept {
    return object_.get() == nullptr ? std::string_view() : std::string_view(object_->bytes);
}

std::span<const std::byte> NSData::bytes() const& noexcept {
    return std::as_bytes(std::span(view().data(), view().size()));
}

std::size_t NSData::size() const noexcept {
    return view().size();
}

PropertyListValue::PropertyListValue(const char* text) {
    if (text != nullptr) *this = PropertyListValue(std::string_view(text));
}

PropertyListValue::PropertyListValue(std::string_view text)
    : kind_(Kind::String), payload_{.object = StringObject::make(text).leak()} {}

PropertyListValue::PropertyListValue(const NSData& value) : kind_(Kind::Data) {
    Reference<DataObject> object = value.object_;
    if (object.get() == nullptr) object = Reference<DataObject>(new DataObject({}));
    payload_.object = object.leak();
}

PropertyListValue::PropertyListValue(const NSColor& value)
    : kind_(Kind::Color), payload_{.object = new ColorObject(value)} {}

PropertyListValue::PropertyListValue(const NSArray& value) noexcept {
    if (value.isNull()) return;
    kind_ = Kind::Array;
    payload_.object = Reference(value.object_).leak();
}

PropertyListValue::PropertyListValue(const NSDictionary& value) noexcept {
    if (value.isNull()) return;
    kind_ = Kind::Dictionary;
    payload_.object = Reference(value.object_).leak();
}

std::string_view PropertyListValue::stringView() const& noexcept {
    if (!isString()) return {};
    return static_cast<const StringObject*>(payload_.object)->view();
}

NSData PropertyListValue::data() const {
    NSData result;
    if (isData()) {
        ValueObjects::retain(payload_.object);
        result.object_ = Reference(static_cast<DataObject*>(payload_.object));
    }
    return result;
}

NSColor PropertyListValue::color() const noexcept {
    return isColor() ? static_cast<const ColorObject*>(payload_.object)->color
                     : NSColor{0, 0, 0, 0};
}

NSArray PropertyListValue::array() const noexcept {
    if (!isArray()) return nullptr;
    ValueObjects::retain(payload_.object);
    return NSArray(Reference(static_cast<ValueObjects::ArrayObject*>(payload_.object)));
}

NSDictionary PropertyListValue::dictionary() && noexcept {
    if (!isDictionary()) return nullptr;
    kind_ = Kind::Null;
    return NSDictionary(Reference(static_cast<ValueObjects::DictionaryObject*>(payload_.object)));
}

NSDictionary PropertyListValue::dictionary() const& noexcept {
    if (!isDictionary()) return nullptr;
    ValueObjects::retain(payload_.object);
    return NSDictionary(Reference(static_cast<ValueObjects::DictionaryObject*>(payload_.object)));
}

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

// A decimal number too large or too small for a double. What counts is the place of the first
// digit that is not 0, moved by the exponent: on which side of 1 it lies tells which end is meant.
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
        return 0;  // also keeps out what from_chars would take for infinity or NaN
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
        default:
            return false;
    }
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
        default:
            return 0;
    }
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
        default:
            return 0;
    }
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
            return ValueText::shortestReal(payload_.real);
        case Kind::Date:
            return ValueText::isoDate(date());
        case Kind::String:
            return std::string(stringView());
        default:
            return {};
    }
}
