// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <system_error>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/Values/PropertyListValue.h"

namespace Tool {

struct SettingsFileCondition {
    std::error_code error;  ///< why it cannot be read
    std::string damage;     ///< what is wrong with its contents
    NSDictionary settings = nullptr;
    std::optional<PropertyListFormat> format;  ///< empty where no contents were read

    /// The line that says so; empty when the file is missing or whole.
    [[nodiscard]] std::string fault() const;
};

/// Reads the settings file. Changes nothing on disk. What it has read becomes the stored tree,
/// unless there is one.
SettingsFileCondition conditionOfSettingsFile();

/// Throws Failure (UnreadableFile) when the settings file exists but cannot be read, or is damaged:
/// not empty and no property list with a dictionary as its root. Changes nothing on disk. What it
/// has read becomes the stored tree, unless there is one.
void requireReadableSettingsFile();

enum class DamagedFile { Refused, Replaced };

/// The same for a command that is going to write; a damaged file passes when it may be replaced.
/// Throws Failure (NotWritten) when there is no home folder and so no place for the file.
void requireWritableSettingsFile(DamagedFile damagedFile);

}  // namespace Tool
