// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace Tool {

/// Writes one line to standard error, after the name of the program. Control characters, which may
/// come from arguments and files, are made printable.
void say(std::string_view text);

/// The same for what does not make the command fail. Writes nothing after `keepQuiet`.
void remark(std::string_view text);
void keepQuiet();
[[nodiscard]] bool isQuiet();

}  // namespace Tool
