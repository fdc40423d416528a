// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace Tool {

/// Writes to standard output and sees it through. Throws Failure (NotWritten) when that fails.
void print(std::string_view text);

}  // namespace Tool
