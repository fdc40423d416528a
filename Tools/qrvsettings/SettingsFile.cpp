// SPDX-License-Identifier: MIT
#include "SettingsFile.h"

#include <system_error>

#include "Failure.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/QRVSettings.h"

namespace Tool {
namespace {

struct Condition {
    std::error_code error;  ///< why it cannot be read
    std::string damage;     ///< what is wrong with its contents
    NSDictionary settings = nullptr;
};

Condition conditionOfContents(const std::string& bytes) {
    if (bytes.empty()) return {};
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    if (read.error) return {{}, read.error->description()};
    if (!read.value.isDictionary()) return {{}, "its root is not a dictionary"};
    return {{}, {}, read.value.dictionary()};
}

Condition conditionOf(const FileContents& file) {
    if (file.isMissing()) return {};
    // Such a file is replaced like any other that is no settings file.
    if (file.error == std::errc::file_too_large) return {{}, "larger than 64 MiB"};
    if (file.error) return {file.error, {}};
    return conditionOfContents(file.bytes);
}

Condition currentCondition() {
    Condition condition;
    NSFileCoordinator coordinator;
    const std::error_code error = coordinator.coordinateReadingItemAtURL(
        QRVSettings::sharedSettings().location(), NSFileCoordinator::ReadingOptions::None,
        [&condition](const std::string& url) {
            condition = conditionOf(contentsOfFile(url, NSPropertyListSerialization::maximumSize));
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
    const Condition condition = currentCondition();
    const std::string where = ", " + QRVSettings::sharedSettings().location();
    if (condition.error)
        throw Failure(ExitCode::UnreadableFile,
                      "the settings file cannot be read: " + condition.error.message() + where);
    giveToStore(condition.settings);
    if (condition.damage.empty() || damagedFile == DamagedFile::Replaced) return;
    throw Failure(ExitCode::UnreadableFile,
                  "the settings file is damaged: " + condition.damage + where + advice);
}

}  // namespace

void requireReadableSettingsFile() {
    require(DamagedFile::Refused, "");
}

void requireWritableSettingsFile(DamagedFile damagedFile) {
    if (QRVSettings::sharedSettings().location().empty())
        throw Failure(ExitCode::NotWritten, "there is no home folder, so no settings file");
    require(damagedFile, "; --replace-damaged keeps its bytes under another name");
}

}  // namespace Tool
