// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <string>

#include "SystemLoad.h"

/// The last samples, the latest at the end; never empty.
using LoadHistory = std::deque<SystemLoad>;

enum class Colours { None, Terminal };

/// The menu bar as a line of text, according to the current settings of the active profile.
std::string menuBarLine(const LoadHistory& history, Colours colours);
