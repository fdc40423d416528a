// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Prints the value on a line as `bareText` writes it. On a terminal text with control characters,
/// line ends included, is a JSON string.
void printValue(const PropertyListValue& value);

}  // namespace Tool
