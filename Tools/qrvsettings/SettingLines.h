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

/// A line for each key path whose values differ, in kind too: key path, tab, `old -> new`, as JSON.
std::string changeLines(const NSDictionary& oldByKeyPath, const NSDictionary& newByKeyPath);

}  // namespace Tool
