// SPDX-License-Identifier: MIT
#include "SettingsFile.h"

#include "Failure.h"
#include "LockFile.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "QRVSettings/QRVSettings.h"
#include "Waiting.h"

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
    // Such a file is replaced like any other that is no settings file.
    if (file.error == std::errc::file_too_large) return {{}, "larger than 64 MiB", nullptr, {}};
    if (file.error) return {file.error, {}, nullptr, {}};
    return conditionOfContents(file.bytes);
}

SettingsFileCondition currentCondition() {
    SettingsFileCondition condition;
    const Waiting waiting(lockOfSettingsFile);
    NSFileCoordinator coordinator;
    const std::error_code error = coordinator.coordinateReadingItemAtURL(
        QRVSettings::sharedSettings().location(), NSFileCoordinator::ReadingOptions::None,
        [&condition](const std::string& url) {
            condition = conditionOf(
                QRVPlatform::contentsOfFile(url, NSPropertyListSerialization::maximumSize));
        });
    if (error) condition.error = error;
    return condition;
}

/// So that the store does not read the same once more.
void giveToStore(const NSDictionary& settings) {
    QRVSettings& store = QRVSettings::sharedSettings();
    if (store.storageCache().isNull()) store.setStorageCache(settings.mutableCopy());
}

void require(DamagedFile damagedFile, const std::string& advice) {
    const SettingsFileCondition condition = conditionOfSettingsFile();
    if (condition.error) throw Failure(ExitCode::UnreadableFile, condition.fault());
    if (!condition.damage.empty() && damagedFile == DamagedFile::Refused)
        throw Failure(ExitCode::UnreadableFile, condition.fault() + advice);
}

}  // namespace

std::string SettingsFileCondition::fault() const {
    const std::string where = ", " + QRVSettings::sharedSettings().location();
    if (error) return "the settings file cannot be read: " + error.message() + where;
    return damage.empty() ? "" : "the settings file is damaged: " + damage + where;
}

SettingsFileCondition conditionOfSettingsFile() {
    SettingsFileCondition condition = currentCondition();
    if (!condition.error) giveToStore(condition.settings);
    return condition;
}

void requireReadableSettingsFile() {
    require(DamagedFile::Refused, "");
}

void requireWritableSettingsFile(DamagedFile damagedFile) {
    if (QRVSettings::sharedSettings().location().empty())
        throw Failure(ExitCode::NotWritten, "there is no home folder, so no settings file");
    require(damagedFile, "; --replace-damaged keeps its bytes under another name");
}

}  // namespace Tool
