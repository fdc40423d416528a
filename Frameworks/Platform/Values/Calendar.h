// SPDX-License-Identifier: MIT
#pragma once

// The Gregorian calendar of all years, in UTC. std::chrono counts only the years to 32767.

#include <cstddef>
#include <cstdint>

namespace QRVPlatform::Calendar {

/// The furthest date that has a text, in seconds before and after the reference date of NSDate: 146
/// billion years. Every double up to here converts to an integer without overflow.
inline constexpr double furthestSecond = 0x1p62;

struct Fields {
    std::int64_t year = 0;  ///< there is a year 0, and years before it
    int month = 1;          ///< from 1
    int day = 1;            ///< from 1
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// Years further from 0 are not counted: they are beyond `furthestSecond`.
inline constexpr std::int64_t furthestYear = 200'000'000'000;

/// Seconds since the reference date. A field past its range rolls over into the next larger one:
/// 32 January is 1 February, and month 0 is December of the year before.
std::int64_t secondOf(const Fields& fields) noexcept;

inline constexpr std::size_t longestText = 32;

/// Writes `YYYY-MM-DDThh:mm:ssZ` and returns the end. A year has four digits or more, and a minus
/// before year 0. `second` is at most `furthestSecond` from the reference date.
char* writeText(char* place, std::int64_t second) noexcept;

}  // namespace QRVPlatform::Calendar
