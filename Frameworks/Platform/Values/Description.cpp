// SPDX-License-Identifier: MIT
// Values as one line of text for people and logs.

#include <algorithm>
#include <ostream>
#include <utility>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Platform/Values/ReadableScalars.h"

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
        text += ReadableScalars::real(component) + ' ';
    }
    text += ReadableScalars::real(color.alphaComponent) + ')';
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
            const std::string digits = ReadableScalars::real(value.doubleValue());
            text += digits;
            // A reader must be able to tell a real from an integer.
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
        case Kind::Integer:
        case Kind::Date:
            text += value.stringValue();
            break;
    }
}

}  // namespace

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
