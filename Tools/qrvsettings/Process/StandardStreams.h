// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace Tool {

/// Whether a person reads what is written there.
bool standardOutputIsTerminal();
bool standardErrorIsTerminal();

/// The columns of the terminal that standard output is; 80 where it is none.
std::size_t widthOfStandardOutput();

}  // namespace Tool
