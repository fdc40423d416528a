// SPDX-License-Identifier: MIT
// Without an include guard: each inclusion expands the lines by its includer's QRV_SETTING.

/// All settings that are known, an entry for each, sorted by key path, for the preprocessor.
/// What is known of a setting is written here and nowhere else: the defaults, the typed keys
/// (`QRVKeys.h`) and the known settings (`QRVKnownSettings.h`) are made from these entries.
///
///     QRV_SETTING(keyPath, levels, name, kind, byDefault, scope, sentence)
///
/// - `keyPath`: text. "THeme", "FlashSeperators" and "MenubarCurrentApperance" are misspelt in
///   every settings file there is.
/// - `levels`, `name`: the typed key. `QRVKeys.h` says how it follows from the key path.
/// - `kind`: a `PropertyListValue::Kind`; `Color` for text that is a colour, `Null` where it is not
///   known.
/// - `byDefault`: an expression that only the source of the defaults understands; `nullptr` where
///   there is no default.
/// - `scope`: a `QRVSettingScope`.
/// - `sentence`: what the setting is. It claims nothing that name, kind and default do not tell.

/// @cond
#ifndef QRV_SETTING
#define QRV_SETTING(keyPath, levels, name, kind, byDefault, scope, sentence)
#endif

// clang-format off

QRV_SETTING("Astronomical.Global.Location", Keys::Astronomical::Global, Location,
            Dictionary, location(-7), Application,
            "The place of the astronomical readings.")
QRV_SETTING("Battery.Menubar.DetailedState", Keys::Battery::Menubar, DetailedState,
            Integer, 0, Profile,
            "How detailed the state is in the battery item of the menu bar, as a number.")
QRV_SETTING("Battery.Menubar.Mode.HorizontalGraph.Graph.Draining.Low.Dark.Color", Keys::Battery::Menubar::Mode::HorizontalGraph::Graph::Draining::Low::Dark, Color,
            Color, red, Application,
            "The colour of the horizontal battery graph while a low battery drains, in the dark appearance.")
QRV_SETTING("Battery.Menubar.Mode.HorizontalGraph.Graph.Draining.Low.Light.Color", Keys::Battery::Menubar::Mode::HorizontalGraph::Graph::Draining::Low::Light, Color,
            Color, red, Application,
            "The colour of the horizontal battery graph while a low battery drains, in the light appearance.")
QRV_SETTING("CPU.Global.EfficiencyCores.Visible", Keys::CPU::Global::EfficiencyCores, Visible,
            Integer, 1, Application,
            "Whether efficiency cores are visible: 1 or 0.")
QRV_SETTING("CPU.Global.HyperthreadingCores.Visible", Keys::CPU::Global::HyperthreadingCores, Visible,
            Integer, 0, Application,
            "Whether hyperthreading cores are visible: 1 or 0.")
QRV_SETTING("CPU.Menu.Processes.Count", Keys::CPU::Menu::Processes, Count,
            Integer, 5, Application,
            "How many processes the CPU menu lists.")
QRV_SETTING("CPU.Menu.Processes.Format", Keys::CPU::Menu::Processes, Format,
            Integer, 0, Application,
            "The format of the processes in the CPU menu, as a number.")
QRV_SETTING("CPU.Menubar.Enabled", Keys::CPU::Menubar, Enabled,
            Boolean, true, Profile,
            "Whether the CPU item of the menu bar is enabled.")
QRV_SETTING("CPU.Menubar.Mode.Global.Graph.Breakdown", Keys::CPU::Menubar::Mode::Global::Graph, Breakdown,
            Integer, 0, Application,
            "The breakdown of the graph in the CPU item of the menu bar, as a number.")
QRV_SETTING("CPU.Menubar.Mode.HistoryGraph.Width", Keys::CPU::Menubar::Mode::HistoryGraph, Width,
            Integer, 40, Application,
            "The width of the history graph in the CPU item of the menu bar.")
QRV_SETTING("Combined.Menu.Cities.Items", Keys::Combined::Menu::Cities, Items,
            Array, combinedCities(), Application,
            "The cities in the combined menu.")
QRV_SETTING("Combined.Menu.Disks.Items", Keys::Combined::Menu::Disks, Items,
            Array, combinedDisks(), Application,
            "The disks in the combined menu.")
QRV_SETTING("Combined.Menu.Items", Keys::Combined::Menu, Items,
            Array, combinedItems(), Application,
            "The items of the combined menu.")
QRV_SETTING("Combined.Menubar.Items", Keys::Combined::Menubar, Items,
            Array, nullptr, Profile,
            "The items that are combined in the menu bar.")
QRV_SETTING("Device.Device", Keys::Device, Device,
            String, nullptr, Record,
            "The machine that last used the settings.")
QRV_SETTING("Device.Model", Keys::Device, Model,
            String, nullptr, Record,
            "The model of the machine that last used the settings.")
QRV_SETTING("DiskActivity.Menubar.Mode.HistoryGraph.Width", Keys::DiskActivity::Menubar::Mode::HistoryGraph, Width,
            Integer, 40, Application,
            "The width of the history graph in the disk activity item of the menu bar.")
QRV_SETTING("DiskActivity.Menubar.Mode.ReadWrite.ShowLabels", Keys::DiskActivity::Menubar::Mode::ReadWrite, ShowLabels,
            Integer, 1, Application,
            "Whether reads and writes have labels in the disk activity item of the menu bar: 1 or 0.")
QRV_SETTING("Disks.Global.Activity.Graph.Type", Keys::Disks::Global::Activity::Graph, Type,
            Integer, 0, Application,
            "The type of the disk activity graph, as a number.")
QRV_SETTING("Disks.Global.Purgeable.Visible", Keys::Disks::Global::Purgeable, Visible,
            Integer, 0, Application,
            "Whether purgeable disk space is visible: 1 or 0.")
QRV_SETTING("Disks.Menu.Activity.Mode", Keys::Disks::Menu::Activity, Mode,
            Integer, 0, Application,
            "The mode of the activity in the disks menu, as a number.")
QRV_SETTING("Disks.Menu.Processes.Count", Keys::Disks::Menu::Processes, Count,
            Integer, 5, Application,
            "How many processes the disks menu lists.")
QRV_SETTING("Disks.Menu.Processes.Sorting", Keys::Disks::Menu::Processes, Sorting,
            Integer, 0, Application,
            "The sorting of the processes in the disks menu, as a number.")
QRV_SETTING("Disks.Menu.State", Keys::Disks::Menu, State,
            Array, disksMenuState(), Application,
            "Which parts of the disks menu are enabled.")
QRV_SETTING("Disks.Menubar.Enabled", Keys::Disks::Menubar, Enabled,
            Boolean, true, Profile,
            "Whether the disks item of the menu bar is enabled.")
QRV_SETTING("Disks.Menubar.Mode.UsedFree.ShowLabels", Keys::Disks::Menubar::Mode::UsedFree, ShowLabels,
            Integer, 1, Application,
            "Whether used and free space have labels in the disks item of the menu bar: 1 or 0.")
QRV_SETTING("GPU.Menubar.Mode.HistoryGraph.Width", Keys::GPU::Menubar::Mode::HistoryGraph, Width,
            Integer, 40, Application,
            "The width of the history graph in the GPU item of the menu bar.")
QRV_SETTING("Memory.Menu.Processes.Count", Keys::Memory::Menu::Processes, Count,
            Integer, 5, Application,
            "How many processes the memory menu lists.")
QRV_SETTING("Memory.Menu.Processes.Format", Keys::Memory::Menu::Processes, Format,
            Integer, 0, Application,
            "The format of the processes in the memory menu, as a number.")
QRV_SETTING("Memory.Menubar.Enabled", Keys::Memory::Menubar, Enabled,
            Boolean, true, Profile,
            "Whether the memory item of the menu bar is enabled.")
QRV_SETTING("Memory.Menubar.Mode.Global.Type", Keys::Memory::Menubar::Mode::Global, Type,
            Integer, 0, Application,
            "The type of the memory item of the menu bar, as a number.")
QRV_SETTING("Memory.Menubar.Mode.HistoryGraph.Width", Keys::Memory::Menubar::Mode::HistoryGraph, Width,
            Integer, 40, Application,
            "The width of the history graph in the memory item of the menu bar.")
QRV_SETTING("Memory.Menubar.Mode.UsedFree.ShowLabels", Keys::Memory::Menubar::Mode::UsedFree, ShowLabels,
            Integer, 1, Application,
            "Whether used and free memory have labels in the memory item of the menu bar: 1 or 0.")
QRV_SETTING("Menu.THeme.Vibrancy", Keys::Menu::THeme, Vibrancy,
            Boolean, true, Application,
            "Whether the theme of the menus is vibrant.")
QRV_SETTING("Menu.Theme.Dark", Keys::Menu::Theme, Dark,
            String, "indigo", Application,
            "The theme of the menus in the dark appearance.")
QRV_SETTING("Menu.Theme.Light", Keys::Menu::Theme, Light,
            String, "indigo", Application,
            "The theme of the menus in the light appearance.")
QRV_SETTING("Menubar.Style", Keys::Menubar, Style,
            Integer, 0, Application,
            "The style of the menu bar, as a number.")
QRV_SETTING("MenubarCurrentApperance", Keys, MenubarCurrentApperance,
            String, nullptr, Record,
            "The appearance of the menu bar.")
QRV_SETTING("Migration.CombinedPowerItems", Keys::Migration, CombinedPowerItems,
            Boolean, nullptr, Record,
            "Present once the combined menu-bar items were migrated.")
QRV_SETTING("Migration.Profiles", Keys::Migration, Profiles,
            Boolean, nullptr, Record,
            "Present once menu-bar settings were copied into the profile \"default\".")
QRV_SETTING("Network.Global.Addresses.Private.IPv4.Enabled", Keys::Network::Global::Addresses::Private::IPv4, Enabled,
            Boolean, true, Application,
            "Whether private IPv4 addresses are enabled.")
QRV_SETTING("Network.Global.Addresses.Private.IPv6.Dynamic.Enabled", Keys::Network::Global::Addresses::Private::IPv6::Dynamic, Enabled,
            Boolean, false, Application,
            "Whether dynamic private IPv6 addresses are enabled.")
QRV_SETTING("Network.Global.Addresses.Private.IPv6.Secured.Enabled", Keys::Network::Global::Addresses::Private::IPv6::Secured, Enabled,
            Boolean, true, Application,
            "Whether secured private IPv6 addresses are enabled.")
QRV_SETTING("Network.Global.Addresses.Private.IPv6.Temporary.Enabled", Keys::Network::Global::Addresses::Private::IPv6::Temporary, Enabled,
            Boolean, false, Application,
            "Whether temporary private IPv6 addresses are enabled.")
QRV_SETTING("Network.Global.Addresses.Public.IPv4.Enabled", Keys::Network::Global::Addresses::Public::IPv4, Enabled,
            Boolean, true, Application,
            "Whether public IPv4 addresses are enabled.")
QRV_SETTING("Network.Global.Addresses.Public.IPv6.Enabled", Keys::Network::Global::Addresses::Public::IPv6, Enabled,
            Boolean, true, Application,
            "Whether public IPv6 addresses are enabled.")
QRV_SETTING("Network.Global.Bandwidth.Format", Keys::Network::Global::Bandwidth, Format,
            Integer, 0, Application,
            "The format of the network bandwidth, as a number.")
QRV_SETTING("Network.Global.Bandwidth.Graph.Type", Keys::Network::Global::Bandwidth::Graph, Type,
            Integer, 0, Application,
            "The type of the network bandwidth graph, as a number.")
QRV_SETTING("Network.Menu.Bandwidth.Mode", Keys::Network::Menu::Bandwidth, Mode,
            Integer, 0, Application,
            "The mode of the bandwidth in the network menu, as a number.")
QRV_SETTING("Network.Menu.Ping.Items", Keys::Network::Menu::Ping, Items,
            Array, pingItems(), Application,
            "The addresses that the network menu pings.")
QRV_SETTING("Network.Menu.Processes.Count", Keys::Network::Menu::Processes, Count,
            Integer, 5, Application,
            "How many processes the network menu lists.")
QRV_SETTING("Network.Menu.Processes.Sorting", Keys::Network::Menu::Processes, Sorting,
            Integer, 0, Application,
            "The sorting of the processes in the network menu, as a number.")
QRV_SETTING("Network.Menu.State", Keys::Network::Menu, State,
            Array, networkMenuState(), Application,
            "Which parts of the network menu are enabled.")
QRV_SETTING("Network.Menubar.Enabled", Keys::Network::Menubar, Enabled,
            Boolean, true, Profile,
            "Whether the network item of the menu bar is enabled.")
QRV_SETTING("Network.Menubar.Global.Decimals.MB", Keys::Network::Menubar::Global::Decimals, MB,
            Integer, 0, Application,
            "How many decimals a number of MB has in the network item of the menu bar.")
QRV_SETTING("Network.Menubar.Global.PrimaryInterface", Keys::Network::Menubar::Global, PrimaryInterface,
            Null, nullptr, Application,
            "The primary network interface in the menu bar.")
QRV_SETTING("Network.Menubar.Mode.HistoryGraph.Width", Keys::Network::Menubar::Mode::HistoryGraph, Width,
            Integer, 40, Application,
            "The width of the history graph in the network item of the menu bar.")
QRV_SETTING("Network.Menubar.Mode.Status.Connected.Color", Keys::Network::Menubar::Mode::Status::Connected, Color,
            Color, green, Application,
            "The colour of the network item of the menu bar when the state is connected.")
QRV_SETTING("Network.Menubar.Mode.Status.Connected.Show", Keys::Network::Menubar::Mode::Status::Connected, Show,
            Integer, 1, Application,
            "Whether the network item of the menu bar shows the state connected: 1 or 0.")
QRV_SETTING("Network.Menubar.Mode.Status.NoIP.Color", Keys::Network::Menubar::Mode::Status::NoIP, Color,
            Color, yellow, Application,
            "The colour of the network item of the menu bar when the state is no IP.")
QRV_SETTING("Network.Menubar.Mode.Status.NoIP.Show", Keys::Network::Menubar::Mode::Status::NoIP, Show,
            Integer, 1, Application,
            "Whether the network item of the menu bar shows the state no IP: 1 or 0.")
QRV_SETTING("Network.Menubar.Mode.Status.NoInternet.Color", Keys::Network::Menubar::Mode::Status::NoInternet, Color,
            Color, orange, Application,
            "The colour of the network item of the menu bar when the state is no Internet.")
QRV_SETTING("Network.Menubar.Mode.Status.NoInternet.Show", Keys::Network::Menubar::Mode::Status::NoInternet, Show,
            Integer, 1, Application,
            "Whether the network item of the menu bar shows the state no Internet: 1 or 0.")
QRV_SETTING("Network.Menubar.Mode.Status.NotConnected.Color", Keys::Network::Menubar::Mode::Status::NotConnected, Color,
            Color, red, Application,
            "The colour of the network item of the menu bar when the state is not connected.")
QRV_SETTING("Network.Menubar.Mode.Status.NotConnected.Show", Keys::Network::Menubar::Mode::Status::NotConnected, Show,
            Integer, 1, Application,
            "Whether the network item of the menu bar shows the state not connected: 1 or 0.")
QRV_SETTING("Network.Menubar.Mode.VPN.Connected.Show", Keys::Network::Menubar::Mode::VPN::Connected, Show,
            Boolean, true, Application,
            "Whether the network item of the menu bar shows a connected VPN.")
QRV_SETTING("Network.Menubar.Mode.VPN.Disconnected.Show", Keys::Network::Menubar::Mode::VPN::Disconnected, Show,
            Boolean, true, Application,
            "Whether the network item of the menu bar shows a disconnected VPN.")
QRV_SETTING("Network.Menubar.Mode.Value.ShowArrows", Keys::Network::Menubar::Mode::Value, ShowArrows,
            Boolean, true, Application,
            "Whether values have arrows in the network item of the menu bar.")
QRV_SETTING("Network.Menubar.Ping.Address", Keys::Network::Menubar::Ping, Address,
            String, pingAddress, Application,
            "The address that the network item of the menu bar pings.")
QRV_SETTING("Notifications.Enabled", Keys::Notifications, Enabled,
            Boolean, true, Application,
            "Whether notifications are enabled.")
QRV_SETTING("Notifications.Items", Keys::Notifications, Items,
            Array, notificationItems(), Application,
            "The notifications, each with its source and type.")
QRV_SETTING("Processes.Combine", Keys::Processes, Combine,
            Integer, 1, Application,
            "Whether processes are combined: 1 or 0.")
QRV_SETTING("Profiles.Available.identifier", Keys::Profiles::Available, identifier,
            String, nullptr, Record,
            "The name of the profile that the migration made.")
QRV_SETTING("Sensors.Global.Fans", Keys::Sensors::Global, Fans_,
            Dictionary, nullptr, Application,
            "The settings of the fans.")
QRV_SETTING("Sensors.Global.Fans.Curve.Manual.Sync", Keys::Sensors::Global::Fans::Curve::Manual, Sync,
            Boolean, true, Application,
            "Whether the manual fan curves are in sync.")
QRV_SETTING("Sensors.Global.Fans.Curve.Sync", Keys::Sensors::Global::Fans::Curve, Sync,
            Boolean, true, Application,
            "Whether the fan curves are in sync.")
QRV_SETTING("Sensors.Global.MonitorFrequency", Keys::Sensors::Global, MonitorFrequency,
            Boolean, true, Application,
            "Whether frequencies are monitored.")
QRV_SETTING("Sensors.Global.MonitorSmart", Keys::Sensors::Global, MonitorSmart,
            Boolean, true, Application,
            "Whether SMART values are monitored.")
QRV_SETTING("Sensors.Menubar.Enabled", Keys::Sensors::Menubar, Enabled,
            Boolean, true, Profile,
            "Whether the sensors item of the menu bar is enabled.")
QRV_SETTING("Sensors.Menubar.Sensors", Keys::Sensors::Menubar, Sensors,
            Null, nullptr, Profile,
            "The sensors in the sensors item of the menu bar.")
QRV_SETTING("Time.Menu.Calendar.Type", Keys::Time::Menu::Calendar, Type,
            Integer, 0, Application,
            "The type of the calendar in the time menu, as a number.")
QRV_SETTING("Time.Menu.Cities.Format.0.Line1", Keys::Time::Menu::Cities::Format::N0, Line1,
            Array, offsetLine(), Application,
            "The first line of format 0 of the cities in the time menu.")
QRV_SETTING("Time.Menu.Cities.Format.1.Flags", Keys::Time::Menu::Cities::Format::N1, Flags,
            Boolean, true, Application,
            "Whether format 1 of the cities in the time menu has flags.")
QRV_SETTING("Time.Menu.Cities.Format.1.Line1", Keys::Time::Menu::Cities::Format::N1, Line1,
            Array, byClockRule, Application,
            "The first line of format 1 of the cities in the time menu.")
QRV_SETTING("Time.Menu.Cities.Format.2.Line1", Keys::Time::Menu::Cities::Format::N2, Line1,
            Array, offsetLine(), Application,
            "The first line of format 2 of the cities in the time menu.")
QRV_SETTING("Time.Menu.Cities.Items", Keys::Time::Menu::Cities, Items,
            Array, timeCities(), Application,
            "The cities in the time menu.")
QRV_SETTING("Time.Menu.Cities.Type", Keys::Time::Menu::Cities, Type,
            Integer, 0, Application,
            "The type of the cities in the time menu, as a number.")
QRV_SETTING("Time.Menubar.Clocks", Keys::Time::Menubar, Clocks,
            Array, byClockRule, Profile,
            "The clocks in the menu bar.")
QRV_SETTING("Time.Menubar.FlashSeperators", Keys::Time::Menubar, FlashSeperators,
            Integer, 0, Application,
            "Whether the separators of the clocks in the menu bar flash: 1 or 0.")
QRV_SETTING("UpdateFrequency", Keys, UpdateFrequency,
            Integer, 1, Application,
            "How often readings are updated, as a number.")
QRV_SETTING("Updater.AutomaticallyCheck", Keys::Updater, AutomaticallyCheck,
            Boolean, true, Application,
            "Whether updates are checked for automatically.")
QRV_SETTING("Updater.AutomaticallyInstall", Keys::Updater, AutomaticallyInstall,
            Boolean, true, Application,
            "Whether updates are installed automatically.")
QRV_SETTING("Weather.Global.Location", Keys::Weather::Global, Location,
            Dictionary, location(-7), Application,
            "The place of the weather readings.")
QRV_SETTING("Weather.Menu.Forecast.Graph.1", Keys::Weather::Menu::Forecast::Graph, N1,
            String, "windspeed", Application,
            "What graph 1 of the weather forecast shows.")
QRV_SETTING("Weather.Menu.Forecast.Graph.2", Keys::Weather::Menu::Forecast::Graph, N2,
            String, "humidity", Application,
            "What graph 2 of the weather forecast shows.")
QRV_SETTING("Weather.Menubar.Temperature.Decimals", Keys::Weather::Menubar::Temperature, Decimals,
            Integer, 0, Application,
            "How many decimals a temperature has in the weather item of the menu bar.")

// clang-format on

#undef QRV_SETTING
/// @endcond
