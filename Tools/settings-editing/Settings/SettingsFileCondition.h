// SPDX-License-Identifier: MIT
#pragma once

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

/// The same for a process that is going to save. A damaged file is accepted when it may be
/// replaced; when not, `advice` ends the message. Throws Failure (NotWritten) when there is no home
/// folder and so no place for the file.
void openToWrite(DamagedFile damagedFile, const std::string& advice);

}  // namespace Tool
