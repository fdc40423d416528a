// SPDX-License-Identifier: MIT
#include "Reporting/PrintableText.h"

#include <algorithm>
#include <cstddef>

namespace Tool {
namespace {

unsigned byteAt(std::string_view text, std::size_t index) {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0;
}

bool areContinuations(std::string_view text, std::size_t count) {
    const auto bytes = text.substr(1, count);
    return bytes.size() == count && std::all_of(bytes.begin(), bytes.end(), [](char byte) {
               return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
           });
}

std::size_t lengthByFirstByte(unsigned first) {
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    if (first < 0xE0) return 2;
    return first < 0xF0 ? 3 : 4;
}

/// The others would be a longer form of a character, a surrogate, or too large.
bool canBeSecond(unsigned first, unsigned second) {
    switch (first) {
        case 0xE0:
            return second >= 0xA0;
        case 0xED:
            return second < 0xA0;
        case 0xF0:
            return second >= 0x90;
        case 0xF4:
            return second < 0x90;
        default:
            return true;
    }
}

/// How many bytes the first character has; 0 when they are not UTF-8.
std::size_t lengthOfFirst(std::string_view text) {
    const unsigned first = byteAt(text, 0);
    const std::size_t length = lengthByFirstByte(first);
    if (length < 2) return length;
    return areContinuations(text, length - 1) && canBeSecond(first, byteAt(text, 1)) ? length : 0;
}

std::string inHexadecimal(const char* start, unsigned byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    return std::string(start) + digits[byte >> 4U] + digits[byte & 0xFU];
}

/// The first character as it is printed; empty when that is as it is.
std::string escapeOfFirst(std::string_view text, std::size_t length) {
    const unsigned first = byteAt(text, 0);
    if (length == 0 || first < ' ' || first == 0x7F) return inHexadecimal("\\x", first);
    const unsigned second = byteAt(text, 1);
    return first == 0xC2 && second < 0xA0 ? inHexadecimal("\\u00", second) : "";
}

}  // namespace

bool holdsControls(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = lengthOfFirst(text);
        if (!escapeOfFirst(text, length).empty()) return true;
        text.remove_prefix(length);
    }
    return false;
}

std::string printable(std::string_view text, std::string_view kept) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = lengthOfFirst(text);
        const std::string escape = escapeOfFirst(text, length);
        const std::string_view first = text.substr(0, std::max<std::size_t>(length, 1));
        const bool isKept = escape.empty() || kept.find(text.front()) != kept.npos;
        result += isKept ? std::string(first) : escape;
        text.remove_prefix(first.size());
    }
    return result;
}

}  // namespace Tool
