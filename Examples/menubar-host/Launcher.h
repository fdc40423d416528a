// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// Starts the processes of the application: a display, a settings process that reads standard
/// input, and one that follows the desktop if this build has it. Waits for the display to end and
/// returns its exit status. The others then end too.
int runLauncher(const std::string& colorOption);
