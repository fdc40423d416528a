// SPDX-License-Identifier: MIT
#include "Parser/Nearest.h"

#include <algorithm>
#include <cstddef>

namespace Tool {
namespace {

/// The number of characters to insert, remove, replace or swap with their neighbour.
std::size_t typosBetween(std::string_view one, std::string_view other) {
    std::vector<std::vector<std::size_t>> typos(one.size() + 1,
                                                std::vector<std::size_t>(other.size() + 1));
    for (std::size_t i = 0; i <= one.size(); ++i) {
        for (std::size_t j = 0; j <= other.size(); ++j) {
            if (i == 0 || j == 0) {
                typos[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = one[i - 1] == other[j - 1] ? 0 : 1;
            typos[i][j] = std::min(
                {typos[i - 1][j] + 1, typos[i][j - 1] + 1, typos[i - 1][j - 1] + replaced});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
                typos[i][j] = std::min(typos[i][j], typos[i - 2][j - 2] + 1);
        }
    }
    return typos.back().back();
}

}  // namespace

std::string nearestOf(std::string_view word, const std::vector<std::string>& names) {
    constexpr std::size_t longest = 40;  // Longer words are no typos, and take long to compare.
    if (word.size() < 2 || word.size() > longest) return {};
    const std::size_t most = std::max<std::size_t>(1, word.size() / 3);
    std::size_t fewest = most + 1;
    std::string nearest;
    for (const std::string& name : names) {
        const std::size_t typos = name.starts_with(word) ? 0 : typosBetween(word, name);
        if (typos >= fewest) continue;
        fewest = typos;
        nearest = name;
    }
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

}  // namespace Tool
