// SPDX-License-Identifier: MIT
#pragma once

#include "MenuBarLine.h"

/// Shows the menu bar, as the settings are at each moment, until the process is ended: in one line
/// of a terminal, else a line for each state. Does not return.
[[noreturn]] void runDisplay(Colours colours);
