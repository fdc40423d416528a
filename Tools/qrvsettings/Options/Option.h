// SPDX-License-Identifier: MIT
#pragma once

// What a command declares: its arguments and options, and the action that they lead to.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Process/ExitCode.h"

namespace Tool {

/// What an argument or the value of an option is. It decides how the last word of a command line is
/// completed.
enum class Takes {
    Nothing,        ///< a flag
    Text,           ///< anything; `words`, if any, are offered
    File,           ///< the name of a file
    KeyPath,        ///< a key path of any layer, or of the layer and the profile that are named
    KnownKeyPath,   ///< a key path of which something is known
    StoredKeyPath,  ///< a key path that is stored
    Value,          ///< a value of the key path before it
    Color,          ///< a colour for the key path before it
    Layer,          ///< one of `layerNames`
    Profile,        ///< the name of a profile
};

struct Option {
    std::string name;  ///< "--layer", or without dashes that of an argument: "KEYPATH"
    std::string description;
    Takes takes = Takes::Nothing;
    /// Receives what the user gives: nothing for a flag, several texts for what `isRepeated`.
    std::function<void(const std::vector<std::string>&)> store{};
    bool isRequired = false;
    bool isRepeated = false;  ///< takes one text or more
    std::string valueName{};  ///< of an option's value, in the help
    std::string byDefault{};  ///< shown in the help
    /// The value where none follows the option: at the end, or before another option.
    std::string withoutValue{};
    std::vector<std::string> words{};
    bool takesOnlyWords = false;
    /// Why a text is refused; empty when it is not.
    std::function<std::string(const std::string&)> objection{};
    std::string excludes{};  ///< the name of an option that must not be given with this one

    [[nodiscard]] bool isArgument() const { return !name.starts_with('-'); }
};
using OptionList = std::vector<Option>;

/// Does what the command line asks for. Throws Failure.
using Action = std::function<ExitCode()>;

struct Configuration {
    OptionList options;
    Action action;
};

/// Of a command whose options are kept in an object of their own.
template <typename Options>
Configuration configured(OptionList (*declare)(Options&), ExitCode (*run)(const Options&)) {
    const auto options = std::make_shared<Options>();
    return {declare(*options), [options, run] { return run(*options); }};
}

/// @name The usual kinds
/// @{
Option flag(const std::string& name, bool& isGiven, const std::string& description);
/// An argument or option of one text.
Option text(const std::string& name, std::string& text, const std::string& description);
/// An argument of one text or more.
Option texts(const std::string& name, std::vector<std::string>& texts,
             const std::string& description);
Option required(Option option);
/// @}

}  // namespace Tool
