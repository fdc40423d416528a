// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// What a process waits for that reads or saves the settings, and which processes hold it: "the
/// lock of PATH, held by process 4711 (monitor)". Any thread.
std::string lockOfSettingsFile();

}  // namespace Tool
