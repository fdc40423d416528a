// SPDX-License-Identifier: MIT
// What takes back saves.
//
// The changes are walked from the newest to the oldest. At each key path the chain begins with what
// is stored now: a change whose `after` is the head of the chain is undone by its `before`, which
// becomes the head. Any other change means that somebody has changed the key path in between.

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
    bool isBroken = false;
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
                chain.isBroken = chain.now != change.after;
            } else if (chain.value != change.after) {
                chain.isBroken = true;
            }
            chain.value = change.before;
        }
    return chains;
}

std::size_t levelsOf(const std::string& keyPath) {
    return static_cast<std::size_t>(std::count(keyPath.begin(), keyPath.end(), '.'));
}

/// Of the stored leaves, those that stay when the chains are undone.
std::set<std::string> stayingLeaves(const Chains& chains, const NSDictionary& stored) {
    std::set<std::string> leaves;
    if (stored.isNull()) return leaves;
    const NSMutableDictionary flat;
    NSDictionaryQRV::flatten(stored, flat);
    for (const auto& [keyPath, value] : flat)
        if (!chains.contains(std::string(keyPath))) leaves.insert(std::string(keyPath));
    return leaves;
}

/// A value there now would have to go, or would be in the way.
bool isObstructed(const std::string& keyPath, const std::set<std::string>& leaves) {
    const std::string below = keyPath + ".";
    const auto next = leaves.lower_bound(below);
    if (next != leaves.end() && next->starts_with(below)) return true;
    for (std::size_t end = keyPath.rfind('.'); end != std::string::npos && end > 0;
         end = keyPath.rfind('.', end - 1))
        if (leaves.contains(keyPath.substr(0, end))) return true;
    return false;
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
    QRVHistoryInverse inverse;
    const Chains chains = chainsOf(saves, stored);
    const std::set<std::string> leaves = stayingLeaves(chains, stored);
    for (const auto& [keyPath, chain] : chains) {
        if (chain.now == chain.value) continue;
        const bool isConflict =
            chain.isBroken || (!chain.value.isNull() && isObstructed(keyPath, leaves));
        if (isConflict)
            inverse.conflicts.push_back({keyPath, chain.expected, chain.now, chain.value});
        if (!isConflict || conflicts == QRVHistoryConflicts::Overwrite)
            inverse.writes.push_back({keyPath, chain.value});
    }
    sortWrites(inverse.writes);
    return inverse;
}
