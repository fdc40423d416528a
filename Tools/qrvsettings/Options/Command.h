// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string_view>

#include "Options/Option.h"

namespace Tool {

/// A row of the table of commands.
struct Command {
    std::string_view name;
    std::string_view summary;
    std::string_view footer;       ///< ends its help: an explanation, and one example
    Configuration (*configure)();  ///< null when one of the parts has to be named
    std::span<const Command> parts{};

    [[nodiscard]] const Command* partNamed(std::string_view part) const;
};

/// What every command takes besides its own options.
OptionList optionsEverywhere();

}  // namespace Tool
