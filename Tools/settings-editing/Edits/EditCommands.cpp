// SPDX-License-Identifier: MIT
#include "Edits/EditCommands.h"

#include <algorithm>

#include "Settings/SettingObjections.h"
#include "Text/KeyPaths.h"
#include "Text/ShellCommands.h"

namespace Tool {

std::string commandsOfEdits(const std::vector<PendingEdit>& edits) {
    if (edits.empty()) return {};
    std::vector<PendingEdit> sorted = edits;
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& one, const auto& other) {
        // A value that is removed may be in the way of another one.
        if (one.value.isNull() != other.value.isNull()) return one.value.isNull();
        return one.place < other.place;
    });
    const OptionsToSet optionsToSet = optionsThatTakeIt();
    std::string lines;
    for (const PendingEdit& edit : sorted)
        lines += shellCommand(edit.place.keyPath, edit.value, optionsToSet, edit.place.profile);
    return lines;
}

std::string commandOfSetting(const SettingPlace& place, const NSDictionary& stored,
                             const PropertyListValue& effective) {
    const PropertyListValue value = valueAt(stored, place.storedKeyPath());
    return commandsOfEdits({{place, nullptr, value.isNull() ? effective : value}});
}

}  // namespace Tool
