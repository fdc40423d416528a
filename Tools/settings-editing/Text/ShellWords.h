// SPDX-License-Identifier: MIT
#pragma once

// The words of a command as `shellWord` writes them, read without a shell.

#include <string>
#include <string_view>
#include <vector>

namespace Tool {

struct ShellWord {
    std::string text;
    const char* start;  ///< its first character in the line
};

/// The words that a POSIX shell makes of this line. Quotation marks and backslashes are read, and
/// what `shellWord` writes for control characters. Throws Failure (WrongValue) for anything else
/// that means something to a shell, such as `$HOME`, `*` or `;`: the same text never means one
/// thing here and another there.
std::vector<ShellWord> shellWordsOf(std::string_view line);

/// Whether the program takes a word for an option, before a word `--`: it begins with a dash and is
/// no number.
bool looksLikeOption(std::string_view word);

}  // namespace Tool
