// SPDX-License-Identifier: MIT
#pragma once

// Values as text, and trees as leaves by key path.

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"
#include "SQLite.h"

namespace QRVHistoryInside {

/// A leaf before and after, as text; empty for none.
struct Change {
    Text before;
    Text after;
};
/// By key path.
using Changes = std::map<std::string, Change>;
using Leaves = std::map<std::string, std::string>;

/// The value as the element of an XML property list, which reads back to the same kind and value;
/// empty for null, and for what no property list can hold.
Text textOf(const PropertyListValue& value);
/// Null for empty, and for what is no such text.
PropertyListValue valueOf(const Text& text);

/// Both stand for equal values, or for none.
bool areEqual(const Text& left, const Text& right);

/// The leaf at the key path, a value other than a dictionary; null when there is none.
PropertyListValue leafAt(const NSDictionary& tree, std::string_view keyPath);

/// From one tree to another.
Changes changesBetween(const NSDictionary& before, const NSDictionary& after);
/// From leaves to a tree.
Changes changesSince(const Leaves& leaves, const NSDictionary& tree);
/// Makes the leaves what they were before the changes.
void takeBack(const Changes& changes, Leaves& leaves);
/// Each leaf of the tree.
Leaves leavesOf(const NSDictionary& tree);

}  // namespace QRVHistoryInside
