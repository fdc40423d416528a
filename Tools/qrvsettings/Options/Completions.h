// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Options/Command.h"

namespace Tool {

/// Words, each with a sentence of one line that says what it is; empty where there is none.
using Candidates = std::map<std::string, std::string>;

/// What can stand in place of the last word, which is as much as is typed of it; the others stand
/// before it, without the name of the program. Empty where a file name is expected. Reads the
/// settings as `list` does; where they cannot be read, the defaults alone.
std::optional<Candidates> completionsOf(const Command& program, std::vector<std::string> words);

/// @name Scripts that make a shell ask the program
/// @{
std::string_view bashScript();
std::string_view zshScript();
std::string_view fishScript();
/// @}

}  // namespace Tool
