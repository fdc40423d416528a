// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// The text with A to Z as a to z, and all else as it is.
std::string lowercase(std::string text);

}  // namespace Tool
