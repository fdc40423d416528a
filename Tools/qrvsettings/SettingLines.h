// SPDX-License-Identifier: MIT
#pragma once

// Settings as lines of text for people and scripts, sorted by the bytes of their key paths.

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Key path, tab, value as JSON, newline; `null` where there is no value.
std::string settingLine(std::string_view keyPath, const PropertyListValue& value);

/// A line for each entry.
std::string settingLines(const NSDictionary& valuesByKeyPath);

/// The keys of a dictionary by key path: as strings, and as a line for each.
NSArray keyPathsOf(const NSDictionary& valuesByKeyPath);
std::string keyPathLines(const NSDictionary& valuesByKeyPath);

struct SettingChange {
    std::string keyPath;
    PropertyListValue oldValue;  ///< null where there was none
    PropertyListValue newValue;  ///< null where there is none
};

/// The key paths whose values differ, in kind too.
std::vector<SettingChange> changesBetween(const NSDictionary& oldByKeyPath,
                                          const NSDictionary& newByKeyPath);

/// A line for each: key path, tab, `old -> new`, as JSON.
std::string changeLines(const std::vector<SettingChange>& changes);
/// An object for each on a line of its own: keyPath, before, after.
std::string changeObjects(const std::vector<SettingChange>& changes);

}  // namespace Tool
