// SPDX-License-Identifier: MIT
// Writing a setting.
//
// A write, plain or into a profile, on the caller's thread, after what the site has locked is taken
// out of it:
// 1. The working tree is a copy of the stored tree, which is read from the file when there is none.
// 2. The default of the key path is looked up.
// 3. A value that is of the default's kind and equal to it is not stored.
// 4. The change record is created.
// 5. The value is stored in the working tree.
// 6. The working tree becomes the stored tree; nobody else has it.
// 7. The value is cached as it was passed, also when it is not stored.
// 8. The save is queued with the tree and the record, which becomes a dictionary on the store's
// queue; in a batch it does so at once.

#include <string>
#include <utility>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+ChangeRecord.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Merging.h"
#include "QRVSettings/QRVSettings+Saving.h"
#include "QRVSettings/QRVSettings+Site.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+StoredFile.h"
#include "QRVSettings/QRVSettings+WriteSetting.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::ChangeRecord;
using QRVInside::requireHostThread;

namespace {

bool isEmptyDictionary(const PropertyListValue& value) {
    return value.isDictionary() && value.dictionary().count() == 0;
}

ChangeRecord changeRecord(QRVKeyPath keyPath) {
    if (keyPath.isNull()) throw NSInvalidArgumentException("the key path of a write is null");
    return {keyPath.text(), NSDate::now().timeIntervalSince1970()};
}

void writeUnlocked(const PropertyListValue& value, QRVKeyPath keyPath, QRVKeyPath keyPathOfDefault,
                   bool isOfEmpty) {
    const QRVSettings& store = QRVSettings::sharedSettings();
    NSMutableDictionary working = QRVInside::storedTree().mutableCopy();  // 1
    if (working.isNull()) working = NSMutableDictionary();

    const PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(keyPathOfDefault);  // 2
    const bool isDefault = byDefault.isSameKindAs(value) && byDefault == value;          // 3
    const PropertyListValue stored = isDefault ? nullptr : value;
    ChangeRecord record = changeRecord(keyPath);                    // 4
    NSDictionaryQRV::setObjectAtKeyPath(working, stored, keyPath);  // 5
    QRVInside::replaceStoredTree(working);                          // 6
    store.cache().setObjectForKey(value, keyPath.text());           // 7
    if (QRVInside::StoreInside::state().mergesSaves)                // 8
        QRVInside::queueMergingSaveOfWrite(working, std::move(record), stored, isOfEmpty);
    else
        QRVInside::saveTreeOfWrite(working.copy(), std::move(record));
}

}  // namespace

void QRVInside::writeSetting(const PropertyListValue& value, QRVKeyPath keyPath,
                             QRVKeyPath keyPathOfDefault, bool isOfEmpty) {
    requireHostThread();
    if (StoreInside::state().locks == nullptr || StoreInside::state().unless)
        return writeUnlocked(value, keyPath, keyPathOfDefault, isOfEmpty);
    const auto permitted = permittedWrite(value, keyPath, keyPathOfDefault, isOfEmpty);
    if (permitted) writeUnlocked(*permitted, keyPath, keyPathOfDefault, isOfEmpty);
}

void QRVSettingsSetObjectForKeyPathWithCache(const PropertyListValue& value, QRVKeyPath keyPath,
                                             bool /*withCache*/) {
    QRVInside::writeSetting(value, keyPath, keyPath);
}

void QRVSettingsSetObjectForKeyPath(const PropertyListValue& value, QRVKeyPath keyPath) {
    QRVSettingsSetObjectForKeyPathWithCache(value, keyPath, false);
}

void QRVSettingsRemoveEmptyLevelsAbove(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return;
    std::string level(keyPath.text());
    for (std::size_t end = level.rfind('.'); end != level.npos; end = level.rfind('.')) {
        level.resize(end);
        if (!isEmptyDictionary(NSDictionaryQRV::objectAtKeyPath(QRVInside::storedTree(), level)))
            return;
        QRVInside::writeSetting(nullptr, level, level, true);
    }
}

void QRVSettingsClearCacheForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return;
    QRVSettings::sharedSettings().cache().removeObjectForKey(keyPath.text());
}
