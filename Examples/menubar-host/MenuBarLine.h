// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <string>

#include "SystemLoad.h"

/// The loads of the last samples, the latest at the end; never empty.
using LoadHistory = std::deque<SystemLoad>;

enum class Colours { None, Terminal };

/// The menu bar as a line of text, as the settings of the active profile want it at this moment.
std::string menuBarLine(const LoadHistory& history, Colours colours);
