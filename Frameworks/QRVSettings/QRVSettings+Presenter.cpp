// SPDX-License-Identifier: MIT
// Changes by other processes: from the notification to the change handler, in three places that
// hand over to each other and never wait.
//
// presenterQueue:
// 1. Without a wish to monitor, or with the modification date seen last, nothing happens.
// readQueue:
// 2. The file is read afresh and compared with the stored tree.
// 3. Key paths of this process's own recent saves are taken out of the changes.
// Main queue:
// 4. What was compared is out of date when this process is about to save, has saved meanwhile, or
// has another stored tree by now: then 2 is done again, after the saves. Otherwise the stored tree
// could end as one that the file no longer holds, with no further notification to mend it.
// 5. Without changes nothing happens: the stored tree and the cache stay as they are.
// 6. The new tree becomes the stored one, and the cache is emptied.
// 7. The change handler is called.
//
// Nobody is notified of what happened before the watch began: a file that has changed between the
// first reading and then goes the same way from 2 on.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/System/System.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+PendingSaves.h"
#include "QRVSettings/QRVSettings+StoredTree.h"
#include "QRVSettings/QRVSettings+Watching.h"
#include "QRVSettings/QRVSettings.h"

namespace {

NSArray withoutLocalChanges(const NSArray& changes, const NSArray& localChanges) {
    std::unordered_set<std::string> saved;
    for (const PropertyListValue& record : localChanges) {
        const PropertyListValue key = record.dictionary().objectForKey("key");
        if (key.isString()) saved.insert(key.stringValue());
    }
    NSMutableArray others;
    for (const PropertyListValue& keyPath : changes)
        if (!saved.contains(keyPath.stringValue())) others.addObject(keyPath);
    return others.copy();
}

struct Reading {
    NSDictionary before;  ///< the stored tree itself
    NSDictionary after;
    NSArray changes;
    std::uint64_t endedSaves;  ///< when the reading began
};

void queueReload(QRVSettings& store);

/// False when the reading is out of date, and another one is on its way.
bool isUpToDate(const Reading& reading, QRVSettings& store) {
    if (isSavePending()) {
        store.queue().async([&store] { queueReload(store); });
        return false;
    }
    const bool isCurrent = reading.endedSaves == countOfEndedSaves() &&
                           reading.before.isIdenticalTo(store.storageCache());
    if (!isCurrent) queueReload(store);
    return isCurrent;
}

void publish(const Reading& reading, QRVSettings& store) {
    if (!isUpToDate(reading, store)) return;   // 4
    if (reading.changes.count() == 0) return;  // 5
    NSLog("Prefs file changed");
    store.setStorageCache(reading.after.mutableCopy());  // 6
    store.cache().removeAllObjects();
    // A copy: the handler may install another one.
    const QRVSettings::ChangeHandler onChange = store.onChange();
    if (onChange) onChange(reading.changes);  // 7
}

void reload(QRVSettings& store) {
    const std::uint64_t endedSaves = countOfEndedSaves();
    Reading reading{store.storageCache(), QRVSettingsStorage().copy(), nullptr, endedSaves};  // 2
    reading.changes =
        withoutLocalChanges(NSDictionaryQRV::changedKeys(reading.before.copy(), reading.after),
                            store.localChanges());  // 3
    DispatchMainQueue::shared().async([&store, reading] { publish(reading, store); });
}

void queueReload(QRVSettings& store) {
    QRVSettings::sharedSettings().readQueue().async([&store] { reload(store); });
}

}  // namespace

void beginToWatchTheFile() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setPresenterQueue(std::make_shared<NSOperationQueue>());
    NSFileCoordinator::addFilePresenter(store);
    const std::optional<QRVPlatform::FileIdentity> known = fileOfTheStoredTree();
    if (!known || QRVPlatform::identityOfFileAtPath(store.location()) == *known) return;
    // It may have been this process, whose saves are through when this comes to run.
    store.queue().async([&store] {
        if (!isLastSave(QRVPlatform::identityOfFileAtPath(store.location()))) queueReload(store);
    });
}

std::string QRVSettings::presentedItemURL() const {
    return sharedSettings().location();
}

std::shared_ptr<NSOperationQueue> QRVSettings::presentedItemOperationQueue() const {
    return presenterQueue();
}

bool QRVSettings::fileContentsDidChange() {
    // Of two changes that had the same date, the second would never be seen.
    const auto attributes = QRVPlatform::settledAttributesOfItemAtPath(location());
    const std::optional<NSDate> known = modificationDate();
    if (attributes && known && *known == attributes->modificationDate) return false;
    setModificationDate(attributes ? std::optional(attributes->modificationDate) : std::nullopt);
    return true;
}

void QRVSettings::presentedItemDidChange() {
    if (!monitorFileChanges() || !fileContentsDidChange()) return;  // 1
    queueReload(*this);
}
