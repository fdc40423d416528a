// SPDX-License-Identifier: MIT
#pragma once

/// Edits of settings as a script, one a line:
///
///     # a comment
///     set [--type NAME] [--profile NAME] [--new] [--any-kind] KEYPATH VALUE
///     unset [--profile NAME] KEYPATH
///     qrvsettings set [--type NAME] [--profile NAME] [--] KEYPATH VALUE
///     qrvsettings unset [--profile NAME] [--] KEYPATH...
///
/// The last two are commands for a shell, as `shellCommand` writes them, and are read as
/// `shellWordsOf` does. The others are read so:
///
/// Words are separated by spaces or tabs. A key path or profile that holds one, or begins with a
/// quotation mark, is a JSON string. Options stand before the value; `--name=value` is one, too. A
/// key path or value that begins with two dashes needs the word `--` before it. The value is the
/// rest of the line without the blanks at its end, and is read as `valueFromText` does. Empty lines
/// are skipped.

#include <cstddef>
#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

struct Edit {
    std::size_t line;  ///< counted from 1
    std::string keyPath;
    PropertyListValue value;   ///< null to remove the setting
    std::string profile;       ///< whose setting it is; empty for the application's
    bool isNew = false;        ///< `--new`
    bool isOfAnyKind = false;  ///< `--any-kind`
};

/// `name` is the name of the script in messages. Throws Failure (WrongValue), with name and line,
/// and a column where JSON is wrong, for any other line, text that is not UTF-8 or begins with a
/// byte order mark, and a setting that no settings file can hold.
std::vector<Edit> editsFromScript(std::string_view text, const std::string& name);

/// The message for a fault in one line.
std::string atLine(const std::string& name, std::size_t line, const std::string& fault);

}  // namespace Tool
