// SPDX-License-Identifier: MIT
#pragma once

// How the user's locale writes the hour.

#include <string_view>

namespace QRVInside {

enum class ClockRule {
    TwentyFourHoursTwoDigits,  ///< 09:05
    TwentyFourHours,           ///< 9:05
    TwelveHoursTwoDigits,      ///< 09:05 pm
    TwelveHours,               ///< 9:05 pm; also every pattern without an H or h
};

/// `pattern` is a pattern of `shortTimePattern`.
constexpr ClockRule clockRuleForPattern(std::string_view pattern) {
    const auto contains = [pattern](std::string_view field) {
        return pattern.find(field) != std::string_view::npos;
    };
    if (contains("HH")) return ClockRule::TwentyFourHoursTwoDigits;
    if (contains("H")) return ClockRule::TwentyFourHours;
    if (contains("hh")) return ClockRule::TwelveHoursTwoDigits;
    return ClockRule::TwelveHours;
}

}  // namespace QRVInside
