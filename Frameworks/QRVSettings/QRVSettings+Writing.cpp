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

#include "QRVSettings/HashedKeyPath.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+Cache.h"
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
using QRVInside::HashedKeyPath;
using QRVInside::requireHostThread;
using QRVInside::StoreInside;
using QRVPlatform::HashedKey;

namespace {

bool isEmptyDictionary(const PropertyListValue& value) {
    return value.isDictionary() && value.dictionary().count() == 0;
}

// Its key path comes with the cache entry, whose key it shares.
ChangeRecord changeRecord(QRVKeyPath keyPath) {
    if (keyPath.isNull()) throw NSInvalidArgumentException("the key path of a write is null");
    return {nullptr, NSDate::now().timeIntervalSince1970()};
}

// Whether `value` is the default at the key path, which most often is that of the write.
bool isDefault(const PropertyListValue& value, QRVKeyPath keyPath, const HashedKeyPath& written) {
    if (keyPath.isNull()) return false;
    const NSMutableDictionary& defaults = StoreInside::state().defaults;
    const PropertyListValue* const byDefault =
        keyPath.text() == written.text()
            ? valueOfTheWriter(defaults, written)
            : valueOfTheWriter(defaults, HashedKeyPath(keyPath.text()));                   // 2
    return byDefault != nullptr && byDefault->isSameKindAs(value) && *byDefault == value;  // 3
}

void writeUnlocked(const PropertyListValue& value, QRVKeyPath keyPath, QRVKeyPath keyPathOfDefault,
                   bool isOfEmpty) {
    static constexpr PropertyListValue none;
    NSMutableDictionary working = QRVInside::storedTree().mutableCopy();  // 1
    if (working.isNull()) working = NSMutableDictionary();

    const HashedKeyPath hashed(keyPath.text());
    const PropertyListValue& stored = isDefault(value, keyPathOfDefault, hashed) ? none : value;
    ChangeRecord record = changeRecord(keyPath);              // 4
    QRVInside::setValueOfTheWriter(working, stored, hashed);  // 5
    QRVInside::replaceStoredTree(working);                    // 6
    const StoreInside::State& state = StoreInside::state();
    record.keyPath = QRVInside::cacheWritten(state, value, HashedKey::of(keyPath.text()));  // 7
    if (state.mergesSaves)                                                                  // 8
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
