// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// Replaces A to Z by a to z, and nothing else.
std::string lowercase(std::string text);

}  // namespace Tool
