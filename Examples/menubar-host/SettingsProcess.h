// SPDX-License-Identifier: MIT
#pragma once

/// The help text for the lines that `runSettingsProcess` reads.
extern const char* const settingsCommands;

/// Reads lines from standard input until its end, changes the settings that they name, and waits
/// for the saves. Returns the exit status: 1 when a line was not understood.
int runSettingsProcess();
