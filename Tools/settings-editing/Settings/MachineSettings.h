// SPDX-License-Identifier: MIT
#pragma once

/// What in a tree of settings belongs to one machine: the store's records of it and of its
/// appearance, and what the store removes on another machine or model. The records of migrations
/// are not among it: settings without them would be migrated a second time, over their profiles.

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The tree without it, and without the dictionaries that are empty then.
NSDictionary withoutMachineSettings(const NSDictionary& tree);

/// The tree with what belongs to one machine as `machine` has it, or not at all where `machine`
/// has none. Left out is what a value of the tree is in the way of.
NSDictionary withMachineSettingsOf(const NSDictionary& machine, const NSDictionary& tree);

}  // namespace Tool
