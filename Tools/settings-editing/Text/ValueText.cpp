// SPDX-License-Identifier: MIT
#include "Text/ValueText.h"

#include <map>

#include "Reporting/Failure.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/ScalarText.h"

namespace Tool {
namespace {

[[noreturn]] void refuse(const std::string& why, std::string_view text) {
    throw Failure(Fault::WrongValue, why + ": " + shortened(text));
}

PropertyListValue booleanOf(const std::string& text) {
    if (text != "true" && text != "false") refuse("not true or false", text);
    return text == "true";
}

PropertyListValue integerOf(const std::string& text) {
    if (!isDecimalInteger(text)) refuse("not a decimal integer", text);
    PropertyListValue value = integerFromText(text);
    if (value.isNull()) refuse("integer not between -2^63 and 2^64-1", text);
    return value;
}

PropertyListValue realOf(const std::string& text) {
    if (const auto real = namedReal(text)) return *real;
    if (!isDecimalNumber(text)) refuse("not a decimal number, nan, inf or -inf", text);
    const auto real = realFromText(text);
    if (!real) refuse("number too large or too small for a real", text);
    return *real;
}

PropertyListValue stringOf(const std::string& text) {
    requireUTF8(text);
    return text;
}

PropertyListValue dateOf(const std::string& text) {
    const auto date = dateFromText(text);
    if (!date) refuse("not a date (YYYY-MM-DDTHH:MM:SSZ)", text);
    return *date;
}

PropertyListValue dataOf(const std::string& text) {
    const auto bytes = dataFromText(text);
    if (!bytes) refuse("not base64", text);
    return NSData(*bytes);
}

PropertyListValue jsonValueOf(const std::string& text) {
    return valueFromJSON(text);
}

PropertyListValue guessed(const std::string& text) {
    if (text == "true" || text == "false") return booleanOf(text);
    if (isDecimalInteger(text)) return integerOf(text);
    if (isDecimalNumber(text)) return realOf(text);
    if (text.starts_with('{') || text.starts_with('[') || text.starts_with('"'))
        return valueFromJSON(text);
    return stringOf(text);
}

}  // namespace

const std::vector<std::string>& valueTypes() {
    static const auto& types =
        *new std::vector<std::string>{"bool", "int", "real", "string", "date", "data", "json"};
    return types;
}

PropertyListValue valueFromText(const std::string& text, const std::string& type) {
    using Reader = PropertyListValue (*)(const std::string&);
    static const std::map<std::string, Reader> readers = {
        {"", guessed},        {"bool", booleanOf}, {"int", integerOf}, {"real", realOf},
        {"string", stringOf}, {"date", dateOf},    {"data", dataOf},   {"json", jsonValueOf}};
    return readers.at(type)(text);
}

std::string bareText(const PropertyListValue& value) {
    if (value.isString()) return std::string(value.stringView());
    if (value.isDate()) {
        const std::string text = dateText(value.date());
        return text.empty() ? jsonText(value) : text;
    }
    if (value.isData()) {
        const NSData data = value.data();
        return dataText(data.view());
    }
    const std::string realName = value.isReal() ? nameOfReal(value.doubleValue()) : "";
    return realName.empty() ? jsonText(value) : realName;
}

PropertyListValue orNullMarker(const PropertyListValue& value) {
    return value.isNull() ? NSNull() : value;
}

PropertyListValue orNullMarker(const std::string& text) {
    return text.empty() ? PropertyListValue(NSNull()) : PropertyListValue(text);
}

std::string kindName(const PropertyListValue& value) {
    using Kind = PropertyListValue::Kind;
    switch (value.kind()) {
        case Kind::Boolean:
            return "a boolean";
        case Kind::Integer:
            return "an integer";
        case Kind::Real:
            return "a real";
        case Kind::String:
            return "a string";
        case Kind::Date:
            return "a date";
        case Kind::Data:
            return "data";
        case Kind::Array:
            return "an array";
        case Kind::Dictionary:
            return "a dictionary";
        case Kind::Null:
        case Kind::NullMarker:
        case Kind::Color:
            break;
    }
    return "no value of a settings file";
}

std::string kindWord(const PropertyListValue& value) {
    const std::string name = kindName(value);
    return name.substr(name.find(' ') + 1);
}

}  // namespace Tool
