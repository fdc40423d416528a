// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The start-up sequence that every process of the application goes through before its first read.
/// What it changes in the settings, such as the record of the machine and the shape of an earlier
/// version, stays in the memory of this process: the store is in a batch from here on. Throws
/// Failure (WrongValue) when a stored value is in the way.
void startUp();

/// The same as where nothing is stored, so that nothing can be in the way: for the defaults alone,
/// and before all that is stored is replaced.
void startUpOnNothing();

/// The same as `startUp`; returns lines for the user about what nobody asked for and a save will
/// make last: settings that are reset, or brought into another shape.
std::vector<std::string> startUpNotingChanges();

/// Whether these are settings that have not yet been brought into the present shape. Where nothing
/// is set there is nothing to bring there.
bool isOfEarlierVersion(const NSDictionary& settings);
constexpr const char* migrationNote =
    "the settings are of an earlier version: they are brought to the present shape";

}  // namespace Tool
