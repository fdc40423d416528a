// SPDX-License-Identifier: MIT
#include "Settings/Records.h"

#include <string>

#include "QRVSettings/QRVKnownSettings.h"

namespace Tool {

bool isRecord(std::string_view storedKeyPath) {
    return QRVScopeOfKeyPath(storedKeyPath) == QRVSettingScope::Record;
}

bool isOfStoreAlone(std::string_view storedKeyPath, const PropertyListValue& before,
                    const PropertyListValue& after) {
    const auto isNoSetting = [storedKeyPath](const PropertyListValue& value) {
        return value.isNull() || QRVIsRecordOfStore(storedKeyPath, value);
    };
    return isNoSetting(before) && isNoSetting(after);
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
