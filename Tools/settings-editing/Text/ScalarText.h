// SPDX-License-Identifier: MIT
#pragma once

// Numbers, dates and bytes as text, the same in every locale.

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Digits with or without a minus sign before them.
bool isDecimalInteger(std::string_view text);
/// The same with or without a point, and an exponent.
bool isDecimalNumber(std::string_view text);

/// The value of a decimal integer; null when it is not between -2^63 and 2^64-1.
PropertyListValue integerFromText(std::string_view text);
/// The value of a decimal number; empty when it is too large or too small for a real.
std::optional<double> realFromText(std::string_view text);

/// The names of the reals that have no digits: `nan`, `inf`, `-inf`.
std::optional<double> namedReal(std::string_view text);
/// Empty for a real that has digits.
std::string nameOfReal(double value);

/// `YYYY-MM-DDTHH:MM:SSZ`, with or without a fraction of seconds; a day and time that exist.
std::optional<NSDate> dateFromText(std::string_view text);
/// The same form, the fraction in the fewest digits that read back, or nearest where none do: some
/// instants of the second before 2001. Empty outside the years 0000 to 9999.
std::string dateText(NSDate date);

/// Base64, with white space anywhere; the decoded bytes.
std::optional<std::string> dataFromText(std::string_view text);
std::string dataText(std::string_view bytes);

}  // namespace Tool
