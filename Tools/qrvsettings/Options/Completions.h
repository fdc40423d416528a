// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Options/Command.h"

namespace Tool {

/// What can stand in place of the last word, which is as much as is typed of it; the others stand
/// before it, without the name of the program. Empty where a file name is expected. Reads the
/// settings as `list` does; where they cannot be read, the defaults alone.
std::optional<std::set<std::string>> completionsOf(const Command& program,
                                                   std::vector<std::string> words);

/// @name Scripts that make a shell ask the program
/// @{
std::string_view bashScript();
std::string_view zshScript();
std::string_view fishScript();
/// @}

}  // namespace Tool
