// SPDX-License-Identifier: MIT
#include "Settings/Records.h"

#include <algorithm>
#include <array>
#include <string>

#include "QRVSettings/StoreKeyPaths.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

constexpr std::array<std::string_view, 4> records = {"Device", "Migration", "Profiles.Available",
                                                     QRVStoreKeyPaths::currentAppearance};

bool isNothing(const PropertyListValue& value) {
    return value.isNull() || (value.isArray() && value.array().count() == 0) ||
           (value.isDictionary() && value.dictionary().count() == 0);
}

}  // namespace

bool isRecord(std::string_view storedKeyPath) {
    return std::any_of(records.begin(), records.end(), [storedKeyPath](std::string_view record) {
        return isAtOrBelow(storedKeyPath, record);
    });
}

bool isOfStoreAlone(std::string_view storedKeyPath, const PropertyListValue& before,
                    const PropertyListValue& after) {
    if (isRecord(storedKeyPath)) return true;
    return isNothing(before) && isNothing(after) && isLeftByMigration(storedKeyPath);
}

bool isLeftByMigration(std::string_view storedKeyPath) {
    constexpr std::string_view profile = "Profiles.Settings.default.";
    if (storedKeyPath == QRVStoreKeyPaths::combinedItems) return true;
    if (!storedKeyPath.starts_with(profile)) return false;
    storedKeyPath.remove_prefix(profile.size());
    return storedKeyPath == QRVStoreKeyPaths::combinedItems ||
           (storedKeyPath.ends_with(".Menubar") &&
            std::count(storedKeyPath.begin(), storedKeyPath.end(), '.') == 1);
}

void removeRecords(std::vector<Difference>& differences, const ProfileScope& scope) {
    std::erase_if(differences, [&scope](const Difference& difference) {
        return isOfStoreAlone(scope.storedKeyPath(difference.keyPath), difference.oldValue,
                              difference.newValue);
    });
}

NSDictionary withoutRecords(const NSDictionary& valuesByKeyPath, const ProfileScope& scope) {
    NSMutableDictionary settings;
    for (const auto& [keyPath, value] : valuesByKeyPath)
        if (!isOfStoreAlone(scope.storedKeyPath(std::string(keyPath)), nullptr, value))
            settings.setObjectForKey(value, keyPath);
    return settings;
}

}  // namespace Tool
