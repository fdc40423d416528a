// SPDX-License-Identifier: MIT
#pragma once

// UTF-8, UTF-16 and UTF-32.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace QRVPlatform::PropertyLists {

inline constexpr char32_t lastCharacter = 0x10FFFF;

constexpr bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}
constexpr bool isCharacter(char32_t value) {
    return value <= lastCharacter && !isHighSurrogate(value) && !isLowSurrogate(value);
}
constexpr char32_t characterOfSurrogates(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00);
}

/// `isCharacter(character)` must hold.
void appendUTF8(std::string& text, char32_t character);

/// The number of bytes of the first character of `text`; 0 when it does not begin with well-formed
/// UTF-8.
std::size_t lengthOfFirstCharacter(std::string_view text) noexcept;

bool isASCII(std::string_view text) noexcept;

/// The offset of the first byte that is not part of well-formed UTF-8; empty when all bytes are.
std::optional<std::size_t> positionOfBrokenUTF8(std::string_view text) noexcept;

/// Text of a file for a message. Longer text is cut after 40 bytes, or a few less so that no
/// character is cut.
std::string shortened(std::string_view text);

enum class ByteOrder { LittleEndian, BigEndian };

/// Appends UTF-16 as UTF-8. False at an unpaired surrogate or half a unit; the text before it has
/// then been appended.
[[nodiscard]] bool appendUTF16(std::string& text, std::string_view bytes, ByteOrder order);

/// A file as UTF-8 without byte-order mark.
struct DecodedText {
    std::string_view text;  ///< up to the fault, if there is one
    std::string fault;      ///< empty when the whole file was decoded
};

/// A byte-order mark decides the encoding. Without one it is UTF-16 or UTF-32 when the first
/// character is "<" in that encoding, and UTF-8 otherwise. The text is part of `bytes` when these
/// are UTF-8, otherwise of `converted`.
DecodedText decodeText(std::string_view bytes, std::string& converted);

}  // namespace QRVPlatform::PropertyLists
