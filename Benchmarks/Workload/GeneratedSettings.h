// SPDX-License-Identifier: MIT
#pragma once

/// The settings that all participants use.

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace Workload {

/// An element of an array: a small dictionary.
struct Item {
    std::int64_t source = 0;
    std::string label;
};

using Value = std::variant<bool, std::int64_t, std::string, std::vector<Item>>;

struct Setting {
    std::string keyPath;
    Value value;
};

/// Four in ten are booleans, three integers, two short strings, and one is an array of items. Key
/// paths have 3 to 6 components, each is there once, and none leads through another. The same
/// `count` always gives the same settings.
std::vector<Setting> generatedSettings(std::size_t count);

}  // namespace Workload
