// SPDX-License-Identifier: MIT
#pragma once

// Settings as a file that an argument names.

#include <string>

#include "Platform/Values/PropertyListValue.h"
#include "Text/SettingsText.h"

namespace Tool {

/// Replaces the file atomically, and keeps its mode; `-` prints to standard output. Throws Failure:
/// WrongValue when no property list can hold the settings, and NotWritten.
void writeSettings(const NSDictionary& settings, SettingsForm form, const std::string& file);

}  // namespace Tool
