// SPDX-License-Identifier: MIT
#pragma once

// What several commands that change settings have in common: how they report what they changed, and
// settings in files.

#include <string>

#include "Options/Option.h"
#include "Platform/Values/PropertyListValue.h"
#include "Settings/Changes.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/SettingsText.h"

namespace Tool {

/// How a command reports what it changed.
struct ChangeReport {
    bool json = false;
    bool check = false;  ///< whether what would change makes the exit code 1
};

/// `--dry-run` and `--check`.
OptionList previewFlags(WritingOptions& writing, ChangeReport& report);
Option changesAsJSONFlag(ChangeReport& report);

/// Says on standard error that nothing has changed, if so; `what` is the key path or the file that
/// is named.
void remarkIfUnchanged(const Changes& changes, const std::string& what);

/// Prints the one JSON object of `--json`.
void printObject(const Changes& changes);

/// Prints what would change, and returns the exit code of such a command.
ExitCode previewOf(const Changes& changes, const ChangeReport& report);

/// Says which of these settings strict readers of XML refuse to read.
void remarkWhatStrictXMLRefuses(const NSDictionary& settings);

Option keepDottedKeysFlag(DottedKeys& dottedKeys);

/// The settings in a file that an argument names; `-` is standard input. Throws Failure
/// (WrongValue) when they cannot be read or are no settings: "cannot be `participle`", the reason
/// and the file.
NSDictionary settingsOfInput(const std::string& file, const std::string& participle,
                             DottedKeys dottedKeys);

}  // namespace Tool
