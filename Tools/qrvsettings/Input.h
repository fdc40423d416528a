// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// Throws Failure (WrongValue) unless the text is UTF-8, as keys and strings of a settings file
/// are.
void requireUTF8(const std::string& text);

/// All of standard input. Throws Failure (WrongValue) when it cannot be read or is larger than a
/// settings file can be.
std::string standardInput();

/// The same of a file, where `-` is standard input.
std::string contentsOfInput(const std::string& file);

/// What messages call such a file.
std::string nameOfInput(const std::string& file);

}  // namespace Tool
