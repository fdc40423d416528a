// SPDX-License-Identifier: MIT
#pragma once

// What several commands that change settings have in common: `--dry-run`, and settings in files.

#include <string>

#include "Options/Option.h"
#include "Platform/Values/PropertyListValue.h"
#include "Text/SettingsText.h"

namespace Tool {

Option dryRunFlag(bool& dryRun);
/// Prints a line for each difference of the trees, or says on standard error that there is none.
void printWhatWouldChange(const NSDictionary& oldTree, const NSDictionary& newTree);

/// Says which of these settings strict readers of XML refuse to read.
void remarkWhatStrictXMLRefuses(const NSDictionary& settings);

Option keepDottedKeysFlag(DottedKeys& dottedKeys);

/// The settings in a file that an argument names; `-` is standard input. Throws Failure
/// (WrongValue) when they cannot be read or are no settings: "cannot be `participle`", the reason
/// and the file.
NSDictionary settingsOfInput(const std::string& file, const std::string& participle,
                             DottedKeys dottedKeys);

}  // namespace Tool
