// SPDX-License-Identifier: MIT
#pragma once

// The save of a write; and what the saves of whole trees and the merging saves share, all on the
// store's queue.

#include <functional>
#include <string>
#include <system_error>

#include "Platform/Files/HeldFile.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/QRVSettings+ChangeRecord.h"
#include "QRVSettings/QRVSettings+KnownText.h"
#include "QRVSettings/QRVSettings+SaveProgress.h"

namespace QRVPlatform {
class WriteAccess;
}

namespace QRVInside {

/// As QRVSettingsSaveObjectWithLog with this record alone, when the store does not merge saves.
/// Outside of a batch, the record becomes a dictionary on the store's queue. For the host's thread.
void saveTreeOfWrite(NSDictionary tree, ChangeRecord record);

void logMissingValue();

/// Does the work of a save of `object`; a platform exception is logged and becomes the failure.
void guardedSave(const NSDictionary& object, SaveOutcome& outcome,
                 const std::function<void()>& work);

/// Tells the failure handler of a value that no property list can hold; empty for the whole tree.
void reportUnsaved(const std::string& keyPath);

/// Calls the accessor with the write access of the settings file; its answer becomes the failure.
void coordinateSave(SaveOutcome& outcome,
                    const std::function<std::string(QRVPlatform::WriteAccess&)>& accessor);

/// What is in the file's place before a save.
struct OldFile {
    enum class Condition {
        Missing,  ///< nothing, or an empty file
        Settings,
        Damaged,
        Unreadable,  ///< with `error`
    };
    Condition condition = Condition::Missing;
    NSDictionary root = nullptr;  ///< the settings
    bool mayBeCutOff = false;     ///< the settings may be a part of those of a longer file
    QRVPlatform::HeldFile file;   ///< what was read
    std::error_code error;
};
OldFile readOldFile(const std::string& url);

/// Backs up an old file whose bytes a replacement would lose. Why it must not be replaced; empty
/// when it may be.
std::string secured(const OldFile& old, const std::string& url);

/// Queues the records for `localChanges`; null has none.
void postRecords(const NSArray& log);

/// Replaces the file. Why it could not; empty when it did.
std::string replacedFile(QRVPlatform::WriteAccess& access, const KnownText::Written& written);

}  // namespace QRVInside
