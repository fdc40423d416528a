// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Tool {

struct Fact {
    std::string name;
    std::string value;
};

/// A line for each, `name: value`, the values one below the other.
std::string factLines(const std::vector<Fact>& facts);
/// The same with values on lines of at most `width` bytes.
std::string factLines(const std::vector<Fact>& facts, std::size_t width);

}  // namespace Tool
