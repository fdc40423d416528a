// SPDX-License-Identifier: MIT
#pragma once

/// Two trees of settings, and the tree that both were changed from, as one tree.

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Both sides have changed the value in different ways, or one has changed and the other removed
/// it.
struct MergeConflict {
    std::string keyPath;
    PropertyListValue base;  ///< null where it is not set, as in `ours` and `theirs`
    PropertyListValue ours;
    PropertyListValue theirs;
};

enum class MergeSide { Ours, Theirs };

struct MergedSettings {
    NSDictionary tree;
    std::vector<MergeConflict> conflicts;  ///< sorted by the bytes of their key paths
};

/// For each key path: what one side alone has changed, added or removed; what both have changed to
/// the same value; and the value of `atConflicts` where there is a conflict.
///
/// An array is one value. A dictionary that one side has replaced by another value is one too, so
/// that there is a conflict when the other side has changed anything in it. An empty dictionary is
/// no value beside one with entries. A dictionary that loses its last entry is left out, unless a
/// side holds it as an empty one. Values of different kinds differ, such as 1 and 1.0.
MergedSettings mergedSettings(const NSDictionary& base, const NSDictionary& ours,
                              const NSDictionary& theirs, MergeSide atConflicts);

/// One line for people: `KEYPATH: base 40, ours 60, theirs not set`. Long values are shortened.
std::string conflictText(const MergeConflict& conflict);
/// An object for each on a line of its own: keyPath, base, ours and theirs; null for not set.
std::string conflictObjects(const std::vector<MergeConflict>& conflicts);

}  // namespace Tool
