// SPDX-License-Identifier: MIT
#include "Settings/SettingsLayer.h"

#include <utility>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Notices.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/Differences.h"

namespace Tool {

SettingsLayer::SettingsLayer(std::string_view name, ProfileScope scope)
    : name_(name == "stored"    ? Name::Stored
            : name == "site"    ? Name::Site
            : name == "default" ? Name::Default
                                : Name::Effective),
      scope_(std::move(scope)) {}

// The preparation changes stored values in memory, such as those of another machine: it would hide
// what the file holds.
void SettingsLayer::open() const {
    if (hasStored()) openToRead();
    if (hasDefaults()) prepareToRead();
    if (hasStored()) scope_.noticeIfMissing();
}

PropertyListValue SettingsLayer::value(QRVKeyPath keyPath) const {
    if (name_ == Name::Stored) return scope_.stored(keyPath);
    if (name_ == Name::Site)
        return NSDictionaryQRV::objectAtKeyPath(QRVSettingsSiteDefaults().values, keyPath);
    if (name_ == Name::Default) return QRVSettingsDefaultForKeyPath(keyPath);
    return scope_.effective(keyPath);
}

NSDictionary SettingsLayer::flattened() const {
    NSMutableDictionary leaves;
    if (name_ == Name::Site)
        NSDictionaryQRV::flatten(QRVSettingsSiteDefaults().values, leaves);
    else if (hasDefaults())
        NSDictionaryQRV::flatten(QRVSettings::sharedSettings().defaults(), leaves);
    if (hasStored()) NSDictionaryQRV::flatten(scope_.storedTree(), leaves);
    return leaves;
}

// One layer may hold a leaf where another holds a dictionary, and a key with a "." looks like two
// keys: only a read decides.
NSDictionary SettingsLayer::leaves() const {
    NSMutableDictionary leaves;
    for (const auto& [keyPath, candidate] : flattened()) {
        const PropertyListValue answer = value(keyPath);
        if (!answer.isNull() && !answer.isDictionary()) leaves.setObjectForKey(answer, keyPath);
    }
    return leaves;
}

NSDictionary SettingsLayer::leavesAndEmptyDictionaries() const {
    if (name_ != Name::Stored) return leaves();
    NSMutableDictionary values;
    for (const Difference& leaf : differencesBetween(nullptr, scope_.storedTree())) {
        if (leaf.isReached)
            values.setObjectForKey(leaf.newValue, leaf.keyPath);
        else
            notice("no key path reaches this key, " + leaf.keyPath);
    }
    return values;
}

}  // namespace Tool
