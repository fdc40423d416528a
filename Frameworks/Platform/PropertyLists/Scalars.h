// SPDX-License-Identifier: MIT
#pragma once

// Numbers, dates and data as they are written in files, the same in every locale.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/TextBuilder.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

constexpr bool isSpace(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

inline std::string_view withoutSpaceAround(std::string_view text) noexcept {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

/// The value of a hexadecimal digit.
std::optional<unsigned> hexadecimalDigit(char character) noexcept;

/// @name Parsing; empty when the text is malformed or its value is out of range.
/// @{

/// Decimal, or hexadecimal after `0x`; with or without sign. White space may follow the sign.
std::optional<PropertyListValue> parseInteger(std::string_view text) noexcept;
/// Decimal with or without exponent, `nan`, `inf` and `infinity` in any case; with or without sign.
std::optional<double> parseReal(std::string_view text) noexcept;
/// `YYYY-MM-DDThh:mm:ssZ`, with or without a fraction of seconds. A year has four digits or more,
/// and may have a minus; other fields roll over. The date may be too far away to be written.
std::optional<NSDate> parseDate(std::string_view text) noexcept;
/// Base64, with white space anywhere; the decoded bytes.
std::optional<std::string> parseBase64(std::string_view text);
/// @}

/// `value` is an integer.
void appendInteger(TextBuilder& text, const PropertyListValue& value);
/// The shortest form that reads back as the same number.
void appendReal(TextBuilder& text, double value);
/// Whole seconds, rounded down. `faultOf(date)` must be empty.
void appendDate(TextBuilder& text, NSDate date);
/// Base64 without white space.
void appendBase64(TextBuilder& text, std::string_view bytes);

}  // namespace QRVPlatform::PropertyLists
