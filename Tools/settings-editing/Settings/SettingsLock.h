// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// What this process waits for when it reads or saves the settings: "the lock of PATH, held by
/// process 4711 (monitor)", or the disk when it has the lock itself. Any thread.
std::string lockOfSettingsFile();

}  // namespace Tool
