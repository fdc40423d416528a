// SPDX-License-Identifier: MIT
#include "Commands/FactLines.h"

#include <algorithm>

namespace Tool {

std::string factLines(const std::vector<Fact>& facts) {
    std::size_t width = 0;
    for (const Fact& fact : facts) width = std::max(width, fact.name.size());
    std::string text;
    for (const auto& [name, value] : facts)
        text.append(name).append(":").append(width - name.size() + 1, ' ').append(value) += '\n';
    return text;
}

}  // namespace Tool
