// SPDX-License-Identifier: MIT
#pragma once

// Settings and edits as commands for a POSIX shell that make another settings file hold the same.

#include <string>
#include <vector>

#include "Edits/PendingEdits.h"
#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// A line for each edit, removals first, then in the order of the places: of exactly these edits,
/// records of the store too where somebody has edited one. There is none for a key path that holds
/// U+0000, which no argument can hold. Reads the known lists.
std::string commandsOfEdits(const std::vector<PendingEdit>& edits);

/// The command that makes another file hold what this one has, or shows, at the place: that of the
/// stored value, or of `effective` where nothing is stored; the one that stores nothing, where both
/// are null.
std::string commandOfSetting(const SettingPlace& place, const NSDictionary& stored,
                             const PropertyListValue& effective);

}  // namespace Tool
