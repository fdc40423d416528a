// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace Tool {

struct Fact {
    std::string name;
    std::string value;
};

/// A line for each, `name: value`, the values one below the other.
std::string factLines(const std::vector<Fact>& facts);

}  // namespace Tool
