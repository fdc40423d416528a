// SPDX-License-Identifier: MIT
#pragma once

// A second implementation of what writes make of settings: a map of leaves, without levels.

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

/// Leaves by key path. No key of a tree that becomes one may hold a ".".
using FlatSettings = std::map<std::string, PropertyListValue>;

inline void enterLeaves(const PropertyListValue& value, const std::string& keyPath,
                        FlatSettings& leaves) {
    if (!value.isDictionary()) {
        leaves[keyPath] = value;
        return;
    }
    for (const auto& [key, element] : value.dictionary())
        enterLeaves(element, keyPath + "." + std::string(key), leaves);
}

/// Null has none.
inline FlatSettings leavesOf(const NSDictionary& tree) {
    FlatSettings leaves;
    for (const auto& [key, value] : tree) enterLeaves(value, std::string(key), leaves);
    return leaves;
}

inline bool isBelow(std::string_view keyPath, std::string_view above) {
    return keyPath.size() > above.size() && keyPath.substr(0, above.size()) == above &&
           keyPath[above.size()] == '.';
}

/// Whether a leaf stands where the key path needs a dictionary.
inline bool leadsThroughALeaf(const FlatSettings& settings, std::string_view keyPath) {
    for (const auto& [leaf, value] : settings)
        if (isBelow(keyPath, leaf)) return true;
    return false;
}

/// A write of a value makes way for itself; a removal below a leaf changes nothing.
inline void applyWrite(FlatSettings& settings, const std::string& keyPath,
                       const PropertyListValue& value) {
    if (value.isNull() && leadsThroughALeaf(settings, keyPath)) return;
    std::erase_if(settings, [&keyPath](const auto& leaf) {
        return leaf.first == keyPath || isBelow(leaf.first, keyPath) ||
               isBelow(keyPath, leaf.first);
    });
    if (!value.isNull()) enterLeaves(value, keyPath, settings);
}

/// The key paths of leaves that differ.
inline std::set<std::string> differences(const FlatSettings& before, const FlatSettings& after) {
    std::set<std::string> changed;
    for (const auto& [keyPath, value] : before) {
        const auto found = after.find(keyPath);
        if (found == after.end() || found->second != value) changed.insert(keyPath);
    }
    for (const auto& [keyPath, value] : after)
        if (!before.contains(keyPath)) changed.insert(keyPath);
    return changed;
}
