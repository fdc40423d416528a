// SPDX-License-Identifier: MIT
#include "Options/Command.h"

#include <algorithm>

#include "Process/StandardError.h"

namespace Tool {

const Command* Command::partNamed(std::string_view part) const {
    const auto found = std::find_if(parts.begin(), parts.end(),
                                    [part](const Command& one) { return one.name == part; });
    return found == parts.end() ? nullptr : &*found;
}

std::optional<Option> optionOfAnyPart(const Command& command, const std::string& name) {
    if (command.configure != nullptr) {
        const OptionList options = command.configure().options;
        const auto found = std::ranges::find_if(options, [&name](const Option& option) {
            return option.name == name && !option.isArgument();
        });
        if (found != options.end()) return *found;
    }
    for (const Command& part : command.parts)
        if (auto option = optionOfAnyPart(part, name)) return option;
    return std::nullopt;
}

OptionList optionsEverywhere() {
    return {{.name = "--quiet",
             .description = "Say nothing on standard error but why the exit code is not 0",
             .store = [](const auto&) { keepQuiet(); }}};
}

}  // namespace Tool
