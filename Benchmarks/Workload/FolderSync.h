// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace Workload {

/// Returns when the names in a folder are on the disk: what makes a rename last. Ends the program
/// where that fails.
void syncFolder(const std::filesystem::path& folder);

}  // namespace Workload
