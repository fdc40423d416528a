// SPDX-License-Identifier: MIT
#pragma once

// How the user's locale writes the hour. Inner header of this folder.

#include <string_view>

namespace QRVInside {

enum class ClockRule {
    TwentyFourHoursTwoDigits,  ///< 09:05
    TwentyFourHours,           ///< 9:05
    TwelveHoursTwoDigits,      ///< 09:05 pm
    TwelveHours,               ///< 9:05 pm; also what tells no hour, or hours counted from K or k
};

/// `pattern` is one of the short time style, as `shortTimePattern` gives it.
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
