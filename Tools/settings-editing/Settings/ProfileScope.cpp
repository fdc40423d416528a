// SPDX-License-Identifier: MIT
#include "Settings/ProfileScope.h"

#include <utility>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Text/FileForm.h"

namespace Tool {

Scope::Scope(std::string profile) : profile_(std::move(profile)) {
    requireUTF8(profile_);
}

void Scope::enter() const {
    QRVSettings::sharedSettings().setActiveProfile(profile_);
}

std::string Scope::storedKeyPath(QRVKeyPath keyPath) const {
    if (!isProfile()) return std::string(keyPath.text());
    enter();
    return QRVSettingsProfileKeyForKey(keyPath);
}

NSDictionary Scope::storedTree() const {
    if (!isProfile()) return QRVSettingsStoredValues();
    std::string root = storedKeyPath("");
    root.pop_back();
    return QRVSettingsStoredObjectForKeyPath(root).dictionary();
}

PropertyListValue Scope::stored(QRVKeyPath keyPath) const {
    return QRVSettingsStoredObjectForKeyPath(storedKeyPath(keyPath));
}

PropertyListValue Scope::effective(QRVKeyPath keyPath) const {
    if (!isProfile()) return QRVSettingsObjectForKeyPath(keyPath);
    enter();
    return QRVSettingsProfileObjectForKeyPath(keyPath);
}

void Scope::set(const PropertyListValue& value, QRVKeyPath keyPath) const {
    if (isProfile()) {
        enter();
        QRVSettingsProfileSetObjectForKeyPath(value, keyPath);
    } else {
        QRVSettingsSetObjectForKeyPath(value, keyPath);
    }
}

void Scope::extendDefault(QRVKeyPath keyPath) const {
    const PropertyListValue value = QRVSettingsDefaultForKeyPath(keyPath);
    if (!isProfile() || value.isNull()) return;
    QRVSettings& store = QRVSettings::sharedSettings();
    const NSMutableDictionary defaults = store.defaults().mutableCopy();
    NSDictionaryQRV::setObjectAtKeyPath(defaults, value, storedKeyPath(keyPath));
    store.setDefaults(defaults);
}

std::set<std::string> profileNames() {
    std::set<std::string> names;
    for (const auto& [name, settings] :
         QRVSettingsStoredObjectForKeyPath(QRVStoreKeyPaths::profiles).dictionary())
        names.emplace(name);
    return names;
}

}  // namespace Tool
