// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The first key of this level that holds a "."; no key path reaches it.
std::optional<std::string> keyWithDot(const NSDictionary& level);

/// The tree in which each key of this dictionary is a key path, and dictionaries that meet are
/// merged. Throws Failure (WrongValue), with the key paths, when two values are for one key path or
/// one leads through the value of another.
NSDictionary treeOfKeyPaths(const NSDictionary& valuesByKeyPath);

}  // namespace Tool
