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

OptionList optionsEverywhere() {
    return {{.name = "--quiet",
             .description = "Say nothing on standard error but why the exit code is not 0",
             .store = [](const auto&) { keepQuiet(); }}};
}

}  // namespace Tool
