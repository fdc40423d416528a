// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Tool {

/// Removes from the stored tree the levels above a key path that hold nothing, up to the first that
/// holds something. A read of an empty level answers with it, and not with the default.
void removeEmptyLevelsAbove(const std::string& storedKeyPath);

}  // namespace Tool
