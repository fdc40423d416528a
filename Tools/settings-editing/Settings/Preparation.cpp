// SPDX-License-Identifier: MIT
#include "Settings/Preparation.h"

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Reporting/Failure.h"

namespace Tool {
namespace {

using NSDictionaryQRV::objectAtKeyPath;

struct RecordedMachine {
    PropertyListValue device = QRVSettingsStoredObjectForKeyPath(QRVStoreKeyPaths::device);
    PropertyListValue model = QRVSettingsStoredObjectForKeyPath(QRVStoreKeyPaths::model);
    PropertyListValue interface =
        QRVSettingsStoredObjectForKeyPath(QRVStoreKeyPaths::primaryInterface);
};

bool isAnother(const PropertyListValue& before, const PropertyListValue& now) {
    return !before.isNull() && before != now;
}

std::string text(std::string_view keyPath) {
    return std::string(keyPath);
}

void runPreparation() {
    QRVSettings& store = QRVSettings::sharedSettings();
    try {
        store.setUsesSiteDefaults(true);
        store.loadDefaults();
        store.prepare();
    } catch (const NSInvalidArgumentException& exception) {
        throw Failure(Fault::WrongValue,
                      std::string("the application cannot start with these settings: ") +
                          exception.what() + "; unset what is in its way");
    }
    // What was read before it was migrated is still cached as absent.
    store.cache().removeAllObjects();
}

}  // namespace

std::vector<std::string> prepareStore() {
    const RecordedMachine before;
    const bool isMigrated = needMigration(QRVSettingsStoredValues());
    runPreparation();
    const RecordedMachine now;
    std::vector<std::string> notes;
    const bool isOther = isAnother(before.device, now.device);
    const bool isInterfaceReset = !before.interface.isNull() && now.interface.isNull();
    if ((isOther || isInterfaceReset) && !machineHasID())
        notes.push_back(std::string(machineWithoutID) + ": " +
                        text(QRVStoreKeyPaths::primaryInterface) + " is reset at each start; " +
                        adviceForMachineID);
    else if (isOther)
        notes.push_back("the settings come from another machine: " +
                        text(QRVStoreKeyPaths::primaryInterface) + " is reset");
    if (isAnother(before.model, now.model))
        notes.push_back("the settings come from another model: " + text(QRVStoreKeyPaths::fans) +
                        " and the profiles' " + text(QRVStoreKeyPaths::profileSensors) +
                        " are reset");
    if (isMigrated) notes.emplace_back(migrationNote);
    return notes;
}

bool machineHasID() {
    return !QRVSettings::sharedSettings().deviceID().isNull();
}

bool needMigration(const NSDictionary& settings) {
    const auto lacks = [&settings](std::string_view keyPath) {
        return objectAtKeyPath(settings, keyPath).isNull();
    };
    return (lacks(QRVStoreKeyPaths::combinedItemsMigrated) ||
            lacks(QRVStoreKeyPaths::profilesMigrated)) &&
           NSDictionaryQRV::hasValues(settings);
}

}  // namespace Tool
