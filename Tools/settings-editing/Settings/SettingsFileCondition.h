// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <system_error>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// What a settings file holds, or what is wrong with it.
struct SettingsFileCondition {
    std::error_code error;  ///< why it cannot be read
    std::string damage;     ///< what is wrong with its contents
    NSDictionary settings = nullptr;
    std::optional<PropertyListFormat> format;  ///< empty where no contents were read

    /// The line for the user that says what is wrong; empty when the file is missing or whole.
    [[nodiscard]] std::string fault() const;
};

/// Reads the settings file. Changes nothing, on disk or in the store.
SettingsFileCondition conditionOfSettingsFile();

/// The same; what the file holds becomes the stored tree of this process, unless there is one.
SettingsFileCondition openSettingsFile();

/// Throws Failure (UnreadableFile) when the settings file exists but cannot be read, or is damaged:
/// not empty and no property list with a dictionary as its root.
void requireReadable(const SettingsFileCondition& condition);

/// Opens the settings file. Throws as `requireReadable` does.
void openToRead();

enum class DamagedFile { Refused, Replaced };

enum class ReadOnlyFile { Refused, Replaced };

/// What a command that writes may do.
struct WritingOptions {
    DamagedFile damagedFile = DamagedFile::Refused;
    /// A file whose mode lets not even its owner write. The rights of root do not count.
    ReadOnlyFile readOnlyFile = ReadOnlyFile::Refused;
    bool dryRun = false;  ///< saves nothing
    /// How long a save waits while another process is writing; empty for as long as it takes.
    std::optional<std::chrono::milliseconds> timeout{};
};

/// What ends the message about a file that is refused.
struct WritingAdvice {
    std::string damagedFile;
    std::string readOnlyFile;
};

/// The same for a process that is going to save: its saves bring what it wrote, and keep what
/// others have written. Throws Failure (NotWritten) when there is no home folder and so no place
/// for the file.
void openToWrite(const WritingOptions& options, const WritingAdvice& advice);

/// To be called before a save. Throws Failure (NotWritten) when the file is read-only and
/// `openToWrite` was not told that it may be replaced, and when something lies in the way of saves.
void requireSavable();

}  // namespace Tool
