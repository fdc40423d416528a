// SPDX-License-Identifier: MIT
#pragma once

// Why a person who writes a setting probably means something else. The store takes it all the same.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/KnownLists.h"
#include "Text/ShellCommands.h"

namespace Tool {

/// What is known about settings, read once for all settings that are judged.
class SettingObjections {
  public:
    SettingObjections();

    using IsUsed = std::function<bool(const std::string& keyPath)>;
    /// What is wrong with the key path, or one in the value where that is a dictionary: a typo of a
    /// known one, or an earlier name of one. Empty when nothing is. Key paths that are used already
    /// are not judged.
    [[nodiscard]] std::string toKeyPath(const std::string& keyPath, const PropertyListValue& value,
                                        const IsUsed& isUsed = nullptr) const;

    /// What is wrong with the value, or one in it: its kind, or that it is none of the choices or
    /// out of range. Names the key path, what it takes, and what was given. Empty when nothing is.
    [[nodiscard]] std::string toValue(const std::string& keyPath,
                                      const PropertyListValue& value) const;

    /// The same for a colour that is to be stored there.
    [[nodiscard]] std::string toColor(const std::string& keyPath) const;

    /// All that is wrong with a tree of settings, in the order of the key paths.
    [[nodiscard]] std::vector<std::string> toTree(const NSDictionary& tree) const;

  private:
    [[nodiscard]] std::string toSpelling(const std::string& keyPath) const;
    [[nodiscard]] std::string toPlace(std::string_view plain) const;
    [[nodiscard]] std::string toLeaf(const KnownSetting& setting, const std::string& keyPath,
                                     const PropertyListValue& value) const;
    [[nodiscard]] bool isLevel(std::string_view plain) const;

    KnownLists lists_;
    KnownKeyPaths keyPaths_;
};

/// What would be refused of these settings, were they set one by one: a line each, the last of them
/// for all that are too many.
std::vector<std::string> remarksOnTree(const NSDictionary& tree);

/// The options without which another machine would refuse a setting.
OptionsToSet optionsThatTakeIt();

}  // namespace Tool
