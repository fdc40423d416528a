// SPDX-License-Identifier: MIT
#pragma once

#include "MenuBarLine.h"

/// Shows the menu bar as the current settings say, until the process is ended. On a terminal it
/// redraws one line; elsewhere it prints a line for each state. Does not return.
[[noreturn]] void runDisplay(Colours colours);
