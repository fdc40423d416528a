// SPDX-License-Identifier: MIT
#pragma once

// The settings of a profile: those that the migration copies into the profile "default".

#include <algorithm>
#include <array>
#include <string_view>

namespace QRVInside {

inline constexpr std::array<std::string_view, 9> modulesOfProfile = {
    "CPU", "Network", "Battery", "Weather", "Disks", "Sensors", "Combined", "Memory", "Time"};
/// In each module, below "Menubar".
inline constexpr std::array<std::string_view, 7> menubarKeysOfProfile = {
    "Enabled", "Items", "Clocks", "Disks", "Sensors", "Batteries", "DetailedState"};

/// The first key of a key path, which loses it; the last key leaves "".
constexpr std::string_view takeKey(std::string_view& keyPath) {
    const std::string_view key = keyPath.substr(0, keyPath.find('.'));
    keyPath.remove_prefix(std::min(key.size() + 1, keyPath.size()));
    return key;
}

/// MODULE.Menubar.
constexpr bool isMenubarOfProfile(std::string_view level) {
    const std::string_view module = takeKey(level);
    return std::ranges::find(modulesOfProfile, module) != modulesOfProfile.end() &&
           level == "Menubar";
}

/// MODULE.Menubar.KEY, and whatever lies below.
constexpr bool isSettingOfProfile(std::string_view keyPath) {
    const std::string_view module = takeKey(keyPath);
    const std::string_view menubar = takeKey(keyPath);
    const std::string_view key = takeKey(keyPath);
    return menubar == "Menubar" &&
           std::ranges::find(modulesOfProfile, module) != modulesOfProfile.end() &&
           std::ranges::find(menubarKeysOfProfile, key) != menubarKeysOfProfile.end();
}

}  // namespace QRVInside
