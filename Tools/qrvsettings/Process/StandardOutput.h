// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace Tool {

/// Writes to standard output and sees it through. Throws Failure (NotWritten) when that fails. A
/// terminal gets control characters in a printable form, but for line ends and tabs: who prints
/// text of others takes care of these.
void print(std::string_view text);

/// The same without the printable form: for text with escape sequences of this program.
void printWithEscapeSequences(std::string_view text);

}  // namespace Tool
