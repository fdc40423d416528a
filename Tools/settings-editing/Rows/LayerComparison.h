// SPDX-License-Identifier: MIT
#pragma once

// What the layers of settings have at each place, and where that has changed.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

enum class Layer : std::uint8_t { Stored, Prepared, Defaults, Site, BuiltIn };

/// What each layer has at one place; null where it has nothing.
struct LayerValues {
    static constexpr std::size_t count = 5;
    std::array<PropertyListValue, count> values;

    [[nodiscard]] PropertyListValue& operator[](Layer layer) {
        return values[static_cast<std::size_t>(layer)];
    }
    [[nodiscard]] const PropertyListValue& operator[](Layer layer) const {
        return values[static_cast<std::size_t>(layer)];
    }
    /// What they have at a key path below this place.
    [[nodiscard]] LayerValues at(std::string_view keyPath) const;
};

/// A dictionary with entries: what it holds are settings, and it is none itself.
bool isLevel(const PropertyListValue& value);

/// Finds the places where a layer has another value than before. What both share is skipped.
class LayerComparison {
  public:
    /// Receives the place with what the layers have there now.
    using Visitor = std::function<void(const std::string& keyPath, const LayerValues& now)>;

    explicit LayerComparison(Visitor visitor) : visitor_(std::move(visitor)) {}

    /// Calls the visitor for each place where a layer has gained, lost or changed a leaf; in no
    /// order, and for each place once.
    void compare(const LayerValues& before, const LayerValues& now);
    /// How many leaves more, or fewer, the stored layer has that no key path reaches: below keys
    /// that hold a ".".
    [[nodiscard]] std::ptrdiff_t unreachedLeaves() const { return unreached_; }

  private:
    class Level;
    void compareBelow(const LayerValues& before, const LayerValues& now, std::string& start);
    void compareKey(const Level& level, std::string_view key, std::string& start);

    Visitor visitor_;
    std::ptrdiff_t unreached_ = 0;
};

}  // namespace Tool
