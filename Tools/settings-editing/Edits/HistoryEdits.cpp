// SPDX-License-Identifier: MIT
#include "Edits/HistoryEdits.h"

#include <algorithm>
#include <utility>

#include "History/ToolHistory.h"
#include "Settings/Records.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

/// In a save that migrated the settings, what that copied into the profile "default".
bool isCopiedByMigration(const QRVHistoryChange& change, const NSDictionary& stored) {
    constexpr std::string_view profile = "Profiles.Settings.default.";
    if (!change.before.isNull() || !change.keyPath.starts_with(profile)) return false;
    const PropertyListValue plain =
        valueAt(stored, std::string_view(change.keyPath).substr(profile.size()));
    return !plain.isNull() && plain == change.after;
}

bool isMigration(const QRVHistorySave& save) {
    return std::any_of(save.changes.begin(), save.changes.end(), [](const auto& change) {
        return isAtOrBelow(change.keyPath, "Migration") && change.before.isNull();
    });
}

}  // namespace

std::vector<QRVHistorySave> undoableSaves(std::vector<QRVHistorySave> saves,
                                          const NSDictionary& stored) {
    for (QRVHistorySave& save : saves) {
        const bool hasMigrated = isMigration(save);
        std::erase_if(save.changes, [&stored, hasMigrated](const QRVHistoryChange& change) {
            return isOfStoreAlone(change.keyPath, change.before, change.after) ||
                   (hasMigrated && isCopiedByMigration(change, stored));
        });
    }
    std::erase_if(saves, [](const QRVHistorySave& save) { return save.changes.empty(); });
    return saves;
}

std::vector<PendingEdits::Request> requestsToTakeBack(const std::vector<QRVHistorySave>& saves,
                                                      const SettingsSnapshot& snapshot,
                                                      QRVHistoryConflicts conflicts) {
    const QRVHistoryInverse inverse =
        inverseOfSaves(undoableSaves(saves, snapshot.stored), snapshot.stored, conflicts);
    std::vector<PendingEdits::Request> requests;
    requests.reserve(inverse.writes.size());
    for (const QRVHistoryWrite& write : inverse.writes) {
        const SettingPlace place = placeOfStored(write.keyPath);
        requests.push_back({place, write.value, valueAt(snapshot.defaults, place.keyPath)});
    }
    return requests;
}

}  // namespace Tool
