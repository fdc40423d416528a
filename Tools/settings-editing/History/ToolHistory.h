// SPDX-License-Identifier: MIT
#pragma once

/// The history of the settings, as this program uses it. A build without the history has it too:
/// then there is none. Nothing else of the program depends on whether there is one. What reads it
/// may be called on any thread; it waits up to 2 seconds for a process that writes the history.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QRVHistory/QRVHistory.h"

namespace Tool {

/// Why there is no history; empty when there is one.
std::string whyNoHistory();

/// The saves of this process are entered from now on. Call it on the main thread, before the store
/// is prepared.
void takePartInHistory();
/// Returns when the saves of this process, and what others have changed, are entered; after some
/// seconds at the latest. On the main thread.
void waitForHistory();

/// The latest first. Throws Failure: NotSet when there is no history, and UnreadableFile when it
/// cannot be read.
std::vector<QRVHistorySave> savesInHistory(const QRVHistoryQuery& query);

/// The last save that changed the setting at this stored key path, or what is below it, with these
/// changes alone. Empty also where there is no history; for good once it could not be read: a
/// program that goes on asks `savesInHistory` with a prefix and a limit.
std::optional<QRVHistorySave> lastChangeInHistory(const std::string& keyPath);

QRVHistoryInverse inverseOfSaves(const std::vector<QRVHistorySave>& saves,
                                 const NSDictionary& stored, QRVHistoryConflicts conflicts);

/// Throws as `savesInHistory` does, and Failure (NotWritten).
void clearHistory();

}  // namespace Tool
