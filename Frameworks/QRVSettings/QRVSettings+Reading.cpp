// SPDX-License-Identifier: MIT
// Reading: the settings file and the layers above it.
//
// A layered read, QRVSettingsObjectForKeyPath:
// 1. A null key path is null.
// 2. An entry of the cache answers, the null marker with null, whatever has changed below since.
// 3. A stored value answers, and is cached unless the cache is disabled.
// 4. The default answers, and is cached likewise; where there is none, the null marker is.

#include <atomic>
#include <optional>

#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+StoredTree.h"
#include "QRVSettings/QRVSettings.h"

using NSDictionaryQRV::objectAtKeyPath;

namespace {

void cacheUnlessDisabled(const PropertyListValue& value, QRVKeyPath keyPath) {
    const QRVSettings& store = QRVSettings::sharedSettings();
    if (!store.disableCache()) store.cache().setObjectForKey(value, keyPath.text());
}

}  // namespace

namespace {

struct StorageReading {
    NSDictionary root = nullptr;
    bool failed = false;  ///< there is a file, and what it holds is not known
};

StorageReading readStorage() {
    StorageReading reading;
    NSFileCoordinator coordinator;
    coordinator.coordinateReadingItemAtURL(
        QRVSettings::sharedSettings().location(), NSFileCoordinator::ReadingOptions::None,
        [&reading](const std::string& url) {
            const QRVPlatform::FileContents file =
                QRVPlatform::contentsOfFile(url, NSPropertyListSerialization::maximumSize);
            reading.failed = file.error && !file.isMissing();
            if (file.error) return;
            reading.root =
                NSPropertyListSerialization::propertyListWithData(file.bytes).value.dictionary();
        });
    return reading;
}

std::atomic<bool> hasBegunWithoutTheFile = false;

std::optional<QRVPlatform::FileIdentity> fileBeforeTheReading;  // used on the host's thread only

}  // namespace

NSDictionary QRVSettingsStorage() {
    return readStorage().root;
}

NSDictionary storedTree() {
    QRVSettings& store = QRVSettings::sharedSettings();
    NSDictionary loaded = store.storageCache();
    if (!loaded.isNull()) return loaded;
    fileBeforeTheReading = QRVPlatform::identityOfFileAtPath(store.location());
    const StorageReading read = readStorage();
    hasBegunWithoutTheFile = read.failed;
    store.setStorageCache(read.root.mutableCopy());
    return read.root;
}

std::optional<QRVPlatform::FileIdentity> fileOfTheStoredTree() {
    return fileBeforeTheReading;
}

bool storedTreeLacksTheFile() {
    return hasBegunWithoutTheFile;
}

void storedTreeNeedNotHaveTheFile() {
    hasBegunWithoutTheFile = false;
}

NSDictionary QRVSettingsStoredValues() {
    requireHostThread();
    return storedTree().copy();
}

PropertyListValue QRVSettingsStoredObjectForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return nullptr;
    return objectAtKeyPath(storedTree(), keyPath);
}

PropertyListValue QRVSettingsDefaultForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    return objectAtKeyPath(QRVSettings::sharedSettings().defaults(), keyPath);
}

namespace {

// Apart from the look into the cache, so that a read that is answered there is short.
[[gnu::noinline]] PropertyListValue objectBelowTheCache(QRVKeyPath keyPath) {
    PropertyListValue stored = objectAtKeyPath(storedTree(), keyPath);
    if (!stored.isNull()) {  // 3
        cacheUnlessDisabled(stored, keyPath);
        return stored;
    }

    PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(keyPath);  // 4
    cacheUnlessDisabled(byDefault.isNull() ? PropertyListValue(NSNull{}) : byDefault, keyPath);
    return byDefault;
}

}  // namespace

struct LayeredReading {
    /// The entry of the cache; null when there is none.
    static PropertyListValue cachedObject(QRVKeyPath keyPath) {
        return QRVSettings::sharedSettings().state_->cache.read(
            [keyPath](const NSDictionary& cache) { return cache.objectForKey(keyPath.text()); });
    }
};

PropertyListValue QRVSettingsObjectForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return nullptr;  // 1

    PropertyListValue cached = LayeredReading::cachedObject(keyPath);
    if (cached.isNull()) return objectBelowTheCache(keyPath);
    if (cached.isNullMarker()) cached = nullptr;  // 2
    return cached;
}

bool QRVSettingsBoolForKeyPath(QRVKeyPath keyPath) {
    return QRVSettingsObjectForKeyPath(keyPath).boolValue();
}
