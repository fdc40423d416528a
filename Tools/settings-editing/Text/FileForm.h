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
/// The same of a value at its key path, which may have too many levels.
void requireStorable(const PropertyListValue& value, const std::string& keyPath);

/// Whether the value is or holds a date with a fraction of a second.
bool hasFractionsOfSeconds(const PropertyListValue& value);

/// The value as a file gives it back; itself when no file can hold it.
PropertyListValue asInFile(const PropertyListValue& value);

}  // namespace Tool
