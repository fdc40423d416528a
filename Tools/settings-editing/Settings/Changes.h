// SPDX-License-Identifier: MIT
#pragma once

// What a command changed of the stored settings, or would change.

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Text/Differences.h"

namespace Tool {

struct Changes {
    std::vector<Difference> changed;  ///< leaves, in the order of their key paths
    std::size_t unchanged = 0;        ///< key paths that were to be written and are as they were

    [[nodiscard]] bool isEmpty() const { return changed.empty(); }
};

/// The trees that writes lead through.
struct WrittenTrees {
    NSDictionary inFile;    ///< what the file holds
    NSDictionary prepared;  ///< the same after the preparation of the store
    NSDictionary written;   ///< and after the writes
};

/// What writes at these key paths change. What the preparation alone changes is not among it, but a
/// write that puts back what the preparation had changed is.
Changes changesOfWrites(const WrittenTrees& trees, const std::set<std::string>& keyPaths);

/// What changes when one whole tree replaces another.
Changes changesOfReplacement(const NSDictionary& before, const NSDictionary& after);

}  // namespace Tool
