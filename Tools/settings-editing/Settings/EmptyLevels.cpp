// SPDX-License-Identifier: MIT
#include "Settings/EmptyLevels.h"

#include "QRVSettings/QRVSettings.h"

namespace Tool {

void removeEmptyLevelsAbove(const std::string& storedKeyPath) {
    std::string level = storedKeyPath;
    for (std::size_t end = level.rfind('.'); end != level.npos; end = level.rfind('.')) {
        level.resize(end);
        const PropertyListValue value = QRVSettingsStoredObjectForKeyPath(level);
        if (!value.isDictionary() || value.dictionary().count() != 0) return;
        QRVSettingsSetObjectForKeyPath(nullptr, level);
    }
}

}  // namespace Tool
