// SPDX-License-Identifier: MIT
#pragma once

// How two trees of settings differ.

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

struct Difference {
    std::string keyPath;
    PropertyListValue oldValue;  ///< null where there was none
    PropertyListValue newValue;  ///< null where there is none
};

/// The key paths whose values differ, in kind too.
std::vector<Difference> differencesBetween(const NSDictionary& oldByKeyPath,
                                           const NSDictionary& newByKeyPath);

/// A line for each: key path, tab, `old -> new`, as JSON.
std::string differenceLines(const std::vector<Difference>& differences);
/// An object for each on a line of its own: keyPath, before, after.
std::string differenceObjects(const std::vector<Difference>& differences);

}  // namespace Tool
