// SPDX-License-Identifier: MIT
#pragma once

/// What a settings file can hold, and what of a value it keeps: all but the fractions of seconds.

#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Throws Failure (WrongValue) unless the text is UTF-8, as keys and strings of a settings file
/// are.
void requireUTF8(const std::string& text);

/// Throws Failure (WrongValue) when no settings file can hold the value.
void requireStorable(const PropertyListValue& value);

/// Whether a date in the value is not a whole second.
bool hasFractionsOfSeconds(const PropertyListValue& value);

/// Whether a file that was given the first value holds it as the second one: of the same kinds, 1
/// told from 1.0, and dates equal but for their fractions of seconds. Both may be null.
bool isKeptAs(const PropertyListValue& given, const PropertyListValue& kept);

}  // namespace Tool
