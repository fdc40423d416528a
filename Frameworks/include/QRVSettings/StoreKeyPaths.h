// SPDX-License-Identifier: MIT
#pragma once

/// The key paths that the store itself reads and writes: its records, and the settings that it
/// resets or migrates. Everything else in the settings belongs to the application.

#include <string_view>

#include "Platform/Export.h"

namespace QRVStoreKeyPaths {

/// @name Records of the store
/// @{

/// The machine that last used the settings (`QRVSettings::deviceID`).
inline constexpr std::string_view device = "Device.Device";
/// The model of that machine (`QRVSettings::modelIdentifier`).
inline constexpr std::string_view model = "Device.Model";
/// Present once the combined menu-bar items were migrated; its value does not matter.
inline constexpr std::string_view combinedItemsMigrated = "Migration.CombinedPowerItems";
/// Present once menu-bar settings were copied into the profile "default"; its value does not
/// matter.
inline constexpr std::string_view profilesMigrated = "Migration.Profiles";
/// The name of the profile that the migration made.
inline constexpr std::string_view availableProfile = "Profiles.Available.identifier";
/// The appearance of the menu bar. Misspelt in every settings file there is.
inline constexpr std::string_view currentAppearance = "MenubarCurrentApperance";
/// @}

/// The level that holds the settings of all profiles, each below its name.
inline constexpr std::string_view profiles = "Profiles.Settings";

/// @name Settings that the store changes by itself
/// @{

/// Migrated once (`combinedItemsMigrated`).
inline constexpr std::string_view combinedItems = "Combined.Menubar.Items";
/// Removed on another machine.
inline constexpr std::string_view primaryInterface = "Network.Menubar.Global.PrimaryInterface";
/// Removed on another model.
inline constexpr std::string_view fans = "Sensors.Global.Fans";
/// Removed from each profile on another model: a key path below the profile's name.
inline constexpr std::string_view profileSensors = "Sensors.Menubar.Sensors";
/// @}

}  // namespace QRVStoreKeyPaths
