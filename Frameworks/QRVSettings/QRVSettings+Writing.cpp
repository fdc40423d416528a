// SPDX-License-Identifier: MIT
// Writing a setting, and saving the settings file.
//
// A write, plain or into a profile, on the caller's thread:
// 1. The working tree is a copy of the stored tree, read from the file first when this process has
// not.
// 2. The default of the key path is looked up.
// 3. A value that is of the default's kind and equal to it is not stored.
// 4. The change record is made.
// 5. The value goes into the working tree.
// 6. The working tree becomes the stored tree; nobody else has it.
// 7. The cache gets the value as it was passed.
// 8. The save is queued with the tree and the record.
//
// A save, on the store's queue, posts its records to the main queue before it replaces the file, so
// that no notification of the new file can overtake them. They stay in localChanges for 3 seconds.
//
// All copies are shallow: a nested dictionary that a write made mutable is shared by the trees of
// several queued saves, and a save that runs after a later write may hold that write's change.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "Platform/Values/ImmutableContainers.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Log.h"
#include "QRVSettings/QRVSettings+PendingSaves.h"
#include "QRVSettings/QRVSettings+StoredTree.h"
#include "QRVSettings/QRVSettings+WriteSetting.h"
#include "QRVSettings/QRVSettings.h"

namespace {

constexpr auto localChangeLifetime = std::chrono::seconds(3);

enum class SaveMessageLine : int {
    MissingValue = 88,
    SerialisationError = 115,
    ExceptionRaised = 119,
    ObjectOfException = 120,
};

std::atomic<std::uint64_t> pendingSaves = 0;
std::atomic<std::uint64_t> endedSaves = 0;

void logSaveMessage(SaveMessageLine line, const char* format,
                    std::vector<PropertyListValue> arguments) {
    logMessage("QRVSettingsSaveObjectWithLog_block_invoke", static_cast<int>(line), format,
               std::move(arguments));
}

void keepAsLocalChanges(const NSArray& log) {
    const NSMutableArray localChanges = QRVSettings::sharedSettings().localChanges();
    localChanges.addObjectsFromArray(log);
    DispatchMainQueue::shared().asyncAfter(localChangeLifetime, [localChanges, log] {
        for (const PropertyListValue& record : log) localChanges.removeObject(record);
    });
}

// What a save last left behind. While the file is still that, it need not be read again to know
// that it is no damaged file. Used on the store's queue only.
QRVPlatform::FileIdentity& lastSavedFile() {
    static QRVPlatform::FileIdentity identity;
    return identity;
}

bool isKept(const std::string& url, const char* reason) {
    const QRVPlatform::FileBackup kept = QRVPlatform::backUpFile(url);
    if (kept.error) {
        NSLog("Prefs file not saved, the one that %@ cannot be kept aside: %@, %@",
              {reason, kept.error.message(), url});
        return false;
    }
    NSLog("Prefs file %@, its bytes are kept: %@", {reason, kept.path});
    return true;
}

// Whether the old file may be replaced: it is missing, empty or a settings file that this process
// knows, or its bytes have been kept beside it.
bool oldFileMayBeReplaced(const std::string& url) {
    if (QRVPlatform::identityOfFileAtPath(url) == lastSavedFile()) return true;
    const QRVPlatform::FileContents file =
        QRVPlatform::contentsOfFile(url, NSPropertyListSerialization::maximumSize);
    if (file.isMissing()) return true;
    if (file.error && file.error != std::errc::file_too_large) {
        NSLog("Prefs file not saved, the old one cannot be read: %@, %@",
              {file.error.message(), url});
        return false;
    }
    if (!file.error && file.bytes.empty()) return true;
    const bool isSettings =
        !file.error &&
        NSPropertyListSerialization::propertyListWithData(file.bytes).value.isDictionary();
    if (!isSettings) return isKept(url, "was damaged");
    if (!storedTreeLacksTheFile()) return true;
    if (!isKept(url, "could not be read before")) return false;
    storedTreeNeedNotHaveTheFile();
    return true;
}

void replaceSettingsFile(const std::string& url, const std::string& bytes, const NSArray& log) {
    if (!oldFileMayBeReplaced(url)) return;
    if (!log.isNull()) DispatchMainQueue::shared().async([log] { keepAsLocalChanges(log); });
    lastSavedFile() = QRVPlatform::replaceFile(url, bytes) ? QRVPlatform::FileIdentity()
                                                           : QRVPlatform::identityOfFileAtPath(url);
}

void save(const NSDictionary& object, const NSArray& log) {
    if (object.isNull()) {
        logSaveMessage(SaveMessageLine::MissingValue, "Trying to save settings with missing value",
                       {});
        return;
    }
    try {
        const auto serialised = NSPropertyListSerialization::dataWithPropertyList(object);
        if (serialised.error) {
            logSaveMessage(SaveMessageLine::SerialisationError, "%@",
                           {serialised.error->description()});
            return;
        }
        // In the store's name: its own presenter does not hear of this write.
        NSFileCoordinator coordinator(&QRVSettings::sharedSettings());
        coordinator.coordinateWritingItemAtURL(
            QRVSettings::sharedSettings().location(),
            NSFileCoordinator::WritingOptions::ForReplacing,
            [&](const std::string& url) { replaceSettingsFile(url, serialised.bytes, log); });
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

void writeSetting(const PropertyListValue& value, QRVKeyPath keyPath, QRVKeyPath keyPathOfDefault) {
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
    writeSetting(value, keyPath, keyPath);
}

void QRVSettingsSetObjectForKeyPath(const PropertyListValue& value, QRVKeyPath keyPath) {
    QRVSettingsSetObjectForKeyPathWithCache(value, keyPath, false);
}

void QRVSettingsSaveObjectWithLog(const NSDictionary& object, const NSArray& log) {
    requireHostThread();
    const QRVSettings& store = QRVSettings::sharedSettings();
    if (store.inBatchSave()) {
        store.batchLogChanges().addObjectsFromArray(log);
        return;
    }
    ++pendingSaves;
    store.queue().async([object, log] {
        save(object, log);
        ++endedSaves;
        --pendingSaves;
    });
}

std::uint64_t countOfEndedSaves() {
    return endedSaves;
}

bool isLastSave(const QRVPlatform::FileIdentity& file) {
    return !file.isMissing() && file == lastSavedFile();
}

bool isSavePending() {
    return pendingSaves != 0;
}

void QRVSettingsSaveObject(const NSDictionary& object) {
    QRVSettingsSaveObjectWithLog(object.copy(), nullptr);
}

void QRVSettingsClearCacheForKeyPath(QRVKeyPath keyPath) {
    if (keyPath.isNull()) return;
    QRVSettings::sharedSettings().cache().removeObjectForKey(keyPath.text());
}

void QRVSettingsSynchronize() {}
