// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+Locks.h"

#include <utility>

#include "QRVSettings/QRVKnownSettings.h"
#include "QRVSettings/StoreKeyPaths.h"

namespace QRVInside {

namespace {

constexpr std::string_view profilesKey = "Profiles";
constexpr std::string_view settingsKey = "Settings";
static_assert(QRVStoreKeyPaths::profiles == "Profiles.Settings");

/// Takes the first key off a key path that is not empty; `isLast` when no other follows.
std::string_view takeKey(std::string_view& rest, bool& isLast) {
    const std::size_t end = rest.find('.');
    isLast = end == std::string_view::npos;
    const std::string_view key = rest.substr(0, end);
    rest.remove_prefix(isLast ? rest.size() : end + 1);
    return key;
}

void addKeys(std::set<std::string>& keys, const NSDictionary& dictionary) {
    for (const auto& [key, value] : dictionary) keys.emplace(key);
}

/// The default of what is at `key` of a place.
PropertyListValue defaultBelow(const Locks::Place& place, const PropertyListValue& byDefault,
                               const NSDictionary& defaults, const std::string& key) {
    return place.holdsProfiles() ? PropertyListValue(defaults)
                                 : byDefault.dictionary().objectForKey(key);
}

std::string joined(const std::string& keyPath, const std::string& key) {
    return keyPath.empty() ? key : keyPath + "." + key;
}

}  // namespace

std::string_view keyPathOfDefault(std::string_view keyPath) {
    constexpr std::string_view profiles = QRVStoreKeyPaths::profiles;
    if (keyPath == profiles || keyPath == profilesKey) return "";
    const std::string_view plain = QRVPlainKeyPath(keyPath);
    const bool isWholeProfile = plain.size() == keyPath.size() && keyPath.starts_with(profiles) &&
                                keyPath[profiles.size()] == '.';
    return isWholeProfile ? "" : plain;
}

void Locks::add(std::string_view keyPath, const std::string& file) {
    Level* level = &root_;
    for (bool isLast = false; !isLast;) {
        const std::string_view key = takeKey(keyPath, isLast);
        level = &level->levels.try_emplace(std::string(key)).first->second;
        if (!level->file.empty()) return;
    }
    level->file = file;
    level->levels.clear();
}

Locks::Place Locks::root() const {
    return {areNone() ? Place::Kind::Free : Place::Kind::Root, this, &root_};
}

Locks::Place Locks::at(std::string_view keyPath) const {
    Place place = root();
    for (bool isLast = false; !isLast && !place.isFree() && !place.isLocked();)
        place = place.at(takeKey(keyPath, isLast));
    return place;
}

const std::string& Locks::Place::file() const {
    static const std::string& none = *new std::string;
    return kind_ == Kind::Level ? level_->file : none;
}

const std::string& Locks::Place::fileBelow() const {
    const Level* level = level_;
    while (level->file.empty()) level = &level->levels.begin()->second;
    return level->file;
}

Locks::Place Locks::Place::at(std::string_view key) const {
    if (isFree() || isLocked()) return *this;
    if (kind_ == Kind::Root && key == profilesKey) return {Kind::Profiles, locks_, level_};
    if (kind_ == Kind::Profiles)
        return {key == settingsKey ? Kind::ProfileNames : Kind::Free, locks_, level_};
    if (kind_ == Kind::ProfileNames) return {Kind::Level, locks_, &locks_->root_};
    const auto found = level_->levels.find(key);
    if (found == level_->levels.end()) return {Kind::Free, locks_, level_};
    return {Kind::Level, locks_, &found->second};
}

std::set<std::string> Locks::Place::keys(const NSDictionary& one, const NSDictionary& other) const {
    std::set<std::string> keys;
    if (kind_ == Kind::Root) keys.emplace(profilesKey);
    if (kind_ == Kind::Profiles) keys.emplace(settingsKey);
    if (kind_ == Kind::ProfileNames) {
        addKeys(keys, one);
        addKeys(keys, other);
    }
    if (kind_ == Kind::Root || kind_ == Kind::Level)
        for (const auto& [key, level] : level_->levels) keys.insert(key);
    return keys;
}

PropertyListValue lockedView(const Locks::Place& place, const PropertyListValue& value,
                             const PropertyListValue& byDefault, const NSDictionary& defaults) {
    if (place.isFree()) return value;
    if (place.isLocked()) return byDefault;
    const NSDictionary old = value.dictionary();
    const NSMutableDictionary result = old.isNull() ? NSMutableDictionary() : old.mutableCopy();
    for (const std::string& key : place.keys(old, nullptr))
        result.setObjectForKey(lockedView(place.at(key), old.objectForKey(key),
                                          defaultBelow(place, byDefault, defaults, key), defaults),
                               key);
    if (old.isNull() && result.count() == 0) return value;
    return result.copy();
}

std::optional<PropertyListValue> LockedWrite::permitted(const Locks::Place& place,
                                                        const NSDictionary& defaults,
                                                        const Refusal& refuse) const {
    if (place.isFree()) return written;
    if (place.isLocked() || (!written.isNull() && !written.isDictionary())) {
        if (written != stored && written != byDefault) refuse(keyPath, place.fileBelow());
        return std::nullopt;
    }
    const NSDictionary old = stored.dictionary();
    const NSDictionary wanted = written.dictionary();
    const NSMutableDictionary result =
        wanted.isNull() ? NSMutableDictionary() : wanted.mutableCopy();
    bool isAsWritten = true;
    for (const std::string& key : place.keys(old, wanted)) {
        const LockedWrite below{old.objectForKey(key), wanted.objectForKey(key),
                                defaultBelow(place, byDefault, defaults, key),
                                joined(keyPath, key)};
        PropertyListValue value =
            below.permitted(place.at(key), defaults, refuse).value_or(below.stored);
        if (value.isIdenticalTo(below.written)) continue;
        isAsWritten = false;
        result.setObjectForKey(std::move(value), key);
    }
    if (isAsWritten || (wanted.isNull() && result.count() == 0)) return written;
    return result.copy();
}

}  // namespace QRVInside
