// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Values/PropertyListValue.h"

namespace CLI {
class App;
}

namespace Tool {

void addDryRun(CLI::App& command, bool& dryRun);

/// The leaves of a tree by key path, as they are at this moment: the store's trees change in place.
NSDictionary leavesByKeyPath(const NSDictionary& tree);

/// Prints a line for each difference, or says on standard error that there is none.
void printWhatWouldChange(const NSDictionary& oldByKeyPath, const NSDictionary& newByKeyPath);

}  // namespace Tool
