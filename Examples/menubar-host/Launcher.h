// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// Starts the processes of the application: a display, and a settings process that reads standard
/// input. Waits for the display to end and returns its exit status. The settings process then ends
/// too.
int runLauncher(const std::string& colorOption);
