// SPDX-License-Identifier: MIT
// The built-in defaults: the values of `KnownSettingsTable.h`, which names the constants of this
// source, and those of the clocks, which depend on the user's locale.
//
// Whether a setting is a boolean or the integer 0 or 1 is part of its default: settings files hold
// values of that kind, and a write is compared with it. Arrays and dictionaries are immutable,
// created once and shared by all readers and by every call of loadDefaults: a host may write a
// value that it has read under another key path, and a change there must not reach the default.

#include <algorithm>
#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "Platform/Machine/UserLocale.h"
#include "Platform/Values/ImmutableContainers.h"
#include "QRVSettings/ClockRule.h"
#include "QRVSettings/QRVKeys.h"
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

NSArray networkMenuState() {
    return {menuItem("network-ping", false), menuItem("network-interfaces-notconnected", false)};
}

NSArray disksMenuState() {
    return arrayOf(menuItem("disks-removable", false));
}

NSArray combinedItems() {
    return {"cpu-cpu",           "memory-overview",  "disks-physical",
            "network-bandwidth", "sensors-overview", "battery-combined"};
}

NSArray combinedDisks() {
    return arrayOf({{"boot", true}});
}

NSArray combinedCities() {
    return arrayOf(location(-7));
}

NSArray timeCities() {
    return {location(-7), location(-6)};
}

NSArray pingItems() {
    return arrayOf({{"address", pingAddress}});
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
        {Keys::Time::Menubar::Clocks.keyPath(), clocksOfOneLine(clockLine)},
        {Keys::Time::Menu::Cities::Format::N1::Line1.keyPath(), cityLine},
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

NSArray offsetLine() {
    return arrayOf(token("offset2"));
}

/// In the place of a default that `makeClockDefaults` gives.
constexpr NSNull byClockRule;

// NOLINTNEXTLINE(readability-function-size): a table, with a line for each setting
Table makeFixedDefaults() {
    Table table = {
#define QRV_SETTING(keyPath, levels, name, kind, byDefault, scope, sentence) {keyPath, byDefault},
#include "QRVSettings/KnownSettingsTable.h"
    };
    std::erase_if(table, [](const Default& row) { return row.value.isNull(); });
    return table;
}

Table makeTable(ClockRule rule) {
    Table table = makeFixedDefaults();
    for (const Default& clock : makeClockDefaults(rule)) {
        const auto place = std::ranges::find(table, clock.keyPath, &Default::keyPath);
        place->value = clock.value;
    }
    return table;
}

/// The dictionary of these rows below the first `start` characters of their key paths, which are
/// the same in all of them. Rows are sorted: those of one level stand together.
NSDictionary levelOf(std::span<const Default> rows, std::size_t start) {
    std::vector<QRVPlatform::KeyedValue> entries;
    entries.reserve(rows.size());
    while (!rows.empty()) {
        const auto& [keyPath, value] = rows.front();
        const std::size_t end = keyPath.find('.', start);
        const std::string_view key = keyPath.substr(start, end - start);
        std::size_t count = 1;
        if (end == keyPath.npos) {
            entries.push_back({key, value});
        } else {
            const std::string_view prefix = keyPath.substr(0, end + 1);
            while (count < rows.size() && rows[count].keyPath.starts_with(prefix)) ++count;
            entries.push_back({key, levelOf(rows.first(count), end + 1)});
        }
        rows = rows.subspan(count);
    }
    return QRVPlatform::immutableDictionary(entries);
}

/// Never destroyed: readers may hold the constants while the process exits.
const NSDictionary& defaultsFor(ClockRule rule) {
    static auto& defaults = *new std::map<ClockRule, NSDictionary>;
    const auto known = defaults.find(rule);
    return known != defaults.end()
               ? known->second
               : defaults.emplace(rule, levelOf(makeTable(rule), 0)).first->second;
}

}  // namespace

void QRVSettings::loadDefaults() {
    requireHostThread();
    QRVInside::restoreAppearance();
    QRVInside::checkMachineIdentity();
    // No read finds the table of an earlier call from here on.
    setDefaults(NSMutableDictionary());
    const ClockRule rule = QRVInside::clockRuleForPattern(
        QRVPlatform::shortTimePattern(QRVPlatform::userTimeLocale()));
    const NSMutableDictionary defaults = defaultsFor(rule).mutableCopy();
    setDefaults(defaults);
    QRVInside::laySiteOver(defaults);
}
