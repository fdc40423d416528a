// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/Unicode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "Platform/PropertyLists/Words.h"

namespace QRVPlatform::PropertyLists {
namespace {

constexpr unsigned byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

bool isContinuation(std::string_view text, std::size_t index) {
    return index < text.size() && (byteAt(text, index) & 0xC0U) == 0x80;
}

// The lead byte narrows the range of the second one, which excludes overlong forms, surrogates and
// numbers past U+10FFFF.
bool isSecondOf(unsigned lead, unsigned second) {
    switch (lead) {
        case 0xE0:
            return second >= 0xA0;
        case 0xED:
            return second <= 0x9F;
        case 0xF0:
            return second >= 0x90;
        case 0xF4:
            return second <= 0x8F;
        default:
            return true;
    }
}

std::size_t lengthByLead(unsigned lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

constexpr std::size_t blockSize = 4 * sizeof(std::uint64_t);

bool isBlockOfASCII(const char* bytes) {
    std::array<std::uint64_t, 4> words;
    std::memcpy(words.data(), bytes, blockSize);
    return ((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080ULL) == 0;
}

char32_t unit16(std::string_view bytes, std::size_t index, ByteOrder order) {
    const unsigned first = byteAt(bytes, index);
    const unsigned second = byteAt(bytes, index + 1);
    return order == ByteOrder::BigEndian ? first << 8U | second : second << 8U | first;
}

char32_t unit32(std::string_view bytes, std::size_t index, ByteOrder order) {
    const char32_t first = unit16(bytes, index, order);
    const char32_t second = unit16(bytes, index + 2, order);
    return order == ByteOrder::BigEndian ? first << 16U | second : second << 16U | first;
}

bool appendUTF32(std::string& text, std::string_view bytes, ByteOrder order) {
    constexpr std::size_t unitSize = 4;
    for (std::size_t index = 0; index < bytes.size(); index += unitSize) {
        if (bytes.size() - index < unitSize) return false;
        const char32_t character = unit32(bytes, index, order);
        if (!isCharacter(character)) return false;
        appendUTF8(text, character);
    }
    return true;
}

struct Encoding {
    std::string_view name;
    std::string_view beginning;
    bool isMark;  // dropped from the text
};

using namespace std::string_view_literals;

// In this order, because some of these beginnings contain others.
constexpr std::array encodings{
    Encoding{"UTF-32LE", "\xFF\xFE\0\0"sv, true}, Encoding{"UTF-32BE", "\0\0\xFE\xFF"sv, true},
    Encoding{"UTF-16LE", "\xFF\xFE"sv, true},     Encoding{"UTF-16BE", "\xFE\xFF"sv, true},
    Encoding{"UTF-8", "\xEF\xBB\xBF"sv, true},    Encoding{"UTF-32LE", "<\0\0\0"sv, false},
    Encoding{"UTF-32BE", "\0\0\0<"sv, false},     Encoding{"UTF-16LE", "<\0"sv, false},
    Encoding{"UTF-16BE", "\0<"sv, false},         Encoding{"UTF-8", ""sv, false},
};

DecodedText decodeUTF8(std::string_view bytes) {
    const auto broken = positionOfBrokenUTF8(bytes);
    if (!broken) return {bytes, {}};
    return {bytes.substr(0, *broken), "the text is not valid UTF-8"};
}

DecodedText decodeWide(std::string_view bytes, std::string_view encoding, std::string& converted) {
    const ByteOrder order =
        encoding.ends_with("BE") ? ByteOrder::BigEndian : ByteOrder::LittleEndian;
    converted.reserve(bytes.size() / 2);
    const bool isWhole = encoding.starts_with("UTF-32") ? appendUTF32(converted, bytes, order)
                                                        : appendUTF16(converted, bytes, order);
    return {converted, isWhole ? "" : "the text is not valid " + std::string(encoding)};
}

}  // namespace

void appendUTF8(std::string& text, char32_t character) {
    const auto continuation = [character](unsigned shift) {
        return static_cast<char>(0x80U | (character >> shift & 0x3FU));
    };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += {static_cast<char>(0xC0U | character >> 6U), continuation(0)};
    } else if (character < 0x10000) {
        text += {static_cast<char>(0xE0U | character >> 12U), continuation(6), continuation(0)};
    } else {
        text += {static_cast<char>(0xF0U | character >> 18U), continuation(12), continuation(6),
                 continuation(0)};
    }
}

std::size_t lengthOfFirstCharacter(std::string_view text) noexcept {
    if (text.empty()) return 0;
    const std::size_t length = lengthByLead(byteAt(text, 0));
    if (length < 2) return length;
    if (!isContinuation(text, 1) || !isSecondOf(byteAt(text, 0), byteAt(text, 1))) return 0;
    for (std::size_t index = 2; index < length; ++index) {
        if (!isContinuation(text, index)) return 0;
    }
    return length;
}

bool isASCII(std::string_view text) noexcept {
    std::uint64_t all = 0;
    std::size_t index = 0;
    for (; text.size() - index >= 8; index += 8) all |= wordAt(text.data() + index);
    for (; index < text.size(); ++index) all |= static_cast<unsigned char>(text[index]);
    return (all & wordOf('\x80')) == 0;
}

std::optional<std::size_t> positionOfBrokenUTF8(std::string_view text) noexcept {
    std::size_t position = 0;
    while (position < text.size()) {
        if (text.size() - position >= blockSize && isBlockOfASCII(text.data() + position)) {
            position += blockSize;
            continue;
        }
        const std::size_t length = lengthOfFirstCharacter(text.substr(position));
        if (length == 0) return position;
        position += length;
    }
    return std::nullopt;
}

std::string shortened(std::string_view text) {
    constexpr std::size_t longest = 40;
    if (text.size() <= longest) return std::string(text);
    std::size_t length = longest;
    while (length > 0 && isContinuation(text, length)) --length;
    return std::string(text.substr(0, length)) + "...";
}

bool appendUTF16(std::string& text, std::string_view bytes, ByteOrder order) {
    constexpr std::size_t unitSize = 2;
    for (std::size_t index = 0; index < bytes.size(); index += unitSize) {
        if (bytes.size() - index < unitSize) return false;
        char32_t character = unit16(bytes, index, order);
        if (isHighSurrogate(character)) {
            index += unitSize;
            if (bytes.size() - index < unitSize) return false;
            const char32_t low = unit16(bytes, index, order);
            if (!isLowSurrogate(low)) return false;
            character = characterOfSurrogates(character, low);
        }
        if (!isCharacter(character)) return false;
        appendUTF8(text, character);
    }
    return true;
}

DecodedText decodeText(std::string_view bytes, std::string& converted) {
    const auto encoding = std::find_if(
        encodings.begin(), encodings.end(),
        [bytes](const Encoding& candidate) { return bytes.starts_with(candidate.beginning); });
    if (encoding->isMark) bytes.remove_prefix(encoding->beginning.size());
    return encoding->name == "UTF-8" ? decodeUTF8(bytes)
                                     : decodeWide(bytes, encoding->name, converted);
}

}  // namespace QRVPlatform::PropertyLists
