// SPDX-License-Identifier: MIT
#include "Text/PastTime.h"

#include <array>
#include <cmath>
#include <ctime>
#include <utility>

#include "Text/LetterCase.h"
#include "Text/ScalarText.h"

namespace Tool {
namespace {

constexpr std::array<std::pair<std::string_view, double>, 5> units = {
    {{"second", 1}, {"minute", 60}, {"hour", 3600}, {"day", 86400}, {"week", 604800}}};

std::string_view trimmed(std::string_view text) {
    while (text.starts_with(' ')) text.remove_prefix(1);
    while (text.ends_with(' ')) text.remove_suffix(1);
    return text;
}

/// By its name, in singular or plural, or by its first letter; 0 for none.
double secondsOfUnit(std::string_view text) {
    for (const auto& [name, seconds] : units)
        if (text == name || text == name.substr(0, 1) ||
            (text.starts_with(name) && text.substr(name.size()) == "s"))
            return seconds;
    return 0;
}

std::optional<NSDate> timeAgo(std::string_view text, NSDate now) {
    if (text.ends_with(" ago")) text = trimmed(text.substr(0, text.size() - 4));
    std::size_t digits = text.find_first_not_of("0123456789");
    constexpr std::size_t mostDigits = 9;
    if (digits == text.npos || digits == 0 || digits > mostDigits) return std::nullopt;
    const auto count = realFromText(text.substr(0, digits));
    const double seconds = secondsOfUnit(trimmed(text.substr(digits)));
    if (!count || seconds == 0) return std::nullopt;
    return NSDate(now.timeIntervalSinceReferenceDate() - *count * seconds);
}

std::tm localDay(NSDate now) {
    const auto seconds = static_cast<std::time_t>(std::floor(now.timeIntervalSince1970()));
    std::tm day{};
    const std::tm* const local = std::localtime(&seconds);
    if (local != nullptr) day = *local;
    day.tm_hour = day.tm_min = day.tm_sec = 0;
    day.tm_isdst = -1;
    return day;
}

NSDate midnight(NSDate now, int daysAgo) {
    std::tm day = localDay(now);
    day.tm_mday -= daysAgo;
    return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(std::mktime(&day)));
}

/// The local time of the fields of a time in UTC.
NSDate asLocal(NSDate fields) {
    const auto seconds = static_cast<std::time_t>(fields.timeIntervalSince1970());
    std::tm local = *std::gmtime(&seconds);
    local.tm_isdst = -1;
    return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(std::mktime(&local)));
}

/// Completes the parts that are missing of `YYYY-MM-DDTHH:MM:SSZ`.
std::optional<NSDate> dayAndTime(std::string_view text) {
    constexpr std::size_t lengthOfDay = 10;
    constexpr std::size_t lengthOfMinutes = 16;
    std::string whole(text);
    const bool isUTC = whole.ends_with('Z');
    if (isUTC) whole.pop_back();
    if (whole.size() > lengthOfDay && whole[lengthOfDay] == ' ') whole[lengthOfDay] = 'T';
    if (whole.size() == lengthOfDay) whole += "T00:00";
    if (whole.size() == lengthOfMinutes) whole += ":00";
    const auto date = dateFromText(whole + "Z");
    if (!date || isUTC) return date;
    return asLocal(*date);
}

std::string dayText(NSDate now) {
    return localTimeText(now).substr(0, 10);
}

}  // namespace

std::optional<NSDate> pastTimeFromText(std::string_view given, NSDate now) {
    const std::string text = lowercase(std::string(trimmed(given)));
    if (text == "today") return midnight(now, 0);
    if (text == "yesterday") return midnight(now, 1);
    if (const auto time = timeAgo(text, now)) return time;
    if (const auto time = dayAndTime(trimmed(given))) return time;
    return dayAndTime(dayText(now) + " " + text);
}

std::string objectionToPastTime(const std::string& text) {
    if (pastTimeFromText(text, NSDate::now())) return {};
    return "not a time: " + text +
           "; such as '10 minutes ago', 2h, yesterday, 2026-11-22 or '2026-11-22 09:30'";
}

std::string localTimeText(NSDate time) {
    const auto seconds = static_cast<std::time_t>(std::floor(time.timeIntervalSince1970()));
    const std::tm* const local = std::localtime(&seconds);
    std::array<char, 64> text{};
    if (local == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", local) == 0)
        return dateText(time);
    return text.data();
}

}  // namespace Tool
