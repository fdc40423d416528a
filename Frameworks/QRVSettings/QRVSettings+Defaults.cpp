// SPDX-License-Identifier: MIT
// The built-in defaults.
//
// Whether a setting is a boolean or the integer 0 or 1 is part of its default: settings files hold
// values of that kind, and a write is compared with it. Arrays and dictionaries are immutable,
// created once and shared by all readers and by every call of loadDefaults: a host may write a
// value that it has read under another key path, and a change there must not reach the default.

#include <map>
#include <string_view>
#include <vector>

#include "Platform/Machine/UserLocale.h"
#include "QRVSettings/ClockRule.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings+BeforeDefaults.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Site.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::ClockRule;
using QRVInside::requireHostThread;

namespace {

struct Default {
    std::string_view keyPath;
    PropertyListValue value;
};
using Table = std::vector<Default>;

NSArray arrayOf(const NSDictionary& dictionary) {
    return NSArray::arrayWithObject(dictionary);
}

NSDictionary location(int identifier) {
    return {{"identifier", identifier}};
}

NSDictionary menuItem(std::string_view key, bool isEnabled) {
    return {{"key", key}, {"enabled", isEnabled}};
}

NSArray notificationItems() {
    return {
        NSDictionary{{"uuid", "4e1abe18-f00e-4f2f-9a69-1ee6d04643f4"},
                     {"enabled", true},
                     {"source", "battery-low"},
                     {"type", "alert"}},
        NSDictionary{{"uuid", "7ad71b8c-c416-49c9-a5bc-41f76628c118"},
                     {"enabled", true},
                     {"source", "daylightsaving"},
                     {"type", "alert"},
                     {"time", 0}},
        NSDictionary{{"uuid", "3e5ac3eb-5a05-4b12-82fe-a51860e5851d"},
                     {"enabled", false},
                     {"source", "temperature"},
                     {"type", "banner"},
                     {"time", 30},
                     {"value", 95}},
    };
}

constexpr const char* red = "1 0.321 0.341 1";
constexpr const char* orange = "0.968 0.509 0.105 1";
constexpr const char* yellow = "1 0.776 0 1";
constexpr const char* green = "0.384 0.729 0.274 1";

/// A public resolver that answers pings everywhere.
constexpr const char* pingAddress = "9.9.9.9";

// NOLINTNEXTLINE(readability-function-size): a table, with a line for each default
Table makeFixedDefaults() {
    return {
        // The keys "THeme" and "FlashSeperators" are misspelt in every settings file there is.
        {"Menu.Theme.Dark", "indigo"},
        {"Menu.Theme.Light", "indigo"},
        {"Menu.THeme.Vibrancy", true},
        {"Updater.AutomaticallyCheck", true},
        {"Updater.AutomaticallyInstall", true},
        {"CPU.Menubar.Enabled", true},
        {"Memory.Menubar.Enabled", true},
        {"Disks.Menubar.Enabled", true},
        {"Network.Menubar.Enabled", true},
        {"Sensors.Menubar.Enabled", true},
        {"CPU.Menubar.Mode.HistoryGraph.Width", 40},
        {"Memory.Menubar.Mode.HistoryGraph.Width", 40},
        {"DiskActivity.Menubar.Mode.HistoryGraph.Width", 40},
        {"Network.Menubar.Mode.HistoryGraph.Width", 40},
        {"GPU.Menubar.Mode.HistoryGraph.Width", 40},
        {"Battery.Menubar.Mode.HorizontalGraph.Graph.Draining.Low.Dark.Color", red},
        {"Battery.Menubar.Mode.HorizontalGraph.Graph.Draining.Low.Light.Color", red},
        {"UpdateFrequency", 1},
        {"Menubar.Style", 0},
        {"Processes.Combine", 1},
        {"Notifications.Enabled", true},
        {"Notifications.Items", notificationItems()},
        {"CPU.Menu.Processes.Count", 5},
        {"CPU.Menu.Processes.Format", 0},
        {"CPU.Global.EfficiencyCores.Visible", 1},
        {"CPU.Global.HyperthreadingCores.Visible", 0},
        {"CPU.Menubar.Mode.Global.Graph.Breakdown", 0},
        {"Memory.Menu.Processes.Count", 5},
        {"Memory.Menu.Processes.Format", 0},
        {"Memory.Menubar.Mode.UsedFree.ShowLabels", 1},
        {"Disks.Menu.Processes.Count", 5},
        {"Disks.Menu.Processes.Sorting", 0},
        {"Disks.Global.Purgeable.Visible", 0},
        {"Disks.Global.Activity.Graph.Type", 0},
        {"Disks.Menu.Activity.Mode", 0},
        {"Disks.Menubar.Mode.UsedFree.ShowLabels", 1},
        {"DiskActivity.Menubar.Mode.ReadWrite.ShowLabels", 1},
        {"Network.Menubar.Global.Decimals.MB", 0},
        {"Network.Menu.Processes.Count", 5},
        {"Network.Menu.Processes.Sorting", 0},
        {"Network.Global.Bandwidth.Graph.Type", 0},
        {"Network.Menu.Bandwidth.Mode", 0},
        {"Network.Global.Bandwidth.Format", 0},
        {"Network.Menubar.Mode.Status.Connected.Color", green},
        {"Network.Menubar.Mode.Status.NotConnected.Color", red},
        {"Network.Menubar.Mode.Status.NoInternet.Color", orange},
        {"Network.Menubar.Mode.Status.NoIP.Color", yellow},
        {"Network.Menubar.Mode.Status.Connected.Show", 1},
        {"Network.Menubar.Mode.Status.NoInternet.Show", 1},
        {"Network.Menubar.Mode.Status.NotConnected.Show", 1},
        {"Network.Menubar.Mode.Status.NoIP.Show", 1},
        {"Network.Menubar.Mode.VPN.Connected.Show", true},
        {"Network.Menubar.Mode.VPN.Disconnected.Show", true},
        {"Network.Menubar.Mode.Value.ShowArrows", true},
        {"Network.Global.Addresses.Public.IPv4.Enabled", true},
        {"Network.Global.Addresses.Public.IPv6.Enabled", true},
        {"Network.Global.Addresses.Private.IPv4.Enabled", true},
        {"Network.Global.Addresses.Private.IPv6.Secured.Enabled", true},
        {"Network.Global.Addresses.Private.IPv6.Temporary.Enabled", false},
        {"Network.Global.Addresses.Private.IPv6.Dynamic.Enabled", false},
        {"Battery.Menubar.DetailedState", 0},
        {"Memory.Menubar.Mode.Global.Type", 0},
        {"Time.Menu.Cities.Type", 0},
        {"Time.Menu.Calendar.Type", 0},
        {"Time.Menubar.FlashSeperators", 0},
        {"Sensors.Global.Fans.Curve.Sync", true},
        {"Sensors.Global.Fans.Curve.Manual.Sync", true},
        {"Sensors.Global.MonitorSmart", true},
        {"Sensors.Global.MonitorFrequency", true},
        {"Weather.Menu.Forecast.Graph.1", "windspeed"},
        {"Weather.Menu.Forecast.Graph.2", "humidity"},
        {"Astronomical.Global.Location", location(-7)},
        {"Weather.Global.Location", location(-7)},
        {"Time.Menu.Cities.Items", NSArray{location(-7), location(-6)}},
        {"Combined.Menu.Cities.Items", arrayOf(location(-7))},
        {"Network.Menu.Ping.Items", arrayOf({{"address", pingAddress}})},
        {"Network.Menubar.Ping.Address", pingAddress},
        {"Weather.Menubar.Temperature.Decimals", 0},
        {"Network.Menu.State", NSArray{menuItem("network-ping", false),
                                       menuItem("network-interfaces-notconnected", false)}},
        {"Disks.Menu.State", arrayOf(menuItem("disks-removable", false))},
        {"Combined.Menu.Items",
         NSArray{"cpu-cpu", "memory-overview", "disks-physical", "network-bandwidth",
                 "sensors-overview", "battery-combined"}},
        {"Combined.Menu.Disks.Items", arrayOf({{"boot", true}})},
    };
}

NSDictionary token(std::string_view format) {
    return {{"type", "token"}, {"format", format}};
}

NSDictionary literal(std::string_view text) {
    return {{"type", "string"}, {"value", text}};
}

NSArray clocksOfOneLine(const NSArray& items) {
    return arrayOf({{"lines", 1}, {"line1", NSDictionary{{"items", items}}}});
}

Table clockDefaults(const NSArray& clockLine, const NSArray& cityLine) {
    return {
        {"Time.Menubar.Clocks", clocksOfOneLine(clockLine)},
        {"Time.Menu.Cities.Format.1.Line1", cityLine},
    };
}

Table clockDefaultsOf24Hours(std::string_view hour) {
    const NSArray line = {token(hour), literal(":"), token("mm")};
    return clockDefaults(line, line);
}

/// In the menu bar there is no room for "am" and "pm".
Table clockDefaultsOf12Hours(std::string_view hour) {
    return clockDefaults({token(hour), literal(":"), token("mm")},
                         {token(hour), literal(":"), token("mm"), literal(" "), token("a")});
}

Table makeClockDefaults(ClockRule rule) {
    switch (rule) {
        case ClockRule::TwentyFourHoursTwoDigits:
            return clockDefaultsOf24Hours("HH");
        case ClockRule::TwentyFourHours:
            return clockDefaultsOf24Hours("H");
        case ClockRule::TwelveHoursTwoDigits:
            return clockDefaultsOf12Hours("hh");
        case ClockRule::TwelveHours:
            return clockDefaultsOf12Hours("h");
    }
    return {};
}

Table makeCityDefaults() {
    return {
        {"Time.Menu.Cities.Format.0.Line1", arrayOf(token("offset2"))},
        {"Time.Menu.Cities.Format.2.Line1", arrayOf(token("offset2"))},
        {"Time.Menu.Cities.Format.1.Flags", true},
    };
}

/// Never destroyed: readers may hold the constants while the process exits.
const Table& fixedDefaults() {
    static const auto& table = *new Table(makeFixedDefaults());
    return table;
}

const Table& clockDefaultsFor(ClockRule rule) {
    using Rules = std::vector<Table>;
    static const auto& tables = *new Rules{makeClockDefaults(ClockRule::TwentyFourHoursTwoDigits),
                                           makeClockDefaults(ClockRule::TwentyFourHours),
                                           makeClockDefaults(ClockRule::TwelveHoursTwoDigits),
                                           makeClockDefaults(ClockRule::TwelveHours)};
    return tables[static_cast<std::size_t>(rule)];
}

const Table& cityDefaults() {
    static const auto& table = *new Table(makeCityDefaults());
    return table;
}

void store(const Table& table, const NSMutableDictionary& defaults) {
    for (const auto& [keyPath, value] : table)
        NSDictionaryQRV::setObjectAtKeyPath(defaults, value, keyPath);
}

/// An immutable dictionary of the same entries, with no mutable one among them.
NSDictionary frozen(const NSMutableDictionary& level) {
    for (const auto& [key, value] : level.copy())
        if (value.isDictionary() && value.dictionary().isMutable())
            level.setObjectForKey(frozen(value.dictionary().asMutable()), key);
    return level.copy();
}

NSDictionary makeDefaults(ClockRule rule) {
    const NSMutableDictionary defaults;
    store(fixedDefaults(), defaults);
    store(clockDefaultsFor(rule), defaults);
    store(cityDefaults(), defaults);
    return frozen(defaults);
}

/// Never destroyed, as the tables.
const NSDictionary& defaultsFor(ClockRule rule) {
    static auto& defaults = *new std::map<ClockRule, NSDictionary>;
    const auto known = defaults.find(rule);
    return known != defaults.end() ? known->second
                                   : defaults.emplace(rule, makeDefaults(rule)).first->second;
}

}  // namespace

void QRVSettings::loadDefaults() {
    requireHostThread();
    QRVInside::restoreAppearance();
    QRVInside::checkMachineIdentity();
    // Installed while it is empty, so that no read finds the table of an earlier call.
    const NSMutableDictionary defaults;
    setDefaults(defaults);
    const ClockRule rule = QRVInside::clockRuleForPattern(
        QRVPlatform::shortTimePattern(QRVPlatform::userTimeLocale()));
    for (const auto& [key, value] : defaultsFor(rule)) defaults.setObjectForKey(value, key);
    QRVInside::laySiteOver(defaults);
}
