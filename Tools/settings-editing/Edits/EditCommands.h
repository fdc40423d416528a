// SPDX-License-Identifier: MIT
#pragma once

// Settings and edits as commands for a POSIX shell that make another settings file hold the same.

#include <string>
#include <vector>

#include "Edits/PendingEdits.h"
#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// A line for each edit, in the order of the places. Reads the known lists.
std::string commandsOfEdits(const std::vector<PendingEdit>& edits);

/// The command that makes another file hold what this one has, or shows, at the place: that of the
/// stored value, or of `effective` where nothing is stored.
std::string commandOfSetting(const SettingPlace& place, const NSDictionary& stored,
                             const PropertyListValue& effective);

}  // namespace Tool
