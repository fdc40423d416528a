// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

struct RefusedText {
    std::string keyPath;  ///< of the leaf that is or holds the text, or of the level with that key
    std::string character;  ///< the first one that is refused: `U+001B`
};

/// The texts and keys of a tree with characters that XML 1.0 does not have: control characters but
/// tab and line ends, U+FFFE and U+FFFF. This library reads them from XML, others refuse the file.
std::vector<RefusedText> textsRefusedByStrictXML(const NSDictionary& tree);

}  // namespace Tool
