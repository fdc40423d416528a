// SPDX-License-Identifier: MIT
// The machine's identity, and the reset of settings that name hardware when it changes.
//
// checkMachineIdentity:
// 1. The device is recorded when none is, and so is the model.
// 2. When the device is not the recorded one, the primary network interface is reset, and the
//    device is recorded.
// 3. When the model is not the recorded one, the fans and each profile's menu-bar sensors are
//    reset, and the model is recorded.
//
// A machine without an identifier never matches: its settings are reset each time. An identifier
// that cannot be read for want of descriptors or memory is neither recorded nor compared; the next
// call checks it.

#include <string>
#include <string_view>

#include "Platform/Machine/MachineIdentity.h"
#include "QRVSettings/QRVSettings+BeforeDefaults.h"
#include "QRVSettings/QRVSettings+FileChange.h"
#include "QRVSettings/QRVSettings+Log.h"
#include "QRVSettings/QRVSettings+Merging.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"

namespace KeyPaths = QRVStoreKeyPaths;

namespace {

enum class ChangeMessageLine : int { Device = 186, Model = 196 };

bool isOther(const PropertyListValue& recorded, const PropertyListValue& current) {
    return !current.isString() || current != recorded;
}

void logChange(ChangeMessageLine firstLine, const char* what, const PropertyListValue& recorded,
               const PropertyListValue& current) {
    constexpr const char* function = "-[QRVSettings loadDefaults]";
    const int line = static_cast<int>(firstLine);
    QRVInside::logMessage(function, line, what, {});
    QRVInside::logMessage(function, line + 1, "Old - %@", {recorded});
    QRVInside::logMessage(function, line + 2, "New - %@", {current});
}

void checkDevice(const PropertyListValue& current) {
    const PropertyListValue recorded = QRVSettingsObjectForKeyPath(KeyPaths::device);
    if (!isOther(recorded, current)) return;
    logChange(ChangeMessageLine::Device, "Device id changed", recorded, current);
    QRVSettingsSetObjectForKeyPath(nullptr, KeyPaths::primaryInterface);
    QRVSettingsSetObjectForKeyPath(current, KeyPaths::device);
}

std::string sensorsOfProfile(std::string_view profile) {
    std::string keyPath(KeyPaths::profiles);
    keyPath.append(".").append(profile).append(".").append(KeyPaths::profileSensors);
    return keyPath;
}

void checkModel(const PropertyListValue& current) {
    const PropertyListValue recorded = QRVSettingsObjectForKeyPath(KeyPaths::model);
    if (!isOther(recorded, current)) return;
    logChange(ChangeMessageLine::Model, "Model id changed", recorded, current);
    QRVSettingsSetObjectForKeyPath(nullptr, KeyPaths::fans);
    const NSDictionary profiles = QRVSettingsObjectForKeyPath(KeyPaths::profiles).dictionary();
    for (const auto& [profile, settings] : profiles)
        QRVSettingsSetObjectForKeyPath(nullptr, sensorsOfProfile(profile));
    QRVSettingsSetObjectForKeyPath(current, KeyPaths::model);
}

struct Identifier {
    PropertyListValue value;
    bool lackedMeans = false;
};

std::string hexadecimal(const QRVPlatform::SHA1Digest& digest) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * digest.size());
    for (const unsigned byte : digest) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

Identifier currentDevice() {
    Identifier device;
    const auto serialNumber = QRVPlatform::platformSerialNumber(&device.lackedMeans);
    if (serialNumber) device.value = hexadecimal(QRVPlatform::CC_SHA1(*serialNumber));
    return device;
}

Identifier currentModel() {
    Identifier model;
    const auto text = QRVPlatform::hardwareModel(&model.lackedMeans);
    if (text) model.value = *text;
    return model;
}

void recordUnlessRecorded(Identifier (*current)(), QRVKeyPath keyPath) {
    if (!QRVSettingsObjectForKeyPath(keyPath).isNull()) return;
    const Identifier identifier = current();
    if (!identifier.lackedMeans) QRVSettingsSetObjectForKeyPath(identifier.value, keyPath);
}

}  // namespace

PropertyListValue QRVSettings::deviceID() const {
    return currentDevice().value;
}

PropertyListValue QRVSettings::modelIdentifier() const {
    return currentModel().value;
}

void QRVInside::checkMachineIdentity() {
    const OriginScope origin(QRVChangeOrigins::hardware);
    recordUnlessRecorded(currentDevice, KeyPaths::device);  // 1
    recordUnlessRecorded(currentModel, KeyPaths::model);
    const Identifier device = currentDevice();
    const Identifier model = currentModel();
    if (!device.lackedMeans) {
        const UnlessSettled unlessRecorded(KeyPaths::device, device.value);
        checkDevice(device.value);  // 2
    }
    if (model.lackedMeans) return;
    const UnlessSettled unlessRecorded(KeyPaths::model, model.value);
    checkModel(model.value);  // 3
}
