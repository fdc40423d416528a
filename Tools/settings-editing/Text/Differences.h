// SPDX-License-Identifier: MIT
#pragma once

// How two trees of settings differ.

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Whether two values are equal, in kind too: the integer 1 and the real 1 are not. Null equals
/// null alone.
bool areSameInKind(const PropertyListValue& value, const PropertyListValue& other);

struct Difference {
    std::string keyPath;
    PropertyListValue oldValue;  ///< null where there was none
    PropertyListValue newValue;  ///< null where there is none
    bool isReached = true;       ///< false where a key holds a ".": no key path leads to that value
};

/// The leaves of two trees that differ, in kind too, sorted by the bytes of their key paths. An
/// empty dictionary is a leaf; where it replaces one with entries, that is the old value.
std::vector<Difference> differencesBetween(const NSDictionary& oldTree,
                                           const NSDictionary& newTree);

/// The leaves of a tree that differ from the defaults, which are the old values: neither those that
/// are not set nor empty dictionaries.
std::vector<Difference> differencesFromDefaults(const NSDictionary& stored,
                                                const NSDictionary& defaults);

/// A line for each: key path, tab, `old -> new`, as JSON.
std::string differenceLines(const std::vector<Difference>& differences);
/// An object for each on a line of its own: keyPath, before, after.
std::string differenceObjects(const std::vector<Difference>& differences);

}  // namespace Tool
