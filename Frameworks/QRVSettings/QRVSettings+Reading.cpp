// SPDX-License-Identifier: MIT
// Reading the settings file, and the layers above it.
//
// A layered read, QRVSettingsObjectForKeyPath:
// 1. A null key path is null.
// 2. The default of a key path that the site has locked answers, and in a dictionary above one it
// has its place.
// 3. A cache entry answers, whatever has changed in the layers below; the null marker gives null.
// 4. A stored value answers, and is cached unless the cache is disabled.
// 5. The default answers, and is cached likewise, a missing one as the null marker.

#include <cstdint>
#include <optional>
#include <utility>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/Files/TransientContents.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/HashedKeyPath.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+Cache.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+StoredFile.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::cachedValue;
using QRVInside::cacheValue;
using QRVInside::HashedKeyPath;
using QRVInside::lockedValue;
using QRVInside::lockedView;
using QRVInside::requireHostThread;
using QRVInside::storedTree;
using QRVInside::StoreInside;
using QRVInside::valueOfEntry;
using QRVInside::valueOfTheWriter;
using QRVInside::valueOrNull;
using QRVPlatform::HashedKey;

namespace QRVInside {

FileReading readSettingsFile(const NSDictionary& likely) {
    StoreInside::State& state = StoreInside::state();
    FileReading reading;
    reading.identity = QRVPlatform::identityOfFileAtPath(state.location);
    NSFileCoordinator coordinator;
    coordinator.coordinateReadingItemAtURL(
        state.location, NSFileCoordinator::ReadingOptions::None,
        [&reading, &state, &likely](const std::string& url) {
            QRVPlatform::HeldFile held;
            if (state.mergesSaves) held = QRVPlatform::HeldFile::at(url);
            auto contents = QRVPlatform::TransientContents::ofFile(
                url, NSPropertyListSerialization::maximumSize);
            const QRVPlatform::FileContents& file = contents.file();
            reading.failed = file.error && !file.isMissing();
            reading.lackedMeans = QRVPlatform::FileFailures::isShortage(file.error);
            if (reading.lackedMeans)
                QRVPlatform::FileFailures::reported("read file", url, file.error);
            bool mayBeCutOff = false;
            if (file.isMissing()) state.knownText.forget();
            if (!file.error) {
                auto [read, forgotten] = state.knownText.read(
                    contents.bytes(), url, likely,
                    [&contents](const char* place) { contents.giveBackBefore(place); });
                reading.forgotten = std::move(forgotten);
                reading.root = read.value.dictionary();
                mayBeCutOff = read.mayBeCutOff;
            }
            const bool isWhole = file.isMissing() || (!reading.root.isNull() && !mayBeCutOff);
            if (isWhole && held.identity() == file.identity) reading.file = held;
        });
    return reading;
}

namespace {

struct TreeOfFile {
    std::uint64_t version = 0;  ///< of what was known of the file before it was read
    FileReading reading;
    NSDictionary tree = nullptr;       ///< with what is unsaved on top
    NSArray foundByReading = nullptr;  ///< everything that was read, if there was nothing before
};

// The lock of the state is not held meanwhile.
TreeOfFile treeOfFile() {
    TreeOfFile result;
    UnsavedWrites unsaved;
    bool wasAbsent = false;
    StoreInside::state().storedFile.read([&](const StoredFile& file) {
        result.version = file.knownVersion;
        unsaved = file.unsaved;
        wasAbsent = file.wasAbsent;
    });
    result.reading = readSettingsFile();
    const NSDictionary& root = result.reading.root;
    result.tree = unsaved.onTopOf(root);
    if (wasAbsent && !root.isNull())
        result.foundByReading = NSDictionaryQRV::changedKeys(nullptr, root);
    return result;
}

// False when a save or a reload has ended since the file was read: what was read may be older. What
// reads have cached as absent, and are to find now, has to be published.
bool becomesStoredTree(const TreeOfFile& found) {
    StoreInside::State& state = StoreInside::state();
    const FileReading& reading = found.reading;
    bool isCurrent = false;
    state.storedFile.update([&](StoredFile& file) -> std::optional<KnownFile> {
        isCurrent = file.knownVersion == found.version;
        if (!isCurrent) return std::nullopt;
        file.noteReading(reading.identity);
        file.mustBeBackedUp = reading.failed;
        if (!found.foundByReading.isNull() && state.monitorFileChanges)
            file.foundByReading = found.foundByReading;
        file.wasAbsent = reading.root.isNull();
        file.unsaved.isTreeReplaced = false;
        file.tree = found.tree.mutableCopy();
        return state.mergesSaves ? file.know({reading.root, reading.file}) : std::nullopt;
    });
    return isCurrent;
}

}  // namespace

const NSDictionary& storedTree() {
    const NSDictionary& tree = StoreInside::state().storedFile.ofItsWriter().tree;
    if (tree.isNull())
        while (!becomesStoredTree(treeOfFile())) continue;
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
    return valueOrNull(valueOfTheWriter(storedTree(), HashedKeyPath(keyPath.text())));
}

PropertyListValue QRVSettingsDefaultForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return nullptr;
    return valueOrNull(
        valueOfTheWriter(StoreInside::state().defaults, HashedKeyPath(keyPath.text())));
}

namespace {

// Not inlined, and given the parts of the key, so that a read that the cache answers is short and
// keeps its key in registers.
[[gnu::noinline]] PropertyListValue objectBelowTheCache(std::string_view text, std::uint32_t hash) {
    const HashedKeyPath keyPath(text);
    const PropertyListValue* found = valueOfTheWriter(storedTree(), keyPath);  // 4
    const StoreInside::State& state = StoreInside::state();
    if (found == nullptr) found = valueOfTheWriter(state.defaults, keyPath);  // 5
    PropertyListValue value = valueOrNull(found);
    if (!state.disableCache) cacheValue(state, value, {text.data(), text.size(), hash});
    return value;
}

// Not inlined for the same reason. It alone looks for locks.
[[gnu::noinline]] PropertyListValue objectWithLocks(const StoreInside::State& state,
                                                    std::string_view keyPath) {
    if (state.locks->at(keyPath).isLocked()) return lockedValue(keyPath);  // 2
    const HashedKey key = HashedKey::of(keyPath);
    const PropertyListValue* const cached = cachedValue(state, key);
    if (cached == nullptr) return lockedView(keyPath, objectBelowTheCache(keyPath, key.hash));
    return lockedView(keyPath, valueOfEntry(*cached));  // 3
}

}  // namespace

PropertyListValue QRVSettingsObjectForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return nullptr;  // 1
    const StoreInside::State& state = StoreInside::state();
    if (state.locks != nullptr) return objectWithLocks(state, keyPath.text());
    const HashedKey key = HashedKey::of(keyPath.text());
    const PropertyListValue* const cached = cachedValue(state, key);
    if (cached == nullptr) return objectBelowTheCache(keyPath.text(), key.hash);
    return valueOfEntry(*cached);  // 3
}

// The same, with the entry read in place.
bool QRVSettingsBoolForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return false;
    const StoreInside::State& state = StoreInside::state();
    if (state.locks != nullptr) return objectWithLocks(state, keyPath.text()).boolValue();
    const HashedKey key = HashedKey::of(keyPath.text());
    const PropertyListValue* const cached = cachedValue(state, key);
    if (cached == nullptr) return objectBelowTheCache(keyPath.text(), key.hash).boolValue();
    return cached->boolValue();
}
