// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Tool {

/// "; did you mean NAME?" for the name that the word begins, or that it becomes by few typos; empty
/// where no name is that near.
std::string nearestOf(std::string_view word, const std::vector<std::string>& names);

}  // namespace Tool
