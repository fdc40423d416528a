// SPDX-License-Identifier: MIT
#pragma once

// Times as people write and read them, in the time zone of the user.

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// `10 minutes ago`, `10 minutes` and `10m` (of seconds, minutes, hours, days and weeks), `today`
/// and `yesterday` (from midnight on), `09:30` (today), `2026-11-22`, and `2026-11-22 09:30:05`
/// with or without seconds, with a blank or a T, and with a Z for UTC. Empty for anything else.
std::optional<NSDate> pastTimeFromText(std::string_view text, NSDate now);

/// Why a text is no such time, for people; empty when it is one.
std::string objectionToPastTime(const std::string& text);

/// `2026-11-22 09:30:05`; fractions of seconds are left out.
std::string localTimeText(NSDate time);

}  // namespace Tool
