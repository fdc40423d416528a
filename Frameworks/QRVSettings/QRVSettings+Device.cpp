// SPDX-License-Identifier: MIT
// The machine's identity, and what happens to settings that name hardware when it changes.
//
// checkMachineIdentity:
// 1. Where no device is recorded, this one is; likewise the model.
// 2. When the device is not the recorded one, the primary network interface is reset, and the
//    device recorded.
// 3. When the model is not the recorded one, the fans and each profile's menu-bar sensors are
//    reset, and the model recorded.
//
// A machine that has no identifier never matches: there the settings are reset each time.

#include <string>
#include <string_view>

#include "Platform/Machine/MachineIdentity.h"
#include "QRVSettings/QRVSettings+Log.h"
#include "QRVSettings/QRVSettings+StartUp.h"
#include "QRVSettings/QRVSettings.h"

namespace {

constexpr const char* deviceKeyPath = "Device.Device";
constexpr const char* modelKeyPath = "Device.Model";

enum class ChangeMessageLine : int { Device = 186, Model = 196 };

void write(const PropertyListValue& value, QRVKeyPath keyPath) {
    QRVSettingsSetObjectForKeyPathWithCache(value, keyPath, false);
}

void recordWhereAbsent(QRVKeyPath keyPath, PropertyListValue (QRVSettings::*identifier)() const) {
    if (QRVSettingsObjectForKeyPath(keyPath).isNull())
        write((QRVSettings::sharedSettings().*identifier)(), keyPath);
}

bool isOther(const PropertyListValue& recorded, const PropertyListValue& current) {
    return !current.isString() || current != recorded;
}

void logChange(ChangeMessageLine firstLine, const char* what, const PropertyListValue& recorded,
               const PropertyListValue& current) {
    constexpr const char* function = "-[QRVSettings loadDefaults]";
    const int line = static_cast<int>(firstLine);
    logMessage(function, line, what, {});
    logMessage(function, line + 1, "Old - %@", {recorded});
    logMessage(function, line + 2, "New - %@", {current});
}

void checkDevice(const PropertyListValue& current) {
    const PropertyListValue recorded = QRVSettingsObjectForKeyPath(deviceKeyPath);
    if (!isOther(recorded, current)) return;
    logChange(ChangeMessageLine::Device, "Device id changed", recorded, current);
    write(nullptr, "Network.Menubar.Global.PrimaryInterface");
    write(current, deviceKeyPath);
}

void checkModel(const PropertyListValue& current) {
    const PropertyListValue recorded = QRVSettingsObjectForKeyPath(modelKeyPath);
    if (!isOther(recorded, current)) return;
    logChange(ChangeMessageLine::Model, "Model id changed", recorded, current);
    write(nullptr, "Sensors.Global.Fans");
    const NSDictionary profiles = QRVSettingsObjectForKeyPath("Profiles.Settings").dictionary();
    for (const auto& [profile, settings] : profiles)
        write(nullptr, "Profiles.Settings." + std::string(profile) + ".Sensors.Menubar.Sensors");
    write(current, modelKeyPath);
}

std::string hexadecimal(const QRVPlatform::SHA1Digest& digest) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned byte : digest) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

}  // namespace

PropertyListValue QRVSettings::deviceID() const {
    const std::optional<std::string> serialNumber = QRVPlatform::platformSerialNumber();
    return serialNumber ? PropertyListValue(hexadecimal(QRVPlatform::CC_SHA1(*serialNumber)))
                        : nullptr;
}

PropertyListValue QRVSettings::modelIdentifier() const {
    const std::optional<std::string> model = QRVPlatform::hardwareModel();
    return model ? PropertyListValue(*model) : nullptr;
}

void checkMachineIdentity() {
    recordWhereAbsent(deviceKeyPath, &QRVSettings::deviceID);
    recordWhereAbsent(modelKeyPath, &QRVSettings::modelIdentifier);
    const PropertyListValue device = QRVSettings::sharedSettings().deviceID();
    const PropertyListValue model = QRVSettings::sharedSettings().modelIdentifier();
    checkDevice(device);
    checkModel(model);
}
