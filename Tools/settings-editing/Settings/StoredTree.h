// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Makes a copy of the tree the stored one of this process, or an empty tree where it is null: what
/// reads find from here on, and writes change. The settings file stays as it is.
void replaceStoredTree(const NSDictionary& tree);

}  // namespace Tool
