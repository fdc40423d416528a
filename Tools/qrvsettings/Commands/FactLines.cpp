// SPDX-License-Identifier: MIT
#include "Commands/FactLines.h"

#include <algorithm>
#include <limits>

#include "Text/WrappedText.h"

namespace Tool {

std::string factLines(const std::vector<Fact>& facts) {
    return factLines(facts, std::numeric_limits<std::size_t>::max());
}

std::string factLines(const std::vector<Fact>& facts, std::size_t width) {
    std::size_t longest = 0;
    for (const Fact& fact : facts) longest = std::max(longest, fact.name.size());
    const std::size_t indent = longest + 2;
    std::string text;
    for (const auto& [name, value] : facts) {
        const bool isLong = indent + value.size() > width;
        const std::string lines =
            isLong ? wrapped(value, indent, width).substr(indent) : value + "\n";
        text.append(name).append(":").append(indent - name.size() - 1, ' ').append(lines);
    }
    return text;
}

}  // namespace Tool
