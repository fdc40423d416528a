// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// All settings, from the bytes of a property list in any format or of JSON. Throws Failure
/// (WrongValue) when they are empty, neither of these, or nothing that a settings file can hold.
NSDictionary settingsFromText(const std::string& bytes);

}  // namespace Tool
