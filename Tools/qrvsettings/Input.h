// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// Throws Failure (WrongValue) unless the text is UTF-8, as keys and strings of a settings file
/// are.
void requireUTF8(const std::string& text);

/// All of standard input without the newline at its end, if there is one. Throws Failure
/// (WrongValue) when it cannot be read or is larger than a settings file can be.
std::string standardInput();

}  // namespace Tool
