// SPDX-License-Identifier: MIT
#include "Settings/ProfileScope.h"

#include <utility>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Reporting/Notices.h"
#include "Text/FileForm.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

/// The one that the preparation activates.
constexpr std::string_view firstProfile = "default";

}  // namespace

ProfileScope::ProfileScope(std::string profile) : profile_(std::move(profile)) {
    requireUTF8(profile_);
}

void ProfileScope::enter() const {
    QRVSettings::sharedSettings().setActiveProfile(profile_);
}

void ProfileScope::noticeIfMissing() const {
    if (!isProfile() || profile_ == firstProfile || !storedTree().isNull()) return;
    const std::set<std::string> names = profileNames();
    if (names.size() > names.count(std::string(firstProfile)))
        notice("there are no settings in the profile " + keyPathText(profile_) +
               " (profiles: " + profilesInWords() + ")");
}

std::string ProfileScope::storedKeyPath(QRVKeyPath keyPath) const {
    if (!isProfile()) return std::string(keyPath.text());
    enter();
    return QRVSettingsProfileKeyForKey(keyPath);
}

NSDictionary ProfileScope::storedTree() const {
    if (!isProfile()) return QRVSettingsStoredValues();
    std::string root = storedKeyPath("");
    root.pop_back();
    return QRVSettingsStoredObjectForKeyPath(root).dictionary();
}

PropertyListValue ProfileScope::stored(QRVKeyPath keyPath) const {
    return QRVSettingsStoredObjectForKeyPath(storedKeyPath(keyPath));
}

PropertyListValue ProfileScope::effective(QRVKeyPath keyPath) const {
    if (!isProfile()) return QRVSettingsObjectForKeyPath(keyPath);
    enter();
    return QRVSettingsProfileObjectForKeyPath(keyPath);
}

void ProfileScope::set(const PropertyListValue& value, QRVKeyPath keyPath) const {
    if (isProfile()) {
        enter();
        QRVSettingsProfileSetObjectForKeyPath(value, keyPath);
    } else {
        QRVSettingsSetObjectForKeyPath(value, keyPath);
    }
}

void ProfileScope::extendDefault(QRVKeyPath keyPath) const {
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

std::string profilesInWords() {
    std::string text;
    for (const std::string& name : profileNames())
        text += (text.empty() ? "" : ", ") + keyPathText(name);
    return text.empty() ? "none" : text;
}

}  // namespace Tool
