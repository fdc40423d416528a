// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Options/Option.h"

namespace Tool {

/// A row of the table of commands.
struct Command {
    std::string_view name;
    std::string_view summary;
    std::string_view footer;  ///< ends its help: an explanation, and one example
    /// Of the command without any of its parts; null when one of them has to be named.
    Configuration (*configure)();
    std::span<const Command> parts{};

    [[nodiscard]] const Command* partNamed(std::string_view part) const;
};

/// What every command takes besides its own options.
OptionList optionsEverywhere();

/// The option of this name that some command below this one takes. Options of one name are the same
/// to a parser wherever they stand: all take a value or none does.
std::optional<Option> optionOfAnyPart(const Command& command, const std::string& name);

}  // namespace Tool
