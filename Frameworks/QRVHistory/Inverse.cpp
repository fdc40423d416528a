// SPDX-License-Identifier: MIT
// What takes back saves.
//
// The changes are walked from the newest to the oldest. At each key path the chain begins with what
// is stored now: a change whose `after` is the head of the chain is undone by its `before`, which
// becomes the head. Any other change means that somebody has changed the key path in between.
//
// A conflict that is left out keeps the value that is stored at its key path, which may obstruct
// another write. So conflicts are looked for until there are no more.

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "QRVHistory/QRVHistory.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Values.h"

using QRVHistoryInside::leafAt;

namespace {

/// What undoing makes of one key path.
struct Chain {
    PropertyListValue now;
    PropertyListValue expected;  ///< by the newest change
    PropertyListValue value;     ///< of before the oldest change
    bool isConflict = false;

    /// Undoing it, when it is no conflict, changes something.
    [[nodiscard]] bool isWrite() const { return now != value; }
};
using Chains = std::map<std::string, Chain>;

std::vector<const QRVHistorySave*> newestFirst(const std::vector<QRVHistorySave>& saves) {
    std::vector<const QRVHistorySave*> sorted;
    sorted.reserve(saves.size());
    for (const QRVHistorySave& save : saves) sorted.push_back(&save);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const QRVHistorySave* left, const QRVHistorySave* right) {
                         return left->order > right->order;
                     });
    return sorted;
}

Chains chainsOf(const std::vector<QRVHistorySave>& saves, const NSDictionary& stored) {
    Chains chains;
    for (const QRVHistorySave* const save : newestFirst(saves))
        for (const QRVHistoryChange& change : save->changes) {
            const auto [entry, isNew] = chains.try_emplace(change.keyPath);
            Chain& chain = entry->second;
            if (isNew) {
                chain.now = leafAt(stored, change.keyPath);
                chain.expected = change.after;
                chain.isConflict = chain.now != change.after;
            } else if (chain.value != change.after) {
                chain.isConflict = true;
            }
            chain.value = change.before;
        }
    return chains;
}

std::size_t levelsOf(const std::string& keyPath) {
    return static_cast<std::size_t>(std::count(keyPath.begin(), keyPath.end(), '.'));
}

std::set<std::string> leavesOf(const NSDictionary& stored) {
    std::set<std::string> leaves;
    if (stored.isNull()) return leaves;
    const NSMutableDictionary flat;
    NSDictionaryQRV::flatten(stored, flat);
    for (const auto& [keyPath, value] : flat) leaves.emplace(keyPath);
    return leaves;
}

/// Of the stored leaves, those that stay; `writesConflicts` when conflicts are overwritten.
std::set<std::string> stayingLeaves(const Chains& chains, std::set<std::string> leaves,
                                    bool writesConflicts) {
    for (const auto& [keyPath, chain] : chains)
        if (chain.isWrite() && (writesConflicts || !chain.isConflict)) leaves.erase(keyPath);
    return leaves;
}

std::vector<std::string> levelsAbove(const std::string& keyPath) {
    std::vector<std::string> levels;
    for (std::size_t end = keyPath.rfind('.'); end != std::string::npos && end > 0;
         end = keyPath.rfind('.', end - 1))
        levels.push_back(keyPath.substr(0, end));
    return levels;
}

/// A value there now would have to go, or would be in the way.
bool isObstructed(const std::string& keyPath, const std::set<std::string>& leaves) {
    const std::string below = keyPath + ".";
    const auto next = leaves.lower_bound(below);
    if (next != leaves.end() && next->starts_with(below)) return true;
    const std::vector<std::string> above = levelsAbove(keyPath);
    return std::any_of(above.begin(), above.end(),
                       [&leaves](const std::string& level) { return leaves.contains(level); });
}

void markObstructed(Chains& chains, const std::set<std::string>& stored) {
    for (bool isDone = false; !isDone;) {
        isDone = true;
        const std::set<std::string> leaves = stayingLeaves(chains, stored, false);
        for (auto& [keyPath, chain] : chains) {
            if (!chain.isWrite() || chain.isConflict || chain.value.isNull()) continue;
            if (!isObstructed(keyPath, leaves)) continue;
            chain.isConflict = true;
            isDone = false;
        }
    }
}

/// A value cannot be written through another one.
void removeWhatIsOnTheWay(const Chains& chains, const std::set<std::string>& stored,
                          std::vector<QRVHistoryWrite>& writes) {
    std::set<std::string> leaves = stayingLeaves(chains, stored, true);
    for (const auto& [keyPath, chain] : chains) {
        if (!chain.isWrite() || chain.value.isNull()) continue;
        for (const std::string& level : levelsAbove(keyPath))
            if (leaves.erase(level) != 0) writes.push_back({level, nullptr});
    }
}

// Removals first, and deep ones before those above: then each value finds its place free.
void sortWrites(std::vector<QRVHistoryWrite>& writes) {
    std::stable_sort(writes.begin(), writes.end(),
                     [](const QRVHistoryWrite& left, const QRVHistoryWrite& right) {
                         if (left.value.isNull() != right.value.isNull())
                             return left.value.isNull();
                         return left.value.isNull() &&
                                levelsOf(left.keyPath) > levelsOf(right.keyPath);
                     });
}

}  // namespace

QRVHistoryInverse QRVHistoryInverseOf(const std::vector<QRVHistorySave>& saves,
                                      const NSDictionary& stored, QRVHistoryConflicts conflicts) {
    const bool writesConflicts = conflicts == QRVHistoryConflicts::Overwrite;
    QRVHistoryInverse inverse;
    Chains chains = chainsOf(saves, stored);
    const std::set<std::string> leaves = leavesOf(stored);
    markObstructed(chains, leaves);
    for (const auto& [keyPath, chain] : chains) {
        if (!chain.isWrite()) continue;
        if (chain.isConflict)
            inverse.conflicts.push_back({keyPath, chain.expected, chain.now, chain.value});
        if (!chain.isConflict || writesConflicts) inverse.writes.push_back({keyPath, chain.value});
    }
    if (writesConflicts) removeWhatIsOnTheWay(chains, leaves, inverse.writes);
    sortWrites(inverse.writes);
    return inverse;
}
