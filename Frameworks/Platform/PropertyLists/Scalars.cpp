// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/Scalars.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "Platform/Values/Calendar.h"

namespace QRVPlatform::PropertyLists {
namespace {

constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

constexpr char lowercase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool equalsIgnoringCase(std::string_view text, std::string_view lowercaseWord) {
    return std::equal(text.begin(), text.end(), lowercaseWord.begin(), lowercaseWord.end(),
                      [](char left, char right) { return lowercase(left) == right; });
}

bool removePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

// Removes the sign; true when it is a minus.
bool removeSign(std::string_view& text) {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    return isNegative;
}

template <typename Number, typename... Format>
bool convertsWhole(std::string_view text, Number& number, Format... format) {
    const char* end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, number, format...);
    return fault == std::errc() && stop == end;
}

/// A few decimal digits and nothing else, as nearly all integers are.
std::optional<std::uint64_t> fewDigits(std::string_view text) {
    constexpr std::size_t few = 18;
    if (text.empty() || text.size() > few) return std::nullopt;
    std::uint64_t number = 0;
    for (const char character : text) {
        if (!isDigit(character)) return std::nullopt;
        number = number * 10 + static_cast<unsigned char>(character - '0');
    }
    return number;
}

/// Takes the fields of a date from its front; each has a fixed form.
class DateFields {
  public:
    explicit DateFields(std::string_view text) : text_(text) {}

    [[nodiscard]] bool isWhole() const { return !hasFault_ && text_.empty(); }

    // Four digits or more, perhaps with a minus.
    std::int64_t year() {
        const bool isNegative = removePrefix(text_, "-");
        std::int64_t value = 0;
        std::size_t digits = 0;
        for (; digits < text_.size() && isDigit(text_[digits]); ++digits)
            value = std::min(value * 10 + (text_[digits] - '0'), Calendar::furthestYear);
        if (digits < 4) return fault();
        text_.remove_prefix(digits);
        return isNegative ? -value : value;
    }
    int twoDigits() {
        if (text_.size() < 2 || !isDigit(text_[0]) || !isDigit(text_[1])) return fault();
        const int value = (text_[0] - '0') * 10 + (text_[1] - '0');
        text_.remove_prefix(2);
        return value;
    }
    void expect(char character) {
        if (!removePrefix(text_, {&character, 1})) fault();
    }
    double fraction() {
        if (!text_.starts_with('.')) return 0;
        const std::size_t length = std::min(text_.find_first_not_of("0123456789", 1), text_.size());
        double value = 0;
        if (length < 2 ||
            !convertsWhole(text_.substr(0, length), value, std::chars_format::fixed)) {
            fault();
        }
        text_.remove_prefix(length);
        return value;
    }

  private:
    int fault() {
        hasFault_ = true;
        return 0;
    }
    std::string_view text_;
    bool hasFault_ = false;
};

/// The 24 bits of three bytes; missing bytes are 0.
std::uint32_t groupOf(std::string_view bytes) {
    std::uint32_t group = 0;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        group |= std::uint32_t{static_cast<unsigned char>(bytes[index])} << (16 - 8 * index);
    }
    return group;
}

constexpr std::string_view base64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

enum Base64Class : std::uint8_t { Padding = 64, Space, Other };

constexpr std::array<std::uint8_t, 256> classifyForBase64() {
    std::array<std::uint8_t, 256> classes{};
    classes.fill(Other);
    for (std::size_t index = 0; index < base64Digits.size(); ++index) {
        classes[static_cast<unsigned char>(base64Digits[index])] = static_cast<std::uint8_t>(index);
    }
    for (const char space : {' ', '\t', '\n', '\r'})
        classes[static_cast<unsigned char>(space)] = Space;
    classes[static_cast<unsigned char>('=')] = Padding;
    return classes;
}

constexpr std::array<std::uint8_t, 256> base64Classes = classifyForBase64();

constexpr char byteOf(std::uint32_t group, unsigned shift) {
    return static_cast<char>(static_cast<unsigned char>(group >> shift));
}

/// Writes at most three bytes as four characters and returns their end.
char* writeBase64Group(char* place, std::string_view bytes) {
    const std::uint32_t group = groupOf(bytes);
    for (std::size_t digit = 0; digit < 4; ++digit) {
        place[digit] =
            digit <= bytes.size() ? base64Digits[group >> (18 - 6 * digit) & 0x3FU] : '=';
    }
    return place + 4;
}

}  // namespace

std::optional<unsigned> hexadecimalDigit(char character) noexcept {
    const char digit = lowercase(character);
    if (isDigit(digit)) return static_cast<unsigned>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<unsigned>(digit - 'a' + 10);
    return std::nullopt;
}

std::optional<PropertyListValue> parseInteger(std::string_view text) noexcept {
    if (const auto number = fewDigits(text)) return *number;
    const std::size_t length = text.size();
    const bool isNegative = removeSign(text);
    if (text.size() < length) text = withoutSpaceAround(text);
    const bool isHexadecimal = removePrefix(text, "0x") || removePrefix(text, "0X");
    std::uint64_t magnitude = 0;
    if (!convertsWhole(text, magnitude, isHexadecimal ? 16 : 10)) return std::nullopt;
    if (!isNegative) return magnitude;
    if (magnitude > std::uint64_t{1} << 63U) return std::nullopt;
    return static_cast<std::int64_t>(0 - magnitude);
}

std::optional<double> parseReal(std::string_view text) noexcept {
    const bool isNegative = removeSign(text);
    if (text.empty()) return std::nullopt;
    double magnitude = 0;
    if (equalsIgnoringCase(text, "nan")) {
        magnitude = std::numeric_limits<double>::quiet_NaN();
    } else if (equalsIgnoringCase(text, "inf") || equalsIgnoringCase(text, "infinity")) {
        magnitude = std::numeric_limits<double>::infinity();
    } else if (!(isDigit(text.front()) || text.front() == '.') || !convertsWhole(text, magnitude) ||
               !std::isfinite(magnitude)) {
        return std::nullopt;
    }
    return isNegative ? -magnitude : magnitude;
}

std::optional<NSDate> parseDate(std::string_view text) noexcept {
    DateFields fields(text);
    Calendar::Fields date;
    date.year = fields.year();
    fields.expect('-');
    date.month = fields.twoDigits();
    fields.expect('-');
    date.day = fields.twoDigits();
    fields.expect('T');
    date.hour = fields.twoDigits();
    fields.expect(':');
    date.minute = fields.twoDigits();
    fields.expect(':');
    date.second = fields.twoDigits();
    const double fraction = fields.fraction();
    fields.expect('Z');
    if (!fields.isWhole()) return std::nullopt;
    return NSDate(static_cast<double>(Calendar::secondOf(date)) + fraction);
}

std::optional<std::string> parseBase64(std::string_view text) {
    std::string bytes(text.size() / 4 * 3, '\0');
    std::size_t written = 0;
    std::uint32_t group = 0;
    unsigned digits = 0;
    unsigned padding = 0;
    for (const char character : text) {
        const std::uint8_t kind = base64Classes[static_cast<unsigned char>(character)];
        if (kind == Space) continue;
        if (kind == Other || (kind != Padding && padding != 0)) return std::nullopt;
        if (kind == Padding) ++padding;
        group = group << 6U | (kind & 0x3FU);  // 0 for padding
        if (++digits < 4) continue;
        for (const unsigned shift : {16U, 8U, 0U}) bytes[written++] = byteOf(group, shift);
        digits = 0;
        group = 0;
    }
    if (digits != 0 || padding > 2) return std::nullopt;
    bytes.resize(written - padding);
    return bytes;
}

void appendInteger(TextBuilder& text, const PropertyListValue& value) {
    constexpr std::size_t longest = 24;
    text.appendInPlace([&value](char* place) {
        return value.isBeyondSigned()
                   ? std::to_chars(place, place + longest, value.unsignedValue()).ptr
                   : std::to_chars(place, place + longest, value.integerValue()).ptr;
    });
}

void appendReal(TextBuilder& text, double value) {
    constexpr std::size_t longest = 32;
    if (std::isnan(value)) return text.append("nan");
    if (std::isinf(value)) return text.append(value < 0 ? "-infinity" : "+infinity");
    text.appendInPlace(
        [value](char* place) { return std::to_chars(place, place + longest, value).ptr; });
}

void appendDate(TextBuilder& text, NSDate date) {
    const auto second =
        static_cast<std::int64_t>(std::floor(date.timeIntervalSinceReferenceDate()));
    text.appendInPlace([second](char* place) { return Calendar::writeText(place, second); });
}

void appendBase64(TextBuilder& text, std::string_view bytes) {
    constexpr std::size_t bytesAtOnce = TextBuilder::largestRoom / 4 * 3;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), bytesAtOnce))) {
        text.appendInPlace([part = bytes.substr(0, bytesAtOnce)](char* place) {
            for (std::size_t index = 0; index < part.size(); index += 3) {
                place = writeBase64Group(place, part.substr(index, 3));
            }
            return place;
        });
    }
}

}  // namespace QRVPlatform::PropertyLists
