// SPDX-License-Identifier: MIT
#include "Edits/EditedText.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "Reporting/Failure.h"
#include "Text/ColorText.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/JSONReader.h"
#include "Text/ScalarText.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

using Kind = PropertyListValue::Kind;

constexpr std::string_view blanks = " \t\r\n";

std::string trimmed(const std::string& text) {
    const std::size_t start = text.find_first_not_of(blanks);
    if (start == text.npos) return {};
    return text.substr(start, text.find_last_not_of(blanks) + 1 - start);
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::vector<std::string> words;
    for (std::size_t start = text.find_first_not_of(blanks); start != text.npos;) {
        const std::size_t end = text.find_first_of(blanks, start);
        words.push_back(text.substr(start, end - start));
        start = text.find_first_not_of(blanks, end);
    }
    return words;
}

/// The bytes that a text of the kind consists of; empty when any may be wrong at its place.
std::string_view bytesOf(Kind kind) {
    switch (kind) {
        case Kind::Integer:
            return "-0123456789";
        case Kind::Real:
            return "+-.0123456789eE";
        case Kind::Date:
            return "-.:0123456789TZ";
        case Kind::Data:
            return "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= \t\r\n";
        default:
            return {};
    }
}

std::string typeOf(Kind kind) {
    switch (kind) {
        case Kind::Boolean:
            return "bool";
        case Kind::Integer:
            return "int";
        case Kind::Real:
            return "real";
        case Kind::String:
            return "string";
        case Kind::Date:
            return "date";
        case Kind::Data:
            return "data";
        case Kind::Array:
        case Kind::Dictionary:
            return "json";
        default:
            return "";
    }
}

/// " at character 3", where it is known.
std::string placeOfFault(const std::string& text, Kind kind) {
    const std::string_view bytes = bytesOf(kind);
    const std::size_t wrong = bytes.empty() ? text.npos : text.find_first_not_of(bytes);
    if (wrong == text.npos) return {};
    return ", at character " +
           std::to_string(characterCount(std::string_view(text).substr(0, wrong)) + 1);
}

PropertyListValue scalarFromText(const std::string& text, Kind kind) {
    const std::string rest = trimmed(text);
    if (rest.empty() && kind != Kind::Data) throw Failure(Fault::WrongValue, "a value is missing");
    try {
        return valueFromText(rest, typeOf(kind));
    } catch (const Failure& failure) {
        const std::string place = placeOfFault(text, kind);
        if (place.empty()) throw;
        throw Failure(failure.fault(), failure.what() + place);
    }
}

PropertyListValue containerFromText(const std::string& text, Kind kind) {
    PropertyListValue value = valueFromJSON(text);
    if (value.kind() == kind) return value;
    const char* const expected = kind == Kind::Array ? "an array, [...]" : "a dictionary, {...}";
    throw JSONFault(text, std::min(text.find_first_not_of(blanks), text.size()),
                    kindName(value) + ", not " + expected);
}

/// As the store reads it. The numbers keep their digits.
PropertyListValue colorFromText(const std::string& text) {
    const std::vector<std::string> words = wordsOf(text);
    const NSColor color = colorFromTexts(words);
    if (words.size() == 1) return colorText(color);
    std::string numbers;
    for (const std::string& word : words) {
        if (!isDecimalNumber(word)) return colorText(color);
        numbers += (numbers.empty() ? "" : " ") + word;
    }
    return words.size() == 3 ? numbers + " 1" : numbers;
}

PropertyListValue valueOfKind(const std::string& text, Kind kind) {
    switch (kind) {
        case Kind::String:
            return valueFromText(text, typeOf(kind));
        case Kind::Color:
            return colorFromText(text);
        case Kind::Array:
        case Kind::Dictionary:
            return containerFromText(text, kind);
        case Kind::Boolean:
        case Kind::Integer:
        case Kind::Real:
        case Kind::Date:
        case Kind::Data:
            return scalarFromText(text, kind);
        case Kind::Null:
        case Kind::NullMarker:
            break;
    }
    return valueFromText(text, "");
}

}  // namespace

std::string editedText(const PropertyListValue& value) {
    constexpr std::size_t longestLine = 60;
    if (value.isNull()) return {};
    if (!value.isArray() && !value.isDictionary()) return bareText(value);
    const std::string line = jsonText(value);
    return line.size() <= longestLine ? line : indentedJSON(value);
}

PropertyListValue valueFromEditedText(const std::string& text, Kind kind,
                                      const PropertyListValue& original) {
    if (!original.isNull() && text == editedText(original)) return original;
    PropertyListValue value = valueOfKind(text, kind);
    requireStorable(value);
    return value;
}

}  // namespace Tool
