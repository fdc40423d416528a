// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Settings/KnownLists.h"

namespace Tool {

struct ListEntry {
    KnownSetting setting;
    std::vector<std::string> faults;  ///< what is wrong with it, and left out
};

/// What a list says of one setting. `known` is what the library says; null when it knows nothing.
ListEntry listEntry(const std::string& keyPath, const NSDictionary& description,
                    const QRVKnownSetting* known);

}  // namespace Tool
