// SPDX-License-Identifier: MIT
#include "Session/PlaceOfStored.h"

#include "QRVSettings/QRVKnownSettings.h"

namespace QRVWindow {

Tool::SettingPlace placeOfStored(const std::string& storedKeyPath) {
    const std::string plain(QRVPlainKeyPath(storedKeyPath));
    if (plain.size() == storedKeyPath.size()) return {plain, ""};
    // "Profiles.Settings.NAME." stands before it, and a name has no dot.
    const std::string before = storedKeyPath.substr(0, storedKeyPath.size() - plain.size() - 1);
    return {plain, before.substr(before.rfind('.') + 1)};
}

}  // namespace QRVWindow
