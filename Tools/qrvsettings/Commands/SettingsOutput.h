// SPDX-License-Identifier: MIT
#pragma once

// Settings as a file that an argument names.

#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

enum class SettingsForm { PropertyList, JSON };

/// Replaces the file atomically, and keeps its mode; `-` prints to standard output. Throws Failure:
/// WrongValue when no property list can hold the settings, and NotWritten.
void writeSettings(const NSDictionary& settings, SettingsForm form, const std::string& file);

}  // namespace Tool
