// SPDX-License-Identifier: MIT
#include "Platform/Values/Calendar.h"

#include <charconv>
#include <chrono>

namespace QRVPlatform::Calendar {
namespace {

// The calendar repeats itself after so many years, so std::chrono need count only these.
constexpr std::int64_t yearsOfCycle = 400;
constexpr std::int64_t daysOfCycle = 146097;
constexpr std::int64_t secondsPerDay = 86400;
constexpr std::chrono::sys_days referenceDay = std::chrono::year(2001) / 1 / 1;

struct Division {
    std::int64_t quotient;
    std::int64_t remainder;  // never negative
};

constexpr Division divided(std::int64_t number, std::int64_t divisor) {
    const std::int64_t remainder = (number % divisor + divisor) % divisor;
    return {(number - remainder) / divisor, remainder};
}

std::int64_t dayOf(const Fields& fields) {
    const auto [moreYears, month] = divided(fields.month - 1, 12);
    const auto [cycles, year] = divided(fields.year + moreYears, yearsOfCycle);
    const std::chrono::sys_days firstOfMonth =
        std::chrono::year(static_cast<int>(year)) /
        std::chrono::month(static_cast<unsigned>(month + 1)) / 1;
    return cycles * daysOfCycle + (firstOfMonth - referenceDay).count() + fields.day - 1;
}

/// Writes `number` with that many digits and returns their end.
char* writePadded(char* place, unsigned number, std::size_t digits) {
    for (char* digit = place + digits; digit != place; number /= 10) {
        *--digit = static_cast<char>('0' + number % 10);
    }
    return place + digits;
}

char* writeField(char* place, char separator, unsigned number) {
    *place = separator;
    return writePadded(place + 1, number, 2);
}

char* writeYear(char* place, std::int64_t year) {
    constexpr std::int64_t firstOfFiveDigits = 10000;
    if (year < 0) *place++ = '-';
    const std::int64_t magnitude = year < 0 ? -year : year;
    if (magnitude < firstOfFiveDigits)
        return writePadded(place, static_cast<unsigned>(magnitude), 4);
    return std::to_chars(place, place + longestText, magnitude).ptr;
}

}  // namespace

std::int64_t secondOf(const Fields& fields) noexcept {
    const std::int64_t hours = dayOf(fields) * 24 + fields.hour;
    return (hours * 60 + fields.minute) * 60 + fields.second;
}

char* writeText(char* place, std::int64_t second) noexcept {
    const auto [day, secondOfDay] = divided(second, secondsPerDay);
    const auto [cycles, dayOfCycle] = divided(day, daysOfCycle);
    const std::chrono::year_month_day date(referenceDay +
                                           std::chrono::days(static_cast<int>(dayOfCycle)));
    const auto time = static_cast<unsigned>(secondOfDay);
    place = writeYear(place, int{date.year()} + cycles * yearsOfCycle);
    place = writeField(place, '-', static_cast<unsigned>(date.month()));
    place = writeField(place, '-', static_cast<unsigned>(date.day()));
    place = writeField(place, 'T', time / 3600);
    place = writeField(place, ':', time / 60 % 60);
    place = writeField(place, ':', time % 60);
    *place = 'Z';
    return place + 1;
}

}  // namespace QRVPlatform::Calendar
