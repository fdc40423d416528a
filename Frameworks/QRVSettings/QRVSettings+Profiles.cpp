// SPDX-License-Identifier: MIT
// Settings of the active profile: stored and cached below "Profiles.Settings", with the defaults of
// the plain key paths.
//
// A read, QRVSettingsProfileObjectForKeyPath, P being the profile key path:
// 1. A null key path is null. What the site has locked has its default.
// 2. A cache entry under P answers; the null marker gives null.
// 3. A value stored at P answers; a value stored at the plain key path never does.
// 4. The default of the plain key path answers, else null.
// The result of 3 and 4 is cached under P, null as the null marker, even when the cache is
// disabled.

#include <string>
#include <string_view>

#include "QRVSettings/QRVSettings+Cache.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+WriteSetting.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"

using QRVInside::cachedValue;
using QRVInside::cacheValue;
using QRVInside::lockedView;
using QRVInside::Locks;
using QRVInside::requireHostThread;
using QRVInside::StoreInside;
using QRVInside::valueOfEntry;
using QRVPlatform::HashedKey;

namespace {

constexpr std::string_view nullText = "(null)";

PropertyListValue unlockedObject(QRVKeyPath keyPath) {
    const StoreInside::State& state = StoreInside::state();
    const std::string profileKeyPath = QRVSettingsProfileKeyForKey(keyPath);
    const HashedKey key = HashedKey::of(profileKeyPath);

    const PropertyListValue* const cached = cachedValue(state, key);
    if (cached != nullptr) return valueOfEntry(*cached);  // 2

    PropertyListValue value = QRVSettingsStoredObjectForKeyPath(profileKeyPath);  // 3
    if (value.isNull()) value = QRVSettingsDefaultForKeyPath(keyPath);            // 4
    cacheValue(state, value, key);
    return value;
}

}  // namespace

std::string QRVSettingsProfileKeyForKey(QRVKeyPath keyPath) {
    requireHostThread();
    std::string profileKeyPath(QRVStoreKeyPaths::profiles);
    profileKeyPath += '.';
    profileKeyPath += QRVSettings::sharedSettings().activeProfile().value_or(std::string(nullText));
    profileKeyPath += '.';
    profileKeyPath += keyPath.isNull() ? nullText : keyPath.text();
    return profileKeyPath;
}

PropertyListValue QRVSettingsProfileObjectForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return nullptr;  // 1
    const Locks* const locks = StoreInside::state().locks;
    if (locks == nullptr) return unlockedObject(keyPath);
    PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(keyPath);
    const Locks::Place place = locks->at(keyPath.text());
    if (place.isLocked()) return byDefault;
    return lockedView(place, unlockedObject(keyPath), byDefault,
                      QRVSettings::sharedSettings().defaults());
}

void QRVSettingsProfileSetObjectForKeyPathWithCache(const PropertyListValue& value,
                                                    QRVKeyPath keyPath, bool /*withCache*/) {
    QRVInside::writeSetting(value, QRVSettingsProfileKeyForKey(keyPath), keyPath);
}

void QRVSettingsProfileSetObjectForKeyPath(const PropertyListValue& value, QRVKeyPath keyPath) {
    QRVSettingsProfileSetObjectForKeyPathWithCache(value, keyPath, false);
}

void QRVSettingsProfileClearCacheForKeyPath(QRVKeyPath keyPath) {
    QRVSettingsClearCacheForKeyPath(QRVSettingsProfileKeyForKey(keyPath));
}
