// SPDX-License-Identifier: MIT
#include "Settings/SettingsFileCondition.h"

#include <functional>

#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/Notices.h"
#include "Settings/FileFacts.h"
#include "Settings/SavePlaces.h"
#include "Settings/SettingsLock.h"
#include "Settings/StoredTree.h"

namespace Tool {
namespace {

SettingsFileCondition conditionOfContents(const std::string& bytes) {
    if (bytes.empty()) return {};
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    if (read.error) return {{}, read.error->description(), nullptr, read.format};
    if (!read.value.isDictionary())
        return {{}, "its root is not a dictionary", nullptr, read.format};
    return {{}, {}, read.value.dictionary(), read.format};
}

SettingsFileCondition conditionOf(const QRVPlatform::FileContents& file) {
    if (file.isMissing()) return {};
    // A save replaces such a file like any other damaged one.
    if (file.error == std::errc::file_too_large) return {{}, "larger than 512 MiB", nullptr, {}};
    if (file.error) return {file.error, {}, nullptr, {}};
    return conditionOfContents(file.bytes);
}

std::error_code readCoordinated(const std::function<void(const std::string& path)>& read) {
    std::error_code error;
    waitFor(lockOfSettingsFile, [&] {
        NSFileCoordinator coordinator;
        error =
            coordinator.coordinateReadingItemAtURL(QRVSettings::sharedSettings().location(),
                                                   NSFileCoordinator::ReadingOptions::None, read);
    });
    return error;
}

void require(const SettingsFileCondition& condition, DamagedFile damagedFile,
             const std::string& advice) {
    if (condition.error) throw Failure(Fault::UnreadableFile, condition.fault());
    if (!condition.damage.empty() && damagedFile == DamagedFile::Refused)
        throw Failure(Fault::UnreadableFile, condition.fault() + advice);
}

void requireWritable(const std::string& target, const std::string& advice) {
    const PathFacts facts = factsOfPath(target);
    if (facts.kind == PathFacts::Kind::File && (facts.mode & PathFacts::ownerMayWrite) == 0)
        throw Failure(Fault::NotWritten, "the settings file is read-only: mode " +
                                             modeText(facts.mode) + ", " + target + advice);
}

/// What `openToWrite` was told of a read-only file.
struct Permission {
    ReadOnlyFile readOnlyFile = ReadOnlyFile::Replaced;
    std::string advice;
};

Permission& permission() {
    static auto& permission = *new Permission;
    return permission;
}

}  // namespace

std::string SettingsFileCondition::fault() const {
    const std::string where = ", " + QRVSettings::sharedSettings().location();
    if (error) return "the settings file cannot be read: " + error.message() + where;
    return damage.empty() ? "" : "the settings file is damaged: " + damage + where;
}

SettingsFileCondition conditionOfSettingsFile() {
    SettingsFileCondition condition;
    const std::error_code error = readCoordinated([&condition](const std::string& path) {
        condition = conditionOf(
            QRVPlatform::contentsOfFile(path, NSPropertyListSerialization::maximumSize));
    });
    if (error) condition.error = error;
    return condition;
}

SettingsFileCondition openSettingsFile() {
    SettingsFileCondition condition = conditionOfSettingsFile();
    // Otherwise the store would read the file a second time.
    if (!condition.error && QRVSettings::sharedSettings().storageCache().isNull() &&
        !condition.settings.isNull())
        replaceStoredTree(condition.settings);
    return condition;
}

void requireReadable(const SettingsFileCondition& condition) {
    require(condition, DamagedFile::Refused, "");
}

void openToRead() {
    requireReadable(openSettingsFile());
}

void openToWrite(const WritingOptions& options, const WritingAdvice& advice) {
    QRVSettings& store = QRVSettings::sharedSettings();
    if (store.location().empty())
        throw Failure(Fault::NotWritten, "there is no home folder, so no settings file");
    store.setMergesSaves(true);
    store.setSaveLockTimeout(options.timeout);
    // The store has to read the file itself, to know what its saves build on.
    waitFor(lockOfSettingsFile, [] { QRVSettingsStoredValues(); });
    if (store.storageCache().isNull())
        require(conditionOfSettingsFile(), options.damagedFile, advice.damagedFile);
    permission() = {options.readOnlyFile, advice.readOnlyFile};
}

void requireSavable() {
    const std::string target =
        QRVPlatform::resolvedPath(QRVSettings::sharedSettings().location()).path;
    if (permission().readOnlyFile == ReadOnlyFile::Refused)
        requireWritable(target, permission().advice);
    const std::string obstacle = obstacleToSaves(target);
    if (!obstacle.empty()) throw Failure(Fault::NotWritten, "cannot save: " + obstacle);
}

}  // namespace Tool
