// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

/// From now on SIGTERM and SIGINT end the functions below instead of the process, so that it can
/// wait for its saves. To be called before there are threads.
void endWithoutLosingSaves();

/// Waits for the next line of standard input, and drains the main queue meanwhile. Returns no line
/// at the end of the input, and when the process is asked to end.
std::optional<std::string> nextLineOfInput();

/// Drains the main queue until the process is asked to end.
void runUntilAskedToEnd();

/// For a loop of another library: a descriptor that is readable once the process is asked to end.
int endOfProcess();

/// Starts this program in a child process, with other arguments. The child ends when its parent
/// does.
int startProcess(const std::vector<std::string>& arguments);

/// Waits for a started process to end and returns its exit status; 1 when a signal has ended it.
int waitForProcess(int process);
