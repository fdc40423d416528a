// SPDX-License-Identifier: MIT
#include "Platform/Values/ReadableScalars.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace QRVPlatform::ReadableScalars {

std::string real(double value) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

std::string date(NSDate date) {
    using namespace std::chrono;
    constexpr double furthestSecond = 9e11;  // the years that year_month_day can count
    const double seconds = date.timeIntervalSince1970();
    if (!std::isfinite(seconds) || std::abs(seconds) > furthestSecond) return "invalid date";
    const auto instant = sys_time<microseconds>(
        microseconds(static_cast<std::int64_t>(std::floor(seconds * 1e6 + 0.5))));
    const auto day = floor<days>(instant);
    const year_month_day calendar(day);
    const hh_mm_ss time(instant - day);
    const int year = int(calendar.year());
    std::array<char, 64> buffer{};
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%s%04d-%02u-%02uT%02d:%02d:%02d", year < 0 ? "-" : "",
        std::abs(year), unsigned(calendar.month()), unsigned(calendar.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()));
    std::string text(buffer.data(), static_cast<std::size_t>(length));
    if (time.subseconds().count() != 0) {
        std::string digits = std::to_string(1000000 + time.subseconds().count()).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text += '.' + digits;
    }
    return text + 'Z';
}

}  // namespace QRVPlatform::ReadableScalars
