// SPDX-License-Identifier: MIT
#pragma once

// Undo through the history: what takes back saves of any program.

#include <vector>

#include "Edits/PendingEdits.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVHistory/QRVHistory.h"
#include "Rows/SettingsSnapshot.h"

namespace Tool {

/// The saves with what people have changed in them; saves without any are left out. What is left
/// out besides records of the store is what a migration has copied into the profile "default", as
/// long as the settings that it was copied from are still the same: without its records the next
/// start would migrate again, over what is in that profile by then. `stored` is what the file holds
/// now.
std::vector<QRVHistorySave> undoableSaves(std::vector<QRVHistorySave> saves,
                                          const NSDictionary& stored);

/// The edits that take back these saves, of which only `undoableSaves` matter, as `inverseOfSaves`
/// says. Conflicts are overwritten or left out. Loads the library of the history; throws Failure
/// (NotWritten) when that fails.
std::vector<PendingEdits::Request> requestsToTakeBack(const std::vector<QRVHistorySave>& saves,
                                                      const SettingsSnapshot& snapshot,
                                                      QRVHistoryConflicts conflicts);

}  // namespace Tool
