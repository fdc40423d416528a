// SPDX-License-Identifier: MIT
#include "StartUp.h"

#include "Failure.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"

namespace Tool {
namespace {

PropertyListValue storedIdentity() {
    return QRVSettingsStoredObjectForKeyPath("Device");
}

bool differs(const PropertyListValue& before, const PropertyListValue& after, const char* key) {
    const PropertyListValue recorded = before.dictionary().objectForKey(key);
    return !recorded.isNull() && recorded != after.dictionary().objectForKey(key);
}

}  // namespace

void startUp() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    try {
        store.loadDefaults();
        store.prepare();
        // What was looked for before it was brought into the present shape is cached as absent.
        store.cache().removeAllObjects();
    } catch (const NSInvalidArgumentException& exception) {
        throw Failure(ExitCode::WrongValue,
                      std::string("the application cannot start with these settings: ") +
                          exception.what() + "; unset what is in its way");
    }
}

void startUpOnNothing() {
    QRVSettings::sharedSettings().setStorageCache(NSMutableDictionary());
    startUp();
}

std::vector<std::string> startUpNotingChanges() {
    const PropertyListValue before = storedIdentity();
    const bool isMigrated = isOfEarlierVersion(QRVSettingsStoredValues());
    startUp();
    const PropertyListValue after = storedIdentity();
    std::vector<std::string> notes;
    if (differs(before, after, "Device"))
        notes.emplace_back(
            "the settings come from another machine: Network.Menubar.Global.PrimaryInterface is "
            "reset");
    if (differs(before, after, "Model"))
        notes.emplace_back(
            "the settings come from another model: Sensors.Global.Fans and the profiles' "
            "Sensors.Menubar.Sensors are reset");
    if (isMigrated) notes.emplace_back(migrationNote);
    return notes;
}

bool isOfEarlierVersion(const NSDictionary& settings) {
    const NSDictionary flags = settings.objectForKey("Migration").dictionary();
    const bool isMigrated = !flags.objectForKey("CombinedPowerItems").isNull() &&
                            !flags.objectForKey("Profiles").isNull();
    return !isMigrated && NSDictionaryQRV::hasValues(settings);
}

}  // namespace Tool
