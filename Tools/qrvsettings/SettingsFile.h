// SPDX-License-Identifier: MIT
#pragma once

namespace Tool {

/// Throws Failure (UnreadableFile) when the settings file exists but cannot be read, or is damaged:
/// not empty and no property list with a dictionary as its root. Changes nothing on disk. What it
/// has read becomes the stored tree, unless there is one.
void requireReadableSettingsFile();

enum class DamagedFile { Refused, Replaced };

/// The same for a command that is going to write; a damaged file passes when it may be replaced.
/// Throws Failure (NotWritten) when there is no home folder and so no place for the file.
void requireWritableSettingsFile(DamagedFile damagedFile);

}  // namespace Tool
