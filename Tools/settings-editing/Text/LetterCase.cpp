// SPDX-License-Identifier: MIT
#include "Text/LetterCase.h"

#include <algorithm>

namespace Tool {

// Not the locale's: the same text is found everywhere.
std::string lowercase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return 'A' <= character && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    });
    return text;
}

}  // namespace Tool
