// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// Why no save of the file at `target`, which is no link, can succeed: what lies in the place of
/// its lock file or of the new contents. Names that path; empty when nothing is in the way.
std::string obstacleToSaves(const std::string& target);

}  // namespace Tool
