// SPDX-License-Identifier: MIT
#include "Settings/PendingChanges.h"

#include <algorithm>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/Notices.h"
#include "Settings/EmptyLevels.h"
#include "Settings/Preparation.h"
#include "Settings/ProfileScope.h"
#include "Settings/SaveWatch.h"
#include "Settings/StoredTree.h"
#include "Text/FileForm.h"
#include "Text/KeyPaths.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

bool isSaved(const NSDictionary& file, const std::string& keyPath) {
    return isKeptAs(QRVSettingsStoredObjectForKeyPath(keyPath),
                    NSDictionaryQRV::objectAtKeyPath(file, keyPath));
}

Failure inTheWayOf(const std::string& keyPath, const NSInvalidArgumentException& exception) {
    const auto obstacle = leafAbove(QRVSettingsStoredValues(), keyPath);
    if (!obstacle) return {Fault::WrongValue, exception.what()};
    return {Fault::WrongValue, "a stored value is in the way: " + *obstacle + " is " +
                                   kindName(QRVSettingsStoredObjectForKeyPath(*obstacle)) + ", " +
                                   keyPath};
}

}  // namespace

PendingChanges::PendingChanges(Preparation preparation) {
    QRVSettingsPrepareBatchSave();
    try {
        notes_ = prepareStore();
    } catch (const Failure&) {
        if (preparation == Preparation::MustSucceed) throw;
    }
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
        change();
        if (QRVSettingsStoredObjectForKeyPath(storedKeyPath).isNull())
            removeEmptyLevelsAbove(storedKeyPath);
    } catch (const NSInvalidArgumentException& exception) {
        throw inTheWayOf(storedKeyPath, exception);
    }
    keyPaths_.insert(storedKeyPath);
}

void PendingChanges::save() {
    for (const std::string& note : notes_) notice(note);
    SaveWatch watch;
    QRVSettingsCommitBatchSave();
    watch.finish([this](const NSDictionary& file) {
        return std::all_of(keyPaths_.begin(), keyPaths_.end(),
                           [&file](const auto& keyPath) { return isSaved(file, keyPath); });
    });
    for (const std::string& keyPath : keyPaths_)
        if (hasFractionsOfSeconds(QRVSettingsStoredObjectForKeyPath(keyPath)))
            notice("fractions of seconds are not kept, " + keyPath);
}

void prepareToRead() {
    const PendingChanges neverSaved;
}

void prepareWithoutStoredSettings() {
    replaceStoredTree(nullptr);
    prepareToRead();
}

void importSettings(const NSDictionary& settings) {
    SaveWatch watch;
    QRVSettingsImport(settings);
    watch.finish(
        [](const NSDictionary& file) { return isKeptAs(QRVSettingsStoredValues(), file); });
}

void importInMemory(const NSDictionary& settings) {
    replaceStoredTree(settings);
    QRVSettings::sharedSettings().migrate();
}

}  // namespace Tool
