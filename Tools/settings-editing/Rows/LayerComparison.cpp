// SPDX-License-Identifier: MIT
#include "Rows/LayerComparison.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Text/Differences.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

std::ptrdiff_t leavesOf(const PropertyListValue& value) {
    if (value.isNull()) return 0;
    if (!isLevel(value)) return 1;
    std::ptrdiff_t leaves = 0;
    for (const auto& [key, below] : value.dictionary()) leaves += leavesOf(below);
    return leaves;
}

}  // namespace

bool isLevel(const PropertyListValue& value) {
    return value.isDictionary() && value.dictionary().count() != 0;
}

LayerValues LayerValues::at(std::string_view keyPath) const {
    LayerValues below;
    std::ranges::transform(values, below.values.begin(),
                           [&](const auto& value) { return valueAt(value, keyPath); });
    return below;
}

/// One level of all layers before and now. Several layers are often one dictionary, which is walked
/// over once.
class LayerComparison::Level {
  public:
    Level(const LayerValues& before, const LayerValues& now) {
        dictionaryOf_.fill(noDictionary);
        for (std::size_t layer = 0; layer < LayerValues::count; ++layer) {
            add(before.values[layer], layer);
            add(now.values[layer], layer + LayerValues::count);
        }
    }

    [[nodiscard]] const std::vector<NSDictionary>& dictionaries() const { return dictionaries_; }

    /// Looks up a key that the dictionary at `index` has. False when one before that has it, too.
    bool take(const NSDictionary::Entry& entry, std::size_t index) {
        for (std::size_t other = 0; other < dictionaries_.size(); ++other) {
            found_[other] =
                other == index ? entry.value : dictionaries_[other].objectForKey(entry.key);
            if (other < index && !found_[other].isNull()) return false;
        }
        return true;
    }

    /// @name What is at the key
    /// @{
    [[nodiscard]] const PropertyListValue& before(std::size_t layer) const {
        return foundIn(dictionaryOf_[layer]);
    }
    [[nodiscard]] const PropertyListValue& now(std::size_t layer) const {
        return foundIn(dictionaryOf_[layer + LayerValues::count]);
    }
    [[nodiscard]] LayerValues allBefore() const { return allFrom(0); }
    [[nodiscard]] LayerValues allNow() const { return allFrom(LayerValues::count); }
    /// @}

  private:
    static constexpr std::size_t ofBoth = 2 * LayerValues::count;
    static constexpr std::size_t noDictionary = ofBoth;

    void add(const PropertyListValue& value, std::size_t place) {
        if (!value.isDictionary()) return;
        const NSDictionary dictionary = value.dictionary();
        std::size_t index = 0;
        while (index < dictionaries_.size() && !dictionaries_[index].isIdenticalTo(dictionary))
            ++index;
        if (index == dictionaries_.size()) dictionaries_.push_back(dictionary);
        dictionaryOf_[place] = index;
    }
    [[nodiscard]] const PropertyListValue& foundIn(std::size_t index) const {
        static constexpr PropertyListValue null;
        if (index == noDictionary) return null;
        return found_[index];
    }
    [[nodiscard]] LayerValues allFrom(std::size_t first) const {
        LayerValues all;
        for (std::size_t layer = 0; layer < LayerValues::count; ++layer)
            all.values[layer] = foundIn(dictionaryOf_[first + layer]);
        return all;
    }

    std::vector<NSDictionary> dictionaries_;  // each once
    std::array<std::size_t, ofBoth> dictionaryOf_{};
    std::array<PropertyListValue, ofBoth> found_;
};

void LayerComparison::compare(const LayerValues& before, const LayerValues& now) {
    std::string start;
    compareBelow(before, now, start);
}

void LayerComparison::compareBelow(const LayerValues& before, const LayerValues& now,
                                   std::string& start) {
    const auto areIdentical = [](const auto& one, const auto& other) {
        return one.isIdenticalTo(other);
    };
    if (std::ranges::equal(before.values, now.values, areIdentical)) return;
    Level level(before, now);
    for (std::size_t index = 0; index < level.dictionaries().size(); ++index)
        for (const auto& entry : level.dictionaries()[index])
            if (level.take(entry, index)) compareKey(level, entry.key, start);
}

void LayerComparison::compareKey(const Level& level, std::string_view key, std::string& start) {
    bool isPlaceDifferent = false;
    bool isAnyLevel = false;
    for (std::size_t layer = 0; layer < LayerValues::count; ++layer) {
        const PropertyListValue& before = level.before(layer);
        const PropertyListValue& now = level.now(layer);
        if (before.isIdenticalTo(now)) continue;
        const bool areLevels = isLevel(before) && isLevel(now);
        isAnyLevel = isAnyLevel || isLevel(before) || isLevel(now);
        isPlaceDifferent = isPlaceDifferent || !(areLevels || areSameInKind(before, now));
    }
    if (!isPlaceDifferent && !isAnyLevel) return;
    if (key.find('.') != key.npos) {
        constexpr auto stored = static_cast<std::size_t>(Layer::Stored);
        unreached_ += leavesOf(level.now(stored)) - leavesOf(level.before(stored));
        return;
    }
    const std::size_t end = start.size();
    start += key;
    if (isPlaceDifferent) visitor_(start, level.allNow());
    if (isAnyLevel) {
        start += '.';
        compareBelow(level.allBefore(), level.allNow(), start);
    }
    start.resize(end);
}

}  // namespace Tool
