// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Options/Command.h"

namespace Tool {

/// "qrvsettings color set", of the program and the commands that lead to one.
std::string nameOf(const std::vector<const Command*>& path);

/// The name, and what stands behind it.
std::string usageOf(const std::vector<const Command*>& path, const OptionList& options);

/// What `--help` prints of the last one.
std::string helpOf(const std::vector<const Command*>& path, const OptionList& options);

}  // namespace Tool
