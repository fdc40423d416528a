// SPDX-License-Identifier: MIT
#include "Text/WrappedText.h"

#include <algorithm>

namespace Tool {

std::string wrapped(std::string_view text, std::size_t indent, std::size_t width) {
    std::string lines;
    std::size_t length = 0;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const bool isFirst = lines.empty();
        if (isFirst || length + 1 + word.size() > width) {
            lines.append(isFirst ? 0 : 1, '\n').append(indent, ' ');
            length = indent;
        } else {
            lines += ' ';
            ++length;
        }
        lines += word;
        length += word.size();
    }
    return lines.empty() ? lines : lines + "\n";
}

}  // namespace Tool
