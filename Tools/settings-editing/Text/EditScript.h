// SPDX-License-Identifier: MIT
#pragma once

/// Edits of settings as a script, one a line:
///
///     # a comment
///     set KEYPATH VALUE
///     unset KEYPATH
///
/// Words stand apart by spaces or tabs. A key path that holds one, or begins with a quotation mark,
/// is a JSON string. The value is the rest of the line without the blanks at its end, and is read
/// as `valueFromText` does where the text decides. Empty lines are nothing.

#include <cstddef>
#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

struct Edit {
    std::size_t line;  ///< counted from 1
    std::string keyPath;
    PropertyListValue value;  ///< null to remove the setting
};

/// `name` is what messages call the text. Throws Failure (WrongValue), with name and line, for what
/// is no such line, text that is not UTF-8, and a setting that no settings file can hold.
std::vector<Edit> editsFromScript(std::string_view text, const std::string& name);

/// A fault of one line, for messages.
std::string atLine(const std::string& name, std::size_t line, const std::string& fault);

}  // namespace Tool
