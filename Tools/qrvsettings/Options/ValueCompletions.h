// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Options/Completions.h"
#include "Settings/ProfileScope.h"

namespace Tool {

/// What is known of a setting, where anything is: its key path and what it is.
Candidates knownKeyPaths();

/// The values that can be named for a setting: its choices, true and false, its default and its
/// present value, as `set` reads them.
Candidates valuesOf(const std::string& keyPath, const ProfileScope& scope);

/// The default and the present value of a colour, as `color set` reads them.
Candidates colorsOf(const std::string& keyPath, const ProfileScope& scope);

}  // namespace Tool
