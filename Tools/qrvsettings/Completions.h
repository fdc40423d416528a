// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace Tool {

/// What may stand in the place of the last word, which is what is typed of it so far; the others
/// stand before it, without the name of the program. Empty where the name of a file belongs. Reads
/// the settings as `list` does; where they cannot be read, the defaults are all there is.
std::optional<std::set<std::string>> completionsOf(std::vector<std::string> words);

/// The script that makes a shell ask the program: "bash", "zsh" or "fish".
std::string_view completionScript(std::string_view shell);

}  // namespace Tool
