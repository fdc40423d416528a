// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Process/ExitCode.h"

namespace Tool {

/// Does what the arguments (without the program's name) ask for, help included. Throws Failure.
ExitCode runCommandLine(const std::vector<std::string>& arguments);

}  // namespace Tool
