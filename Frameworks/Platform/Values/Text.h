// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform {

/// Scalars as text, the same in every locale.
namespace ValueText {

/// The shortest decimal text that reads back to the same double; `nan`, `inf`, `-inf`.
std::string shortestReal(double value);

/// `2020-01-31T23:59:59.25Z`: UTC, rounded to microseconds, no fraction when it is 0. A year
/// outside 0 to 9999 has a sign. Not finite, or past what a 64-bit count of days holds: `invalid
/// date`.
std::string isoDate(NSDate date);

}  // namespace ValueText

}  // namespace QRVPlatform
