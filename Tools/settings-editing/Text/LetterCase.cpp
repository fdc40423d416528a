// SPDX-License-Identifier: MIT
#include "Text/LetterCase.h"

#include <algorithm>

namespace Tool {

// Independent of the locale, so that a search finds the same everywhere.
std::string lowercase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return 'A' <= character && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    });
    return text;
}

}  // namespace Tool
