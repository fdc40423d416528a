// SPDX-License-Identifier: MIT
#pragma once

// Colours as people write them, and as a terminal shows them.

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Three or four numbers, red, green, blue and alpha, usually from 0 to 1; or one text of `#` and
/// six or eight hexadecimal digits. Without an alpha it is 1. Throws Failure (WrongValue).
NSColor colorFromTexts(const std::vector<std::string>& texts);

/// The four numbers, in the fewest digits that read back in the precision of a float.
std::string colorText(const NSColor& color);

/// `#rrggbbaa`; what is outside of 0 to 1 becomes the nearest end.
std::string hexadecimalColorText(const NSColor& color);

/// Two blanks on a ground of the colour, alpha left aside: with 24 bits, or with the nearest of
/// the 216 colours that every colour terminal has.
std::string swatch(const NSColor& color, bool has24Bits);

}  // namespace Tool
