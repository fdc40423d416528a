// SPDX-License-Identifier: MIT
// Migrates settings that earlier versions wrote. Each of the two migrations runs once for a
// settings file: it is skipped when the file has its flag, with any value, even false. When saves
// are merged, so is a migration that another process has done before this one's is saved.

#include <string_view>
#include <utility>

#include "QRVSettings/ProfileSettings.h"
#include "QRVSettings/QRVSettings+FileChange.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Merging.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"

namespace KeyPaths = QRVStoreKeyPaths;
using QRVInside::requireHostThread;
using QRVInside::UnlessSettled;

namespace {

/// All items of the obsolete kind become one item of the kind that replaces it.
NSArray withMergedPowerItems(const NSArray& items) {
    constexpr int mergedSource = 8;
    static const auto& replacement = *new NSDictionary{{"source", 21}};
    NSMutableArray merged;
    bool isReplaced = false;
    for (const PropertyListValue& item : items) {
        if (item.dictionary().objectForKey("source").integerValue() != mergedSource)
            merged.addObject(item);
        else if (!std::exchange(isReplaced, true))
            merged.addObject(replacement);
    }
    return merged.copy();
}

// The items are read from the active profile and written to the plain key path. So when the profile
// has no items, an empty list replaces whatever the plain key path held.
void mergeCombinedPowerItems() {
    if (!QRVSettingsObjectForKeyPath(KeyPaths::combinedItemsMigrated).isNull()) return;
    const UnlessSettled unlessMigrated(KeyPaths::combinedItemsMigrated, std::nullopt);
    const NSArray items = QRVSettingsProfileObjectForKeyPath(KeyPaths::combinedItems).array();
    const NSArray merged = withMergedPowerItems(items);
    if (merged != items) QRVSettingsSetObjectForKeyPath(merged, KeyPaths::combinedItems);
    QRVSettingsSetObjectForKeyPath(true, KeyPaths::combinedItemsMigrated);
}

NSDictionary menubarOfProfile(const NSDictionary& module) {
    const NSDictionary menubar = module.objectForKey("Menubar").dictionary();
    NSMutableDictionary copied;
    for (const std::string_view key : QRVInside::menubarKeysOfProfile)
        copied.setObjectForKey(menubar.objectForKey(key), key);
    return copied;
}

// This flag is read from the stored values alone: a default would say nothing about the file.
void moveMenubarSettingsIntoDefaultProfile() {
    if (!QRVSettingsStoredObjectForKeyPath(KeyPaths::profilesMigrated).isNull()) return;
    const UnlessSettled unlessMigrated(KeyPaths::profilesMigrated, std::nullopt);
    static const auto& available = *new NSDictionary{{"identifier", "default"}};
    const NSMutableDictionary profile;
    for (const std::string_view module : QRVInside::modulesOfProfile) {
        const NSDictionary stored = QRVSettingsStoredObjectForKeyPath(module).dictionary();
        profile.setObjectForKey(NSMutableDictionary{{"Menubar", menubarOfProfile(stored)}}, module);
    }
    const NSMutableDictionary profiles{{"Available", available},
                                       {"Settings", NSMutableDictionary{{"default", profile}}}};
    QRVSettingsSetObjectForKeyPath(profiles, "Profiles");
    QRVSettingsSetObjectForKeyPath(true, KeyPaths::profilesMigrated);
}

}  // namespace

void QRVSettings::migrate() {
    requireHostThread();
    const QRVInside::OriginScope origin(QRVChangeOrigins::migration);
    mergeCombinedPowerItems();
    moveMenubarSettingsIntoDefaultProfile();
}

bool QRVSettingsMigrationNeeded() {
    return false;
}

void QRVSettingsPerformMigration() {}
