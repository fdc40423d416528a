// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

struct RefusedText {
    std::string keyPath;  ///< of the leaf that is or holds the text, or of the level with that key
    std::string refusal;  ///< the first: `a string holds U+001B, which strict XML readers refuse`
};

/// What `refusalsOfStrictReaders` finds, by the key paths that `unset` takes: at most one each.
std::vector<RefusedText> textsRefusedByStrictXML(const NSDictionary& tree);

/// The same as a line each, the last of them for all that are too many.
std::vector<std::string> remarksOfStrictXML(const NSDictionary& tree);

}  // namespace Tool
