// SPDX-License-Identifier: MIT
#pragma once

/// What `runSettingsProcess` reads, for people.
extern const char* const settingsCommands;

/// Changes settings as the lines of standard input say, until their end, and waits until they are
/// saved. Returns the exit status: 1 when a line was not understood.
int runSettingsProcess();
