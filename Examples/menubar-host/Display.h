// SPDX-License-Identifier: MIT
#pragma once

#include "MenuBarLine.h"

/// Shows the menu bar as the current settings say, until the process is asked to end. On a terminal
/// it redraws one line; elsewhere it prints a line for each state. Returns an exit status.
int runDisplay(Colours colours);
