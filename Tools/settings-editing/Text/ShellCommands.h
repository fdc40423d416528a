// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Text/Differences.h"

namespace Tool {

/// One word for a POSIX shell, printable whatever the text holds but U+0000, which no word can
/// hold.
std::string shellWord(std::string_view text);

/// The command that removes the setting.
std::string unsetCommand(const std::string& keyPath);

/// The options of the command that sets a value, each with a blank after it.
using OptionsToSet =
    std::function<std::string(const std::string& keyPath, const PropertyListValue& value)>;

/// One line for a POSIX shell: the command that makes a settings file, or a profile where one is
/// named, hold the value at the key path, or nothing where it is null. Empty, with a notice, where
/// none can.
std::string shellCommand(const std::string& keyPath, const PropertyListValue& value,
                         const OptionsToSet& optionsToSet, const std::string& profile = "");

/// The commands that make the changes, which lead from another tree to this one.
std::string shellCommands(const std::vector<Difference>& differences, const NSDictionary& newTree,
                          const OptionsToSet& optionsToSet, const std::string& profile = "");

}  // namespace Tool
