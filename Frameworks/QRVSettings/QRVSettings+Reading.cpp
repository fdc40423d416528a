// SPDX-License-Identifier: MIT
// Reading the settings file, and the layers above it.
//
// A layered read, QRVSettingsObjectForKeyPath:
// 1. A null key path is null.
// 2. A cache entry answers, whatever has changed in the layers below; the null marker gives null.
// 3. A stored value answers, and is cached unless the cache is disabled.
// 4. The default answers, and is cached likewise, a missing one as the null marker.

#include <cstdint>
#include <optional>
#include <utility>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+StoredFile.h"
#include "QRVSettings/QRVSettings.h"

using NSDictionaryQRV::objectAtKeyPath;
using QRVInside::requireHostThread;
using QRVInside::storedTree;
using QRVInside::StoreInside;

namespace QRVInside {

FileReading readSettingsFile() {
    const StoreInside::State& state = StoreInside::state();
    FileReading reading;
    reading.identity = QRVPlatform::identityOfFileAtPath(state.location);
    NSFileCoordinator coordinator;
    coordinator.coordinateReadingItemAtURL(
        state.location, NSFileCoordinator::ReadingOptions::None,
        [&reading, &state](const std::string& url) {
            QRVPlatform::HeldFile held;
            if (state.mergesSaves) held = QRVPlatform::HeldFile::at(url);
            const QRVPlatform::FileContents file =
                QRVPlatform::contentsOfFile(url, NSPropertyListSerialization::maximumSize);
            reading.failed = file.error && !file.isMissing();
            reading.lackedMeans = QRVPlatform::FileFailures::isShortage(file.error);
            if (reading.lackedMeans)
                QRVPlatform::FileFailures::reported("read file", url, file.error);
            bool mayBeCutOff = false;
            if (!file.error) {
                const auto read = NSPropertyListSerialization::propertyListWithData(file.bytes);
                reading.root = read.value.dictionary();
                mayBeCutOff = read.mayBeCutOff;
            }
            const bool isWhole = file.isMissing() || (!reading.root.isNull() && !mayBeCutOff);
            if (isWhole && held.identity() == file.identity) reading.file = held;
        });
    return reading;
}

// What reads have cached as absent, and are to find now, has to be published.
NSDictionary storedTree() {
    NSDictionary tree = QRVSettings::sharedSettings().storageCache();
    if (!tree.isNull()) return tree;
    StoreInside::State& state = StoreInside::state();
    for (bool isRead = false; !isRead;) {
        const std::uint64_t version =
            state.storedFile.read([](const StoredFile& file) { return file.knownVersion; });
        const FileReading reading = readSettingsFile();
        state.storedFile.update([&](StoredFile& file) -> std::optional<KnownFile> {
            isRead = file.knownVersion == version;
            if (!isRead) return std::nullopt;  // What was read may be older.
            file.noteReading(reading.identity);
            file.mustBeBackedUp = reading.failed;
            if (file.wasAbsent && !reading.root.isNull() && state.monitorFileChanges)
                file.foundByReading = NSDictionaryQRV::changedKeys(nullptr, reading.root);
            file.wasAbsent = reading.root.isNull();
            file.unsaved.isTreeReplaced = false;
            tree = file.unsaved.onTopOf(reading.root);
            file.tree = tree.mutableCopy();
            return state.mergesSaves ? file.know({reading.root, reading.file}) : std::nullopt;
        });
    }
    return tree;
}

void replaceStoredTree(NSDictionary tree) {
    StoreInside::state().storedFile.update(
        [&tree](StoredFile& file) { return std::exchange(file.tree, std::move(tree)); });
}

}  // namespace QRVInside

NSDictionary QRVSettingsStorage() {
    const QRVInside::FileReading reading = QRVInside::readSettingsFile();
    StoreInside::state().storedFile.update(
        [&](QRVInside::StoredFile& file) { file.noteReading(reading.identity); });
    return reading.root;
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

void cacheUnlessDisabled(const PropertyListValue& value, QRVKeyPath keyPath) {
    const QRVSettings& store = QRVSettings::sharedSettings();
    if (!store.disableCache()) store.cache().setObjectForKey(value, keyPath.text());
}

// The entry of the cache; null when there is none.
PropertyListValue cachedObject(QRVKeyPath keyPath) {
    return StoreInside::state().cache.read(
        [keyPath](const NSDictionary& cache) { return cache.objectForKey(keyPath.text()); });
}

// Not inlined, so that a read that the cache answers is short.
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

PropertyListValue QRVSettingsObjectForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return nullptr;  // 1

    PropertyListValue cached = cachedObject(keyPath);
    if (cached.isNull()) return objectBelowTheCache(keyPath);
    if (cached.isNullMarker()) cached = nullptr;  // 2
    return cached;
}

bool QRVSettingsBoolForKeyPath(QRVKeyPath keyPath) {
    return QRVSettingsObjectForKeyPath(keyPath).boolValue();
}
