// SPDX-License-Identifier: MIT
#pragma once

// Saves of the history as text.

#include <string>
#include <vector>

#include "QRVHistory/QRVHistory.h"

namespace Tool {

/// `monitor[4711]`, or `another program`.
std::string programText(const QRVHistorySave& save);

/// `2026-11-22 09:30:05 by monitor[4711]`, or `by another program`.
std::string timeAndProgramText(const QRVHistorySave& save);

/// The same with what was changed and the id: `..., true -> false (save 12)`, or `..., 3 settings
/// (save 12)`.
std::string lastChangeText(const QRVHistorySave& save);

/// A line with the id, the time, the program and what it was, and an indented one for each change.
std::string historyLines(const QRVHistorySave& save);

/// id, time (UTC), program, process and origin, null for what is unknown, and changes: objects of
/// keyPath, before and after.
NSDictionary historyObject(const QRVHistorySave& save);

}  // namespace Tool
