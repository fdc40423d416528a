// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <vector>

#include "Platform/Values/Objects.h"
#include "Platform/Values/Text.h"

using namespace QRVPlatform;

namespace {

constexpr int shownLevels = 64;

void append(std::string& text, const PropertyListValue& value, int level);

void appendQuoted(std::string& text, std::string_view characters) {
    text += '"';
    for (const char character : characters) {
        if (character == '"' || character == '\\') text += '\\';
        if (character == '\n') {
            text += "\\n";
        } else {
            text += character;
        }
    }
    text += '"';
}

void appendData(std::string& text, const NSData& data) {
    constexpr std::string_view digits = "0123456789abcdef";
    text += '<';
    for (const std::byte byte : data.bytes()) {
        text += digits[std::to_integer<unsigned>(byte) >> 4U];
        text += digits[std::to_integer<unsigned>(byte) & 15U];
    }
    text += '>';
}

void appendColor(std::string& text, const NSColor& color) {
    text += "color(";
    for (const double component : {color.redComponent, color.greenComponent, color.blueComponent}) {
        text += ValueText::shortestReal(component) + ' ';
    }
    text += ValueText::shortestReal(color.alphaComponent) + ')';
}

void appendArray(std::string& text, const NSArray& array, int level) {
    std::string_view separator = "[";
    for (const PropertyListValue& element : array) {
        text += std::exchange(separator, ", ");
        append(text, element, level + 1);
    }
    text += separator == "[" ? "[]" : "]";
}

void appendDictionary(std::string& text, const NSDictionary& dictionary, int level) {
    std::vector<std::pair<std::string, PropertyListValue>> entries;
    for (const auto& [key, value] : dictionary) entries.emplace_back(key, value);
    std::sort(entries.begin(), entries.end(),
              [](const auto& left, const auto& right) { return left.first < right.first; });
    std::string_view separator = "{";
    for (const auto& [key, value] : entries) {
        text += std::exchange(separator, ", ");
        text += key + " = ";
        append(text, value, level + 1);
    }
    text += separator == "{" ? "{}" : "}";
}

void append(std::string& text, const PropertyListValue& value, int level) {
    using Kind = PropertyListValue::Kind;
    if (level > shownLevels) {
        text += "...";
        return;
    }
    switch (value.kind()) {
        case Kind::Null:
            text += "(null)";
            break;
        case Kind::NullMarker:
            text += "<null>";
            break;
        case Kind::Boolean:
            text += value.boolValue() ? "true" : "false";
            break;
        case Kind::Real: {
            const std::string digits = ValueText::shortestReal(value.doubleValue());
            text += digits;
            // A real must not look like an integer: which of the two a setting holds matters.
            if (digits.find_first_not_of("-0123456789") == std::string::npos) text += ".0";
            break;
        }
        case Kind::String:
            appendQuoted(text, value.stringView());
            break;
        case Kind::Data:
            appendData(text, value.data());
            break;
        case Kind::Color:
            appendColor(text, value.color());
            break;
        case Kind::Array:
            appendArray(text, value.array(), level);
            break;
        case Kind::Dictionary:
            appendDictionary(text, value.dictionary(), level);
            break;
        default:
            text += value.stringValue();
            break;
    }
}

}  // namespace

std::string ValueText::shortestReal(double value) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

std::string ValueText::isoDate(NSDate date) {
    using namespace std::chrono;
    constexpr double furthestSecond = 9e11;  // the years that year_month_day can count
    const double seconds = date.timeIntervalSince1970();
    if (!std::isfinite(seconds) || std::abs(seconds) > furthestSecond) return "invalid date";
    const auto instant = sys_time<microseconds>(
        microseconds(static_cast<std::int64_t>(std::floor(seconds * 1e6 + 0.5))));
    const auto day = floor<days>(instant);
    const year_month_day calendar(day);
    const hh_mm_ss time(instant - day);
    const int year = int(calendar.year());
    std::array<char, 64> buffer{};
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%s%04d-%02u-%02uT%02d:%02d:%02d", year < 0 ? "-" : "",
        std::abs(year), unsigned(calendar.month()), unsigned(calendar.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()));
    std::string text(buffer.data(), static_cast<std::size_t>(length));
    if (time.subseconds().count() != 0) {
        std::string digits = std::to_string(1000000 + time.subseconds().count()).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text += '.' + digits;
    }
    return text + 'Z';
}

std::string QRVPlatform::description(const PropertyListValue& value) {
    if (value.isString()) return value.stringValue();
    std::string text;
    append(text, value, 0);
    return text;
}

std::ostream& operator<<(std::ostream& stream, const PropertyListValue& value) {
    std::string text;
    append(text, value, 0);
    return stream << text;
}

std::ostream& operator<<(std::ostream& stream, const NSDictionary& value) {
    return stream << PropertyListValue(value);
}

std::ostream& operator<<(std::ostream& stream, const NSArray& value) {
    return stream << PropertyListValue(value);
}

std::ostream& operator<<(std::ostream& stream, const NSDate& value) {
    return stream << PropertyListValue(value);
}
