// SPDX-License-Identifier: MIT
#include "Text/ScalarText.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Tool {
namespace {

constexpr std::string_view decimalDigits = "0123456789";
constexpr double secondsPerDay = 86400;
constexpr std::chrono::sys_days referenceDay = std::chrono::year(2001) / 1 / 1;

bool take(std::string_view& text, char character) {
    if (!text.starts_with(character)) return false;
    text.remove_prefix(1);
    return true;
}

std::string_view takeDigits(std::string_view& text) {
    const std::string_view digits = text.substr(0, text.find_first_not_of(decimalDigits));
    text.remove_prefix(digits.size());
    return digits;
}

bool takeExponent(std::string_view& text) {
    if (!take(text, 'e') && !take(text, 'E')) return true;
    if (!take(text, '-')) take(text, '+');
    return !takeDigits(text).empty();
}

template <typename Number>
std::optional<Number> converted(std::string_view text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

/// A field of a date: exactly this many digits, at most `largest`.
std::optional<int> takeField(std::string_view& text, std::size_t width, int largest) {
    const std::string_view digits = text.substr(0, width);
    if (digits.size() < width || digits.find_first_not_of(decimalDigits) != digits.npos)
        return std::nullopt;
    text.remove_prefix(width);
    const auto value = converted<int>(digits);
    return value <= largest ? value : std::nullopt;
}

std::optional<double> takeDay(std::string_view& text) {
    const auto year = takeField(text, 4, 9999);
    if (!year || !take(text, '-')) return std::nullopt;
    const auto month = takeField(text, 2, 12);
    if (!month || !take(text, '-')) return std::nullopt;
    const auto day = takeField(text, 2, 31);
    if (!day) return std::nullopt;
    const auto date = std::chrono::year(*year) / *month / *day;
    if (!date.ok()) return std::nullopt;
    return static_cast<double>((std::chrono::sys_days(date) - referenceDay).count());
}

std::optional<int> takeSecondOfDay(std::string_view& text) {
    const auto hour = takeField(text, 2, 23);
    if (!hour || !take(text, ':')) return std::nullopt;
    const auto minute = takeField(text, 2, 59);
    if (!minute || !take(text, ':')) return std::nullopt;
    const auto second = takeField(text, 2, 59);
    if (!second) return std::nullopt;
    return (*hour * 60 + *minute) * 60 + *second;
}

std::optional<double> takeFraction(std::string_view& text) {
    if (!take(text, '.')) return 0;
    const std::string_view digits = takeDigits(text);
    if (digits.empty()) return std::nullopt;
    return realFromText("0." + std::string(digits));
}

std::string padded(int number, std::size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(width > digits.size() ? width - digits.size() : 0, '0') + digits;
}

/// With the point; empty for 0.
std::string fractionText(double seconds, double wholeSeconds) {
    constexpr int mostDigits = 17;
    const double fraction = seconds - wholeSeconds;
    if (fraction <= 0) return {};
    std::array<char, 512> buffer{};
    for (int digits = 1; digits <= mostDigits; ++digits) {
        const auto end =
            std::to_chars(buffer.begin(), buffer.end(), fraction, std::chars_format::fixed, digits);
        const std::string text(buffer.begin(), end.ptr);
        if (wholeSeconds + converted<double>(text).value_or(0) == seconds) return text.substr(1);
    }
    // Within a second of the reference date a double is more precise than any number of digits
    // here.
    const auto end =
        std::to_chars(buffer.begin(), buffer.end(), fraction, std::chars_format::fixed);
    return {buffer.begin() + 1, end.ptr};
}

constexpr std::string_view base64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string withoutSpace(std::string_view text) {
    std::string rest;
    for (const char character : text)
        if (std::string_view(" \t\r\n").find(character) == std::string_view::npos)
            rest += character;
    return rest;
}

}  // namespace

bool isDecimalInteger(std::string_view text) {
    take(text, '-');
    return !takeDigits(text).empty() && text.empty();
}

bool isDecimalNumber(std::string_view text) {
    take(text, '-');
    const std::size_t whole = takeDigits(text).size();
    const std::size_t fraction = take(text, '.') ? takeDigits(text).size() : 0;
    return whole + fraction > 0 && takeExponent(text) && text.empty();
}

PropertyListValue integerFromText(std::string_view text) {
    if (const auto number = converted<std::int64_t>(text)) return *number;
    if (const auto number = converted<std::uint64_t>(text)) return *number;
    return nullptr;
}

std::optional<double> realFromText(std::string_view text) {
    if (!isDecimalNumber(text)) return std::nullopt;
    return converted<double>(text);
}

std::optional<double> namedReal(std::string_view text) {
    using Limits = std::numeric_limits<double>;
    if (text == "nan") return Limits::quiet_NaN();
    if (text == "inf") return Limits::infinity();
    if (text == "-inf") return -Limits::infinity();
    return std::nullopt;
}

std::string nameOfReal(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    return {};
}

std::optional<NSDate> dateFromText(std::string_view text) {
    const auto day = takeDay(text);
    if (!day || !take(text, 'T')) return std::nullopt;
    const auto second = takeSecondOfDay(text);
    if (!second) return std::nullopt;
    const auto fraction = takeFraction(text);
    if (!fraction || text != "Z") return std::nullopt;
    return NSDate(*day * secondsPerDay + *second + *fraction);
}

std::string dateText(NSDate date) {
    const double seconds = date.timeIntervalSinceReferenceDate();
    // Next to nothing before a whole second is that second: the difference would round up to 1.
    double wholeSeconds = std::floor(seconds);
    if (seconds - wholeSeconds >= 1) wholeSeconds += 1;
    const double dayCount = std::floor(wholeSeconds / secondsPerDay);
    constexpr auto firstDay = std::chrono::sys_days(std::chrono::year(0) / 1 / 1) - referenceDay;
    constexpr auto lastDay =
        std::chrono::sys_days(std::chrono::year(9999) / 12 / 31) - referenceDay;
    // Written so that NaN is outside too.
    if (!(dayCount >= firstDay.count() && dayCount <= lastDay.count())) return {};
    const std::chrono::year_month_day day(referenceDay +
                                          std::chrono::days(static_cast<int>(dayCount)));
    const int second = static_cast<int>(wholeSeconds - dayCount * secondsPerDay);
    return padded(static_cast<int>(day.year()), 4) + "-" +
           padded(static_cast<int>(static_cast<unsigned>(day.month())), 2) + "-" +
           padded(static_cast<int>(static_cast<unsigned>(day.day())), 2) + "T" +
           padded(second / 3600, 2) + ":" + padded(second / 60 % 60, 2) + ":" +
           padded(second % 60, 2) + fractionText(seconds, wholeSeconds) + "Z";
}

std::optional<std::string> dataFromText(std::string_view text) {
    std::string digits = withoutSpace(text);
    if (digits.size() % 4 != 0) return std::nullopt;
    for (int padding = 0; padding < 2 && digits.ends_with('='); ++padding) digits.pop_back();
    std::string bytes;
    std::uint32_t group = 0;
    unsigned bits = 0;
    for (const char digit : digits) {
        const std::size_t value = base64Digits.find(digit);
        if (value == std::string_view::npos) return std::nullopt;
        group = (group << 6U | static_cast<std::uint32_t>(value)) & 0xFFFFU;
        bits += 6;
        if (bits < 8) continue;
        bits -= 8;
        bytes += static_cast<char>(static_cast<unsigned char>(group >> bits & 0xFFU));
    }
    return bytes;
}

std::string dataText(std::string_view bytes) {
    std::string text;
    std::uint32_t group = 0;
    unsigned bits = 0;
    for (const char byte : bytes) {
        group = (group << 8U | static_cast<unsigned char>(byte)) & 0xFFFFU;
        for (bits += 8; bits >= 6; bits -= 6) text += base64Digits[group >> (bits - 6) & 0x3FU];
    }
    if (bits > 0) text += base64Digits[group << (6 - bits) & 0x3FU];
    text.append((4 - text.size() % 4) % 4, '=');
    return text;
}

}  // namespace Tool
