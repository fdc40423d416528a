// SPDX-License-Identifier: MIT
#include "Text/Differences.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

bool isEmptyDictionary(const PropertyListValue& value) {
    return value.isDictionary() && value.dictionary().count() == 0;
}

bool hasEntries(const PropertyListValue& value) {
    return value.isDictionary() && value.dictionary().count() != 0;
}

NSDictionary entriesOf(const PropertyListValue& value) {
    return value.isDictionary() ? value.dictionary() : NSDictionary();
}

PropertyListValue leafOf(const PropertyListValue& value) {
    return hasEntries(value) ? PropertyListValue() : value;
}

bool haveSameElements(const NSArray& one, const NSArray& other) {
    return std::ranges::equal(one, other, areSameInKind);
}

bool haveSameEntries(const NSDictionary& one, const NSDictionary& other) {
    if (one.count() != other.count()) return false;
    for (const auto& [key, value] : one)
        if (!areSameInKind(value, other.objectForKey(key))) return false;
    return true;
}

class Comparison {
  public:
    void compare(const NSDictionary& before, const NSDictionary& after, const std::string& start,
                 bool isReached) {
        std::set<std::string> keys;
        for (const auto& [key, value] : before) keys.emplace(key);
        for (const auto& [key, value] : after) keys.emplace(key);
        for (const std::string& key : keys)
            compareValues(before.objectForKey(key), after.objectForKey(key), start + key,
                          isReached && key.find('.') == key.npos);
    }
    std::vector<Difference> sorted() {
        std::stable_sort(found_.begin(), found_.end(), [](const auto& one, const auto& other) {
            return one.keyPath < other.keyPath;
        });
        return std::move(found_);
    }

  private:
    void compareValues(const PropertyListValue& before, const PropertyListValue& after,
                       const std::string& keyPath, bool isReached) {
        if (before.isIdenticalTo(after)) return;
        if (hasEntries(before) && isEmptyDictionary(after)) {
            found_.push_back({keyPath, before, after, isReached});
            return;
        }
        const bool gainsEntries = isEmptyDictionary(before) && hasEntries(after);
        if (!gainsEntries && !areSameInKind(leafOf(before), leafOf(after)))
            found_.push_back({keyPath, leafOf(before), leafOf(after), isReached});
        if (hasEntries(before) || hasEntries(after))
            compare(entriesOf(before), entriesOf(after), keyPath + ".", isReached);
    }

    std::vector<Difference> found_;
};

}  // namespace

bool areSameInKind(const PropertyListValue& value, const PropertyListValue& other) {
    using Kind = PropertyListValue::Kind;
    if (value.isIdenticalTo(other)) return true;
    if (value.kind() != other.kind()) return false;
    switch (value.kind()) {
        case Kind::Real:  // 0 and -0 are two values, and there are several NaN
            return std::isnan(value.doubleValue()) && std::isnan(other.doubleValue());
        case Kind::Array:
            return haveSameElements(value.array(), other.array());
        case Kind::Dictionary:
            return haveSameEntries(value.dictionary(), other.dictionary());
        default:
            return value == other;
    }
}

std::vector<Difference> differencesBetween(const NSDictionary& oldTree,
                                           const NSDictionary& newTree) {
    Comparison comparison;
    comparison.compare(entriesOf(oldTree), entriesOf(newTree), "", true);
    return comparison.sorted();
}

std::vector<Difference> differencesFromDefaults(const NSDictionary& stored,
                                                const NSDictionary& defaults) {
    std::vector<Difference> differences = differencesBetween(nullptr, stored);
    for (Difference& leaf : differences)
        if (leaf.isReached) leaf.oldValue = valueAt(defaults, leaf.keyPath);
    std::erase_if(differences, [](const Difference& leaf) {
        return isEmptyDictionary(leaf.newValue) || areSameInKind(leaf.oldValue, leaf.newValue);
    });
    return differences;
}

std::string differenceLines(const std::vector<Difference>& differences) {
    std::string text;
    for (const Difference& difference : differences) {
        text.append(keyPathText(difference.keyPath)).append("\t");
        text.append(jsonText(difference.oldValue)).append(" -> ");
        text.append(jsonText(difference.newValue)).append("\n");
    }
    return text;
}

std::string differenceObjects(const std::vector<Difference>& differences) {
    std::string text;
    for (const Difference& difference : differences) {
        text.append(R"({"keyPath":)").append(jsonText(difference.keyPath));
        text.append(R"(,"before":)").append(jsonText(difference.oldValue));
        text.append(R"(,"after":)").append(jsonText(difference.newValue)).append("}\n");
    }
    return text;
}

}  // namespace Tool
