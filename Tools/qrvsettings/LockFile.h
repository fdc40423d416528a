// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// Where the links at the path lead, also to something that is not there. Empty when they lead
/// nowhere but to themselves.
std::string followed(const std::string& path);

/// `.<file name><suffix>` beside the file.
std::string hiddenBeside(const std::string& path, const std::string& suffix);

/// What somebody waits for who wants to read or save the settings, and whom.
std::string lockOfSettingsFile();

}  // namespace Tool
