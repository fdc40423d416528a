// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

/// Waits for the next line of standard input, and drains the main queue meanwhile. Returns no line
/// at the end of the input.
std::optional<std::string> nextLineOfInput();

/// Starts this program in a child process, with other arguments. The child ends when its parent
/// does.
int startProcess(const std::vector<std::string>& arguments);

/// Waits for a started process to end and returns its exit status; 1 when a signal has ended it.
int waitForProcess(int process);
