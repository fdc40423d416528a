// SPDX-License-Identifier: MIT
// The menu bar's appearance: the platform's names for it become one of two words.

#include <algorithm>
#include <array>

#include "Platform/System/NSAppearance.h"
#include "QRVSettings/QRVSettings+BeforeDefaults.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"

using QRVInside::requireHostThread;

namespace {

constexpr std::array darkAppearances = {
    NSAppearanceNameDarkAqua,
    NSAppearanceNameVibrantDark,
    NSAppearanceNameAccessibilityHighContrastDarkAqua,
    NSAppearanceNameAccessibilityHighContrastVibrantDark,
};

bool isDark(const PropertyListValue& appearanceName) {
    return appearanceName.isString() &&
           std::find(darkAppearances.begin(), darkAppearances.end(), appearanceName.stringView()) !=
               darkAppearances.end();
}

}  // namespace

void QRVSettingsSetCurrentAppearance(const PropertyListValue& appearanceName) {
    requireHostThread();
    const PropertyListValue word = isDark(appearanceName) ? "Dark" : "Light";
    QRVSettings::sharedSettings().setCurrentAppearance(word);
    QRVSettingsSetObjectForKeyPathWithCache(word, QRVStoreKeyPaths::currentAppearance, false);
}

PropertyListValue QRVSettingsCurrentAppearance() {
    requireHostThread();
    return QRVSettings::sharedSettings().currentAppearance();
}

std::string QRVSettingsMenuThemeForAppearance(const PropertyListValue& appearanceName) {
    return isDark(appearanceName) ? "dark" : "light";
}

void QRVInside::restoreAppearance() {
    PropertyListValue stored = QRVSettingsObjectForKeyPath(QRVStoreKeyPaths::currentAppearance);
    if (!stored.isNull()) QRVSettings::sharedSettings().setCurrentAppearance(std::move(stored));
}
