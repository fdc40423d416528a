// SPDX-License-Identifier: MIT
#include "Edits/Comparison.h"

#include <algorithm>
#include <map>

#include "QRVSettings/StoreKeyPaths.h"
#include "Settings/Records.h"
#include "Text/Differences.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

using Sign = ComparedSetting::Sign;

Sign signOf(const Difference& difference) {
    if (difference.newValue.isNull()) return Sign::OnlyThere;
    return difference.oldValue.isNull() ? Sign::OnlyHere : Sign::Differs;
}

/// The new value of a difference is here, the old one there; each is stored in a scope of its own.
std::vector<ComparedSetting> comparedOf(const std::vector<Difference>& differences,
                                        const std::string& profileHere,
                                        const std::string& profileThere) {
    std::vector<ComparedSetting> compared;
    for (const Difference& one : differences) {
        const std::string here = SettingPlace{one.keyPath, profileHere}.storedKeyPath();
        const std::string there = SettingPlace{one.keyPath, profileThere}.storedKeyPath();
        const bool isSetting = !isOfStoreAlone(here, nullptr, one.newValue) ||
                               !isOfStoreAlone(there, nullptr, one.oldValue);
        if (one.isReached && isSetting)
            compared.push_back({one.keyPath, one.newValue, one.oldValue, signOf(one)});
    }
    return compared;
}

NSDictionary treeWithoutProfiles(const NSDictionary& stored, const std::string& profile) {
    NSDictionary tree = treeOfScope(stored, profile);
    if (!profile.empty()) return tree;
    return treeWithValue(tree, QRVStoreKeyPaths::profiles, nullptr).dictionary();
}

}  // namespace

NSDictionary treeOfScope(const NSDictionary& stored, const std::string& profile) {
    if (profile.empty()) return stored;
    std::string root = SettingPlace{"", profile}.storedKeyPath();
    root.pop_back();
    return valueAt(stored, root).dictionary();
}

std::vector<ComparedSetting> comparedWithDefaults(const SettingsSnapshot& snapshot,
                                                  const std::string& profile) {
    return comparedOf(
        differencesFromDefaults(treeOfScope(snapshot.stored, profile), snapshot.defaults), profile,
        profile);
}

std::vector<ComparedSetting> comparedWithProfile(const SettingsSnapshot& snapshot,
                                                 const std::string& profile,
                                                 const std::string& otherProfile) {
    return comparedOf(differencesBetween(treeWithoutProfiles(snapshot.stored, otherProfile),
                                         treeWithoutProfiles(snapshot.stored, profile)),
                      profile, otherProfile);
}

std::vector<ComparedSetting> comparedWithTree(const NSDictionary& stored,
                                              const NSDictionary& other) {
    return comparedOf(differencesBetween(other, stored), "", "");
}

NSDictionary treeBefore(const std::vector<QRVHistorySave>& saves, const NSDictionary& stored) {
    std::vector<const QRVHistorySave*> newestFirst;
    newestFirst.reserve(saves.size());
    for (const QRVHistorySave& save : saves) newestFirst.push_back(&save);
    std::stable_sort(newestFirst.begin(), newestFirst.end(),
                     [](const auto* one, const auto* other) { return one->order > other->order; });
    std::map<std::string, PropertyListValue> before;
    for (const QRVHistorySave* const save : newestFirst)
        for (const QRVHistoryChange& change : save->changes) before[change.keyPath] = change.before;

    PropertyListValue tree = snapshotOf(stored);
    // Removals first: what is removed may be in the way of a value. A change is one of a leaf.
    for (const auto& [keyPath, value] : before)
        if (value.isNull() && valueAt(tree, keyPath).dictionary().count() == 0)
            tree = treeWithValue(tree, keyPath, nullptr);
    for (const auto& [keyPath, value] : before)
        if (!value.isNull()) tree = treeWithValue(tree, keyPath, value);
    return tree.isNull() ? NSDictionary() : tree.dictionary();
}

std::vector<PendingEdits::Request> requestsToTake(const std::vector<ComparedSetting>& settings,
                                                  const std::string& profile,
                                                  const SettingsSnapshot& snapshot) {
    std::vector<PendingEdits::Request> requests;
    requests.reserve(settings.size());
    for (const ComparedSetting& one : settings) {
        const SettingPlace place =
            profile.empty() ? placeOfStored(one.keyPath) : SettingPlace{one.keyPath, profile};
        requests.push_back({place, one.there, valueAt(snapshot.defaults, place.keyPath)});
    }
    return requests;
}

}  // namespace Tool
