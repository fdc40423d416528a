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
// 4. Without changes nothing happens: the stored tree and the cache stay as they are.
// 5. The new tree becomes the stored one, and the cache is emptied.
// 6. The change handler is called.

#include <string>
#include <unordered_set>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Files/Files.h"
#include "Platform/System/System.h"
#include "QRVSettings/NSDictionary+QRV.h"
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

void publish(QRVSettings& store, const NSArray& changes, const NSDictionary& tree) {
    if (changes.count() == 0) return;  // 4
    NSLog("Prefs file changed");
    store.setStorageCache(tree.mutableCopy());  // 5
    store.cache().removeAllObjects();
    // A copy: the handler may install another one.
    const QRVSettings::ChangeHandler onChange = store.onChange();
    if (onChange) onChange(changes);  // 6
}

void reload(QRVSettings& store) {
    const NSDictionary before = store.storageCache().copy();
    const NSDictionary after = QRVSettingsStorage().copy();  // 2
    const NSArray changes = withoutLocalChanges(NSDictionaryQRV::changedKeys(before, after),
                                                store.localChanges());  // 3
    DispatchMainQueue::shared().async([&store, changes, after] { publish(store, changes, after); });
}

}  // namespace

std::string QRVSettings::presentedItemURL() const {
    return sharedSettings().location();
}

std::shared_ptr<NSOperationQueue> QRVSettings::presentedItemOperationQueue() const {
    return presenterQueue();
}

bool QRVSettings::fileContentsDidChange() {
    // Of two changes that had the same date, the second would never be seen.
    const auto attributes = settledAttributesOfItemAtPath(location());
    const std::optional<NSDate> known = modificationDate();
    if (attributes && known && *known == attributes->modificationDate) return false;
    setModificationDate(attributes ? std::optional(attributes->modificationDate) : std::nullopt);
    return true;
}

void QRVSettings::presentedItemDidChange() {
    if (!monitorFileChanges() || !fileContentsDidChange()) return;  // 1
    sharedSettings().readQueue().async([this] { reload(*this); });
}
