// SPDX-License-Identifier: MIT
#pragma once

// Files that an argument names; `-` is standard input.

#include <string>

namespace Tool {

/// All of standard input. Throws Failure (WrongValue) when it cannot be read or is larger than a
/// settings file can be.
std::string standardInput();

/// All of such a file, which may be a pipe. Throws as `standardInput` does.
std::string contentsOfInput(const std::string& file);

/// The name of such a file in messages.
std::string nameOfInput(const std::string& file);

}  // namespace Tool
