// SPDX-License-Identifier: MIT
#pragma once

// The settings that the display and the settings process share.

namespace KeyPaths {

/// @name Of a profile
/// @{
inline constexpr const char* cpuEnabled = "CPU.Menubar.Enabled";
inline constexpr const char* memoryEnabled = "Memory.Menubar.Enabled";
inline constexpr const char* networkEnabled = "Network.Menubar.Enabled";
inline constexpr const char* graphWidth = "CPU.Menubar.Mode.HistoryGraph.Width";
inline constexpr const char* memoryLabels = "Memory.Menubar.Mode.UsedFree.ShowLabels";
inline constexpr const char* connectedColor = "Network.Menubar.Mode.Status.Connected.Color";
inline constexpr const char* notConnectedColor = "Network.Menubar.Mode.Status.NotConnected.Color";
/// @}

/// @name Of all profiles
/// @{
inline constexpr const char* updateFrequency = "UpdateFrequency";  // seconds
inline constexpr const char* darkTheme = "Menu.Theme.Dark";
inline constexpr const char* lightTheme = "Menu.Theme.Light";
inline constexpr const char* appearance = "MenubarCurrentApperance";  // misspelt in all files
/// The profile that all processes of this application show. It is a setting of the application,
/// because the active profile of the store belongs to one process.
inline constexpr const char* activeProfile = "Menubar.ActiveProfile";
/// @}

}  // namespace KeyPaths
