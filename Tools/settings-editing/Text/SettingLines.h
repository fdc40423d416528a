// SPDX-License-Identifier: MIT
#pragma once

// Settings as lines of text for people and scripts, sorted by the bytes of their key paths.

#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Key path, tab, value as JSON, newline; `null` where there is no value.
std::string settingLine(std::string_view keyPath, const PropertyListValue& value);

/// A line for each entry.
std::string settingLines(const NSDictionary& valuesByKeyPath);

/// The keys of a dictionary by key path: as strings, and as a line for each.
NSArray keyPathsOf(const NSDictionary& valuesByKeyPath);
std::string keyPathLines(const NSDictionary& valuesByKeyPath);

}  // namespace Tool
