// SPDX-License-Identifier: MIT
#include "Settings/PendingChanges.h"

#include "QRVSettings/FileChange.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/Notices.h"
#include "Settings/LockedSettings.h"
#include "Settings/Preparation.h"
#include "Settings/ProfileScope.h"
#include "Settings/Saving.h"
#include "Settings/SettingsFileCondition.h"
#include "Settings/StoredTree.h"
#include "Text/FileForm.h"
#include "Text/KeyPaths.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

Failure inTheWayOf(const std::string& keyPath, const NSInvalidArgumentException& exception) {
    const auto obstacle = leafAbove(QRVSettingsStoredValues(), keyPath);
    if (!obstacle) return {Fault::WrongValue, exception.what()};
    return {Fault::WrongValue, "a stored value is in the way: " + keyPathText(*obstacle) + " is " +
                                   kindName(QRVSettingsStoredObjectForKeyPath(*obstacle)) + ", " +
                                   keyPathText(keyPath)};
}

/// A damaged file counts as empty, and is replaced also where there is nothing to save.
bool isFileDamaged() {
    return !conditionOfSettingsFile().damage.empty();
}

}  // namespace

PendingChanges::PendingChanges(Preparation preparation)
    : inFile_(snapshotOf(QRVSettingsStoredValues())) {
    QRVSettingsPrepareBatchSave();
    try {
        notes_ = prepareStore();
    } catch (const Failure&) {
        if (preparation == Preparation::MustSucceed) throw;
    }
    prepared_ = snapshotOf(QRVSettingsStoredValues());
}

void PendingChanges::set(const PropertyListValue& value, const std::string& keyPath,
                         const ProfileScope& scope) {
    const std::string storedKeyPath = scope.storedKeyPath(keyPath);
    // To remove what is not set would create the levels above it.
    if (value.isNull() && scope.stored(keyPath).isNull())
        keyPaths_.insert(storedKeyPath);
    else
        write(storedKeyPath, [&] { scope.set(value, keyPath); });
}

void PendingChanges::write(const std::string& storedKeyPath, const std::function<void()>& change) {
    try {
        changeUnlocked(change);
        if (QRVSettingsStoredObjectForKeyPath(storedKeyPath).isNull())
            QRVSettingsRemoveEmptyLevelsAbove(storedKeyPath);
    } catch (const NSInvalidArgumentException& exception) {
        throw inTheWayOf(storedKeyPath, exception);
    }
    requireStorable(QRVSettingsStoredObjectForKeyPath(storedKeyPath), storedKeyPath);
    keyPaths_.insert(storedKeyPath);
}

Changes PendingChanges::changes() const {
    return changesOfWrites({inFile_, prepared_, QRVSettingsStoredValues()}, keyPaths_);
}

Changes PendingChanges::save() {
    Changes result = changes();
    if (result.isEmpty() && !isFileDamaged()) return result;
    requireSavable();
    for (const std::string& note : notes_) notice(note);
    QRVSettings& store = QRVSettings::sharedSettings();
    if (!store.changeOrigin() && keyPaths_.size() == 1)
        store.setChangeOrigin(std::string(QRVChangeOrigins::set));
    saveAndWait(QRVSettingsCommitBatchSave, keyPaths_);
    for (const std::string& keyPath : keyPaths_)
        if (hasFractionsOfSeconds(QRVSettingsStoredObjectForKeyPath(keyPath)))
            notice("fractions of seconds are not kept, " + keyPath);
    return result;
}

void prepareToRead() {
    QRVSettingsPrepareBatchSave();
    static_cast<void>(prepareStore());
}

void prepareWithoutStoredSettings() {
    replaceStoredTree(nullptr);
    prepareToRead();
}

namespace {

struct Import {
    NSDictionary settings;  ///< with what is locked as it is stored
    Changes changes;
};

Import importedInMemory(const NSDictionary& settings) {
    const NSDictionary before = snapshotOf(QRVSettingsStoredValues());
    prepareWithoutStoredSettings();
    const NSDictionary allowed = withLockedSettingsOf(before, settings);
    replaceStoredTree(allowed);
    QRVSettings::sharedSettings().migrate();
    return {allowed, changesOfReplacement(before, QRVSettingsStoredValues())};
}

}  // namespace

Changes importSettings(const NSDictionary& settings) {
    const auto [allowed, changes] = importedInMemory(settings);
    if (changes.isEmpty() && !isFileDamaged()) return changes;
    requireSavable();
    // Otherwise the migration takes what it has cached before for done.
    QRVSettings::sharedSettings().cache().removeAllObjects();
    saveAndWait([&tree = allowed] { QRVSettingsImport(tree); });
    return changes;
}

Changes importInMemory(const NSDictionary& settings) {
    return importedInMemory(settings).changes;
}

}  // namespace Tool
