// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// Records the machine and brings the settings file to the present shape. Returns an exit status.
int runPreparation();

/// Starts the processes of the application: a display, and a settings process that reads standard
/// input. Returns the display's exit status when that has ended; the settings process then ends
/// too.
int runLauncher(const std::string& colorOption);
