// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

/// The next line of standard input, the main queue being drained meanwhile; none at the end.
std::optional<std::string> nextLineOfInput();

/// This program in another process, with other arguments. It ends when the process that started it
/// does.
int startProcess(const std::vector<std::string>& arguments);

/// Returns the exit status of a started process when it has ended, 1 when it ended otherwise.
int waitForProcess(int process);
