// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVKnownSettings.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "QRVSettings/ProfileSettings.h"
#include "QRVSettings/StoreKeyPaths.h"

namespace {

using Kind = PropertyListValue::Kind;
using Scope = QRVSettingScope;

/// The table has the texts of the defaults: whether there is one is seen without knowing it.
constexpr bool isDefault(std::string_view expression) {
    return expression != "nullptr";
}

#define QRV_SETTING(keyPath, levels, name, kind, byDefault, scope, sentence) \
    QRVKnownSetting{keyPath, Kind::kind, Scope::scope, isDefault(#byDefault), sentence},
constexpr auto knownSettings = std::to_array<QRVKnownSetting>({
#include "QRVSettings/KnownSettingsTable.h"
});

static_assert(std::ranges::is_sorted(knownSettings, {}, &QRVKnownSetting::keyPath));
static_assert(std::ranges::adjacent_find(knownSettings, {}, &QRVKnownSetting::keyPath) ==
              knownSettings.end());
static_assert(std::ranges::all_of(knownSettings, [](const QRVKnownSetting& setting) {
    return (setting.scope == Scope::Profile) == QRVInside::isSettingOfProfile(setting.keyPath);
}));

bool isAtOrBelow(std::string_view keyPath, std::string_view level) {
    return keyPath.starts_with(level) &&
           (keyPath.size() == level.size() || keyPath[level.size()] == '.');
}

/// The level itself holds nothing but records.
bool isRecord(std::string_view keyPath) {
    constexpr std::array<std::string_view, 4> levels = {"Device", "Migration", "Profiles.Available",
                                                        QRVStoreKeyPaths::currentAppearance};
    return std::ranges::any_of(
        levels, [keyPath](std::string_view level) { return isAtOrBelow(keyPath, level); });
}

/// The rest of "Profiles.Settings.NAME.REST"; no text at all for other key paths.
std::string_view restInProfile(std::string_view keyPath, std::string_view& profile) {
    if (!isAtOrBelow(keyPath, QRVStoreKeyPaths::profiles)) return {};
    keyPath.remove_prefix(std::min(QRVStoreKeyPaths::profiles.size() + 1, keyPath.size()));
    profile = keyPath.substr(0, keyPath.find('.'));
    return profile.size() == keyPath.size() ? std::string_view()
                                            : keyPath.substr(profile.size() + 1);
}

bool isLevelOfKnownSettings(std::string_view keyPath) {
    const std::string start = std::string(keyPath) + ".";
    const auto* const below =
        std::ranges::lower_bound(knownSettings, start, {}, &QRVKnownSetting::keyPath);
    return below != knownSettings.end() && below->keyPath.starts_with(start);
}

/// What the store leaves where there was nothing.
bool isLeftByStore(std::string_view keyPath, const PropertyListValue& value) {
    if (value.isDictionary() && value.dictionary().count() == 0)
        return isLevelOfKnownSettings(QRVPlainKeyPath(keyPath));
    if (!value.isArray() || value.array().count() != 0) return false;
    std::string_view profile = "default";
    const std::string_view rest = restInProfile(keyPath, profile);
    return profile == "default" &&
           (rest.data() == nullptr ? keyPath : rest) == QRVStoreKeyPaths::combinedItems;
}

}  // namespace

std::span<const QRVKnownSetting> QRVKnownSettings() {
    return knownSettings;
}

const QRVKnownSetting* QRVKnownSettingAt(QRVKeyPath keyPath) {
    if (keyPath.isNull()) return nullptr;
    const std::string_view plain = QRVPlainKeyPath(keyPath);
    const auto* const found =
        std::ranges::lower_bound(knownSettings, plain, {}, &QRVKnownSetting::keyPath);
    return found != knownSettings.end() && found->keyPath == plain ? found : nullptr;
}

std::string_view QRVPlainKeyPath(QRVKeyPath keyPath) {
    std::string_view profile;
    const std::string_view rest = restInProfile(keyPath.text(), profile);
    return rest.data() == nullptr ? keyPath.text() : rest;
}

QRVSettingScope QRVScopeOfKeyPath(QRVKeyPath keyPath) {
    if (isRecord(keyPath.text())) return Scope::Record;
    return QRVInside::isSettingOfProfile(QRVPlainKeyPath(keyPath)) ? Scope::Profile
                                                                   : Scope::Application;
}

bool QRVIsRecordOfStore(QRVKeyPath keyPath, const PropertyListValue& value) {
    if (isRecord(keyPath.text())) return true;
    if (!value.isNull()) return isLeftByStore(keyPath.text(), value);
    std::string_view profile;
    const std::string_view rest = restInProfile(keyPath.text(), profile);
    return profile == "default" && QRVInside::isMenubarOfProfile(rest);
}
