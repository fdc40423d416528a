// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The settings in a file that an argument names, a property list in any format or JSON; `-` is
/// standard input. Throws Failure (WrongValue), which says that the file cannot be `participle`,
/// why and where: it cannot be read, is empty, or is no settings file.
NSDictionary settingsOfInput(const std::string& file, const std::string& participle);

}  // namespace Tool
