// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Commands.h"
#include "Failure.h"

namespace Tool {

/// Does what the arguments (without the program's name) ask for, help included. Throws Failure.
ExitCode runCommandLine(const std::vector<std::string>& arguments);

/// Adds everything that the parser can know: all commands with all their options.
void describeProgram(CLI::App& program, Action& action);

}  // namespace Tool
