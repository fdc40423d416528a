// SPDX-License-Identifier: MIT
// Writing a setting, and saving the settings file.
//
// A write, plain or into a profile, on the caller's thread:
// 1. The working tree is a copy of the stored tree, which is read from the file when there is none.
// 2. The default of the key path is looked up.
// 3. A value that is of the default's kind and equal to it is not stored.
// 4. The change record is created.
// 5. The value is stored in the working tree.
// 6. The working tree becomes the stored tree; nobody else has it.
// 7. The value is cached as it was passed, also when it is not stored.
// 8. The save is queued with the tree and the record.
//
// A save, on the store's queue:
// 1. The tree is serialised.
// 2. The old file is backed up when its bytes would be lost.
// 3. The records are posted to the main queue, so that no notification of the new file overtakes
// them.
// 4. The file is replaced.
//
// All copies are shallow: a nested dictionary that a write made mutable is shared by the trees of
// several queued saves, and a save that runs after a later write may contain that write's change.

#include <array>
#include <string>

#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "Platform/Values/ImmutableContainers.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Log.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings+StoredFile.h"
#include "QRVSettings/QRVSettings+WriteSetting.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::requireHostThread;
using QRVInside::StoredFile;
using QRVInside::StoreInside;

namespace {

enum class SaveMessageLine : int {
    MissingValue = 88,
    SerialisationError = 115,
    ExceptionRaised = 119,
    ObjectOfException = 120,
};

void logSaveMessage(SaveMessageLine line, const char* format,
                    std::vector<PropertyListValue> arguments) {
    QRVInside::logMessage("QRVSettingsSaveObjectWithLog_block_invoke", static_cast<int>(line),
                          format, std::move(arguments));
}

void forgetThatTheFileMustBeBackedUp() {
    StoreInside::state().storedFile.update([](StoredFile& file) { file.mustBeBackedUp = false; });
}

bool backUp(const std::string& url, const char* reason) {
    const QRVPlatform::FileBackup backup = QRVPlatform::backUpFile(url);
    if (backup.error) {
        NSLog("Prefs file not saved, the old one %@ and cannot be backed up: %@, %@",
              {reason, backup.error.message(), url});
        return false;
    }
    NSLog("Prefs file %@, it is backed up as %@", {reason, backup.path});
    forgetThatTheFileMustBeBackedUp();
    return true;
}

// Null when the file need not be backed up before it is replaced.
const char* reasonToBackUp(const QRVPlatform::FileContents& file) {
    if (!file.error && file.bytes.empty()) return nullptr;
    const bool isSettings =
        !file.error &&
        NSPropertyListSerialization::propertyListWithData(file.bytes).value.isDictionary();
    if (!isSettings) return "was damaged";
    const bool isUnknown = StoreInside::state().storedFile.read(
        [](const StoredFile& stored) { return stored.mustBeBackedUp; });
    return isUnknown ? "could not be read before" : nullptr;
}

// Backs up the old file when its bytes would be lost. False when it must not be replaced.
bool secureOldFile(const std::string& url) {
    // The file of this process's last save is not damaged, and need not be read to know that.
    if (QRVPlatform::identityOfFileAtPath(url) == StoreInside::state().lastSaved) return true;
    const QRVPlatform::FileContents file =
        QRVPlatform::contentsOfFile(url, NSPropertyListSerialization::maximumSize);
    if (file.isMissing()) return true;
    if (file.error && file.error != std::errc::file_too_large) {
        NSLog("Prefs file not saved, the old one cannot be read: %@, %@",
              {file.error.message(), url});
        return false;
    }
    const char* const reason = reasonToBackUp(file);
    return reason == nullptr || backUp(url, reason);
}

void replaceSettingsFile(QRVPlatform::WriteAccess& access, const std::string& bytes,
                         const NSArray& log) {
    const std::string& url = access.path();
    if (!secureOldFile(url)) return;  // 2
    StoreInside::State& state = StoreInside::state();
    if (!log.isNull())  // 3
        DispatchMainQueue::shared().async([&state, log] { state.localChanges.add(log); });
    if (QRVPlatform::replaceFile(access, bytes)) {  // 4
        state.lastSaved = {};
        return;
    }
    state.lastSaved = QRVPlatform::identityOfFileAtPath(url);
    forgetThatTheFileMustBeBackedUp();
}

void save(const NSDictionary& object, const NSArray& log) {
    if (object.isNull()) {
        logSaveMessage(SaveMessageLine::MissingValue, "Trying to save settings with missing value",
                       {});
        return;
    }
    try {
        const auto serialised = NSPropertyListSerialization::dataWithPropertyList(object);  // 1
        if (serialised.error) {
            logSaveMessage(SaveMessageLine::SerialisationError, "%@",
                           {serialised.error->description()});
            return;
        }
        // With the store as presenter, so that it is not notified of its own write.
        const QRVSettings& store = QRVSettings::sharedSettings();
        QRVPlatform::coordinateWriting(NSFileCoordinator(&store), store.location(),
                                       NSFileCoordinator::WritingOptions::ForReplacing,
                                       [&](QRVPlatform::WriteAccess& access) {
                                           replaceSettingsFile(access, serialised.bytes, log);
                                       });
    } catch (const NSInvalidArgumentException& exception) {
        logSaveMessage(SaveMessageLine::ExceptionRaised, "%@", {exception.what()});
        logSaveMessage(SaveMessageLine::ObjectOfException, "%@", {object});
    }
}

NSDictionary changeRecord(QRVKeyPath keyPath) {
    if (keyPath.isNull()) throw NSInvalidArgumentException("the key path of a write is null");
    static const PropertyListValue key("key");
    static const PropertyListValue time("time");
    std::array<QRVPlatform::KeyedValue, 2> entries{
        {{key, keyPath.text()}, {time, NSDate::now().timeIntervalSince1970()}}};
    return QRVPlatform::immutableDictionary(entries);
}

}  // namespace

void QRVInside::writeSetting(const PropertyListValue& value, QRVKeyPath keyPath,
                             QRVKeyPath keyPathOfDefault) {
    requireHostThread();
    QRVSettings& store = QRVSettings::sharedSettings();
    NSMutableDictionary working = storedTree().mutableCopy();  // 1
    if (working.isNull()) working = NSMutableDictionary();

    const PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(keyPathOfDefault);  // 2
    const bool isDefault = byDefault.isSameKindAs(value) && byDefault == value;          // 3
    const NSDictionary record = changeRecord(keyPath);                                   // 4
    NSDictionaryQRV::setObjectAtKeyPath(working, isDefault ? nullptr : value, keyPath);  // 5
    store.setStorageCache(working);                                                      // 6
    store.cache().setObjectForKey(value, keyPath.text());                                // 7
    QRVSettingsSaveObjectWithLog(working.copy(), NSArray::arrayWithObject(record));      // 8
}

void QRVSettingsSetObjectForKeyPathWithCache(const PropertyListValue& value, QRVKeyPath keyPath,
                                             bool /*withCache*/) {
    QRVInside::writeSetting(value, keyPath, keyPath);
}

void QRVSettingsSetObjectForKeyPath(const PropertyListValue& value, QRVKeyPath keyPath) {
    QRVSettingsSetObjectForKeyPathWithCache(value, keyPath, false);
}

void QRVSettingsSaveObjectWithLog(const NSDictionary& object, const NSArray& log) {
    requireHostThread();
    StoreInside::State& state = StoreInside::state();
    if (state.inBatchSave) {
        state.batchLogChanges.addObjectsFromArray(log);
        return;
    }
    state.saves.begin();
    state.queue.async([&state, object, log] {
        save(object, log);
        state.saves.end();
    });
}

void QRVSettingsSaveObject(const NSDictionary& object) {
    QRVSettingsSaveObjectWithLog(object.copy(), nullptr);
}

void QRVSettingsClearCacheForKeyPath(QRVKeyPath keyPath) {
    if (keyPath.isNull()) return;
    QRVSettings::sharedSettings().cache().removeObjectForKey(keyPath.text());
}

void QRVSettingsSynchronize() {}
