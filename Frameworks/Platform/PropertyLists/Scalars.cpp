// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/Scalars.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>

namespace PropertyLists {
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

// Answers whether the number is negative.
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

/// Takes fields of fixed form from the front of a date.
class DateFields {
  public:
    explicit DateFields(std::string_view text) : text_(text) {}

    [[nodiscard]] bool isWhole() const { return !hasFault_ && text_.empty(); }

    int number(std::size_t digits) {
        int value = 0;
        for (std::size_t index = 0; index < digits; ++index) {
            if (index >= text_.size() || !isDigit(text_[index])) return fault();
            value = value * 10 + (text_[index] - '0');
        }
        text_.remove_prefix(digits);
        return value;
    }
    int numberUpTo(int largest) {
        const int value = number(2);
        return value <= largest ? value : fault();
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

constexpr double secondsPerDay = 86400;
constexpr std::chrono::sys_days referenceDay = std::chrono::year(2001) / 1 / 1;

void appendPadded(std::string& text, int number, std::size_t digits) {
    std::array<char, 8> buffer{};
    const auto end = std::to_chars(buffer.begin(), buffer.end(), number).ptr;
    const auto length = static_cast<std::size_t>(end - buffer.begin());
    if (length < digits) text.append(digits - length, '0');
    text.append(buffer.begin(), length);
}

constexpr std::string_view base64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

enum Base64Class : std::uint8_t { Padding = 64, Space, Other };

constexpr std::array<std::uint8_t, 256> base64Classes = [] {
    std::array<std::uint8_t, 256> classes{};
    classes.fill(Other);
    for (std::size_t index = 0; index < base64Digits.size(); ++index) {
        classes[static_cast<unsigned char>(base64Digits[index])] = static_cast<std::uint8_t>(index);
    }
    for (const char space : {' ', '\t', '\n', '\r'})
        classes[static_cast<unsigned char>(space)] = Space;
    classes[static_cast<unsigned char>('=')] = Padding;
    return classes;
}();

constexpr char byteOf(std::uint32_t group, unsigned shift) {
    return static_cast<char>(static_cast<unsigned char>(group >> shift));
}

}  // namespace

std::string_view withoutSpaceAround(std::string_view text) noexcept {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

std::optional<unsigned> hexadecimalDigit(char character) noexcept {
    const char digit = lowercase(character);
    if (isDigit(digit)) return static_cast<unsigned>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<unsigned>(digit - 'a' + 10);
    return std::nullopt;
}

std::optional<PropertyListValue> parseInteger(std::string_view text) noexcept {
    const bool isNegative = removeSign(text);
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
    const std::chrono::year year(fields.number(4));
    fields.expect('-');
    const std::chrono::month month(static_cast<unsigned>(fields.number(2)));
    fields.expect('-');
    const std::chrono::day day(static_cast<unsigned>(fields.number(2)));
    fields.expect('T');
    int seconds = fields.numberUpTo(23);
    fields.expect(':');
    seconds = seconds * 60 + fields.numberUpTo(59);
    fields.expect(':');
    seconds = seconds * 60 + fields.numberUpTo(59);
    const double fraction = fields.fraction();
    fields.expect('Z');
    const std::chrono::year_month_day date = year / month / day;
    if (!fields.isWhole() || !date.ok()) return std::nullopt;
    const auto days = (std::chrono::sys_days(date) - referenceDay).count();
    return NSDate(static_cast<double>(days) * secondsPerDay + seconds + fraction);
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
        group = group << 6U | (kind == Padding ? 0U : kind);
        if (++digits < 4) continue;
        for (const unsigned shift : {16U, 8U, 0U}) bytes[written++] = byteOf(group, shift);
        digits = 0;
        group = 0;
    }
    if (digits != 0 || padding > 2) return std::nullopt;
    bytes.resize(written - padding);
    return bytes;
}

void appendInteger(std::string& text, const PropertyListValue& value) {
    std::array<char, 24> buffer{};
    const auto end = value.isBeyondSigned()
                         ? std::to_chars(buffer.begin(), buffer.end(), value.unsignedValue()).ptr
                         : std::to_chars(buffer.begin(), buffer.end(), value.integerValue()).ptr;
    text.append(buffer.begin(), end);
}

void appendReal(std::string& text, double value) {
    if (std::isnan(value)) {
        text += "nan";
    } else if (std::isinf(value)) {
        text += value < 0 ? "-infinity" : "+infinity";
    } else {
        std::array<char, 32> buffer{};
        text.append(buffer.begin(), std::to_chars(buffer.begin(), buffer.end(), value).ptr);
    }
}

bool appendDate(std::string& text, NSDate date) {
    const double seconds = std::floor(date.timeIntervalSinceReferenceDate());
    const double day = std::floor(seconds / secondsPerDay);
    // Compared as doubles: a date may be too far away for any calendar, infinite or no number.
    constexpr double firstDay =
        (std::chrono::sys_days(std::chrono::year(0) / 1 / 1) - referenceDay).count();
    constexpr double lastDay =
        (std::chrono::sys_days(std::chrono::year(9999) / 12 / 31) - referenceDay).count();
    if (!(day >= firstDay && day <= lastDay)) return false;
    const std::chrono::year_month_day calendar(referenceDay +
                                               std::chrono::days(static_cast<int>(day)));
    const int secondOfDay = static_cast<int>(seconds - day * secondsPerDay);
    appendPadded(text, static_cast<int>(calendar.year()), 4);
    text += '-';
    appendPadded(text, static_cast<int>(static_cast<unsigned>(calendar.month())), 2);
    text += '-';
    appendPadded(text, static_cast<int>(static_cast<unsigned>(calendar.day())), 2);
    text += 'T';
    appendPadded(text, secondOfDay / 3600, 2);
    text += ':';
    appendPadded(text, secondOfDay / 60 % 60, 2);
    text += ':';
    appendPadded(text, secondOfDay % 60, 2);
    text += 'Z';
    return true;
}

void appendBase64(std::string& text, std::string_view bytes) {
    std::size_t written = text.size();
    text.resize(written + (bytes.size() + 2) / 3 * 4, '=');
    for (std::size_t index = 0; index < bytes.size(); index += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - index);
        std::uint32_t group = 0;
        for (std::size_t offset = 0; offset < count; ++offset) {
            const auto byte = static_cast<unsigned char>(bytes[index + offset]);
            group |= std::uint32_t{byte} << (16 - 8 * offset);
        }
        for (std::size_t digit = 0; digit <= count; ++digit) {
            text[written + digit] = base64Digits[group >> (18 - 6 * digit) & 0x3FU];
        }
        written += 4;
    }
}

}  // namespace PropertyLists
