// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Whether the key path is `prefix` or leads through it.
bool isAtOrBelow(std::string_view keyPath, std::string_view prefix);

/// The value at a key path; null also where another value is in the way.
PropertyListValue valueAt(const PropertyListValue& tree, std::string_view keyPath);

/// The first key path on the way to this one where the tree holds a value that is no dictionary.
std::optional<std::string> leafAbove(const NSDictionary& tree, std::string_view keyPath);

/// The leaves of a tree by key path, as they are at this moment: the store's trees change in place.
NSDictionary leavesByKeyPath(const NSDictionary& tree);

/// A copy that no change of the tree reaches.
NSDictionary snapshotOf(const NSDictionary& tree);

/// The key path on one line: one that is empty, holds control characters or begins with a quotation
/// mark is a JSON string.
std::string keyPathText(std::string_view keyPath);

}  // namespace Tool
