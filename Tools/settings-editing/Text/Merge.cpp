// SPDX-License-Identifier: MIT
#include "Text/Merge.h"

#include <algorithm>
#include <set>

#include "Reporting/Failure.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

struct Versions {
    PropertyListValue base;
    PropertyListValue ours;
    PropertyListValue theirs;
};

bool isEmptyDictionary(const PropertyListValue& value) {
    return value.isDictionary() && value.dictionary().count() == 0;
}

/// Whether the entries are merged one by one. Where one side has removed a dictionary, these are
/// what it has removed.
bool areLevels(const Versions& values) {
    const auto isLevelOrRemoved = [&values](const PropertyListValue& side) {
        return side.isDictionary() || (side.isNull() && values.base.isDictionary());
    };
    const bool hasEntries =
        values.ours.dictionary().count() != 0 || values.theirs.dictionary().count() != 0;
    return hasEntries && isLevelOrRemoved(values.ours) && isLevelOrRemoved(values.theirs);
}

class Merge {
  public:
    explicit Merge(MergeSide atConflicts) : atConflicts_(atConflicts) {}

    NSDictionary mergedLevels(const NSDictionary& base, const NSDictionary& ours,
                              const NSDictionary& theirs, const std::string& start) {
        std::set<std::string> keys;
        for (const auto& [key, value] : ours) keys.emplace(key);
        for (const auto& [key, value] : theirs) keys.emplace(key);
        NSMutableDictionary level;
        for (const std::string& key : keys)
            level.setObjectForKey(
                merged({base.objectForKey(key), ours.objectForKey(key), theirs.objectForKey(key)},
                       start + key),
                key);
        return level.copy();
    }

    std::vector<MergeConflict> sortedConflicts() {
        std::stable_sort(
            conflicts_.begin(), conflicts_.end(),
            [](const auto& one, const auto& other) { return one.keyPath < other.keyPath; });
        return std::move(conflicts_);
    }

  private:
    PropertyListValue merged(const Versions& values, const std::string& keyPath) {
        return areLevels(values) ? mergedDictionary(values, keyPath) : mergedValue(values, keyPath);
    }

    PropertyListValue mergedDictionary(const Versions& values, const std::string& keyPath) {
        const NSDictionary level = mergedLevels(values.base.dictionary(), values.ours.dictionary(),
                                                values.theirs.dictionary(), keyPath + ".");
        const bool stays = level.count() != 0 || isEmptyDictionary(values.ours) ||
                           isEmptyDictionary(values.theirs);
        return stays ? PropertyListValue(level) : nullptr;
    }

    PropertyListValue mergedValue(const Versions& values, const std::string& keyPath) {
        if (areSameInKind(values.ours, values.theirs) || areSameInKind(values.base, values.theirs))
            return values.ours;
        if (areSameInKind(values.base, values.ours)) return values.theirs;
        conflicts_.push_back({keyPath, values.base, values.ours, values.theirs});
        return atConflicts_ == MergeSide::Ours ? values.ours : values.theirs;
    }

    MergeSide atConflicts_;
    std::vector<MergeConflict> conflicts_;
};

std::string textOf(const PropertyListValue& value) {
    return value.isNull() ? "not set" : shortened(jsonText(value));
}

}  // namespace

MergedSettings mergedSettings(const NSDictionary& base, const NSDictionary& ours,
                              const NSDictionary& theirs, MergeSide atConflicts) {
    Merge merge(atConflicts);
    const NSDictionary tree = merge.mergedLevels(base, ours, theirs, "");
    return {tree, merge.sortedConflicts()};
}

std::string conflictText(const MergeConflict& conflict) {
    return keyPathText(conflict.keyPath) + ": base " + textOf(conflict.base) + ", ours " +
           textOf(conflict.ours) + ", theirs " + textOf(conflict.theirs);
}

std::string conflictObjects(const std::vector<MergeConflict>& conflicts) {
    std::string text;
    for (const MergeConflict& conflict : conflicts) {
        text.append(R"({"keyPath":)").append(jsonText(conflict.keyPath));
        text.append(R"(,"base":)").append(jsonText(conflict.base));
        text.append(R"(,"ours":)").append(jsonText(conflict.ours));
        text.append(R"(,"theirs":)").append(jsonText(conflict.theirs)).append("}\n");
    }
    return text;
}

}  // namespace Tool
