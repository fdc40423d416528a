// SPDX-License-Identifier: MIT
// The built-in defaults, compared with a list, and how they follow the locale.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "QRVSettings/ClockRule.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using QRVInside::ClockRule;
using QRVInside::clockRuleForPattern;
using StoreSupport::writeSettings;

namespace {

void loadDefaults(const char* locale = "en_US.UTF-8") {
    setenv("LC_ALL", locale, 1);
    MachineSupport::beMachine("1", "M");
    QRVSettings::sharedSettings().loadDefaults();
}

PropertyListValue valueOf(const nlohmann::json& json);

PropertyListValue arrayOf(const nlohmann::json& json) {
    NSMutableArray array;
    for (const auto& element : json) array.addObject(valueOf(element));
    return array.copy();
}

PropertyListValue dictionaryOf(const nlohmann::json& json) {
    NSMutableDictionary dictionary;
    for (const auto& [key, element] : json.items())
        dictionary.setObjectForKey(valueOf(element), key);
    return dictionary.copy();
}

PropertyListValue valueOf(const nlohmann::json& json) {
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number_integer()) return json.get<std::int64_t>();
    if (json.is_string()) return json.get<std::string>();
    if (json.is_array()) return arrayOf(json);
    if (json.is_object()) return dictionaryOf(json);
    throw std::runtime_error("no default is a " + std::string(json.type_name()));
}

struct ListedDefault {
    std::string rule;
    std::string keyPath;
    std::string kind;
    PropertyListValue value;
};

std::vector<ListedDefault> listedDefaults() {
    std::ifstream file(QRV_DEFAULT_SETTINGS_LIST);
    std::vector<ListedDefault> defaults;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        std::istringstream fields(line);
        ListedDefault listed;
        std::string json;
        std::getline(fields, listed.rule, '\t');
        std::getline(fields, listed.keyPath, '\t');
        std::getline(fields, listed.kind, '\t');
        std::getline(fields, json);
        listed.value = valueOf(nlohmann::json::parse(json));
        defaults.push_back(listed);
    }
    return defaults;
}

std::string kindOf(const PropertyListValue& value) {
    using Kind = PropertyListValue::Kind;
    const std::map<Kind, std::string> names = {{Kind::Boolean, "boolean"},
                                               {Kind::Integer, "integer"},
                                               {Kind::String, "string"},
                                               {Kind::Array, "array"},
                                               {Kind::Dictionary, "dictionary"}};
    const auto name = names.find(value.kind());
    return name == names.end() ? "another" : name->second;
}

/// Text in which values of different kinds differ, inside containers too.
std::string exactly(const PropertyListValue& value) {
    return NSPropertyListSerialization::dataWithPropertyList(value).bytes;
}

std::size_t numberOfLeaves(const NSDictionary& tree) {
    std::size_t number = 0;
    for (const auto& [key, value] : tree)
        number += value.isDictionary() ? numberOfLeaves(value.dictionary()) : 1;
    return number;
}

/// The table is exactly what the list says for this rule.
void expectListedDefaults(const std::string& rule) {
    std::size_t number = 0;
    for (const ListedDefault& listed : listedDefaults()) {
        if (listed.rule != "*" && listed.rule != rule) continue;
        ++number;
        const PropertyListValue value = QRVSettingsDefaultForKeyPath(listed.keyPath);
        EXPECT_EQ(kindOf(value), listed.kind) << listed.keyPath;
        EXPECT_EQ(exactly(value), exactly(listed.value)) << listed.keyPath;
    }
    EXPECT_EQ(number, 87U);
    // The two locations are dictionaries of one entry each, which counts as their leaf.
    EXPECT_EQ(numberOfLeaves(QRVSettings::sharedSettings().defaults()), 87U);
}

bool isImmutableThroughout(const PropertyListValue& value) {
    if (value.isDictionary()) {
        const NSDictionary dictionary = value.dictionary();
        if (dictionary.isMutable()) return false;
        for (const auto& [key, element] : dictionary)
            if (!isImmutableThroughout(element)) return false;
    }
    if (value.isArray()) {
        const NSArray array = value.array();
        if (array.isMutable()) return false;
        for (const PropertyListValue& element : array)
            if (!isImmutableThroughout(element)) return false;
    }
    return true;
}

}  // namespace

TEST(Defaults, AreTheListedOnesInKindAndValue) {
    struct {
        const char* locale;
        const char* rule;
    } const cases[] = {
        {"en_US.UTF-8", "D"}, {"de_DE.UTF-8", "A"}, {"bg_BG.UTF-8", "B"}, {"kn_IN", "C"}};
    for (const auto& [locale, rule] : cases) {
        SCOPED_TRACE(locale);
        loadDefaults(locale);
        expectListedDefaults(rule);
    }
}

TEST(Defaults, AreNullUntilLoaded) {
    EXPECT_TRUE(QRVSettings::sharedSettings().defaults().isNull());
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("UpdateFrequency").isNull());
}

TEST(Defaults, AnswerReadsWhereNothingIsStored) {
    writeSettings(NSDictionary{});
    loadDefaults();
    const PropertyListValue width =
        QRVSettingsObjectForKeyPath("CPU.Menubar.Mode.HistoryGraph.Width");
    EXPECT_TRUE(width.isInteger());
    EXPECT_EQ(width, 40);
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Menu.THeme.Vibrancy").isBoolean());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Menu.THeme.Vibrancy"), true);
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Menu.Theme.Vibrancy").isNull());
}

TEST(Defaults, OfALevelAreADictionary) {
    loadDefaults();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Menu.Theme"),
              NSDictionary({{"Dark", "indigo"}, {"Light", "indigo"}}));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Menu.THeme"), NSDictionary({{"Vibrancy", true}}));
    const NSDictionary format =
        QRVSettingsObjectForKeyPath("Time.Menu.Cities.Format.1").dictionary();
    EXPECT_EQ(format.count(), 2U);
    EXPECT_TRUE(format.objectForKey("Line1").isArray());
    EXPECT_EQ(format.objectForKey("Flags"), true);
}

TEST(Defaults, ThatSwitchMayBeIntegers) {
    loadDefaults();
    for (const char* keyPath : {"Processes.Combine", "CPU.Global.EfficiencyCores.Visible",
                                "Network.Menubar.Mode.Status.Connected.Show",
                                "Network.Menubar.Mode.Status.NoInternet.Show",
                                "Network.Menubar.Mode.Status.NotConnected.Show",
                                "Network.Menubar.Mode.Status.NoIP.Show"}) {
        EXPECT_TRUE(QRVSettingsObjectForKeyPath(keyPath).isInteger()) << keyPath;
        EXPECT_EQ(QRVSettingsObjectForKeyPath(keyPath), 1) << keyPath;
    }
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Notifications.Enabled").isBoolean());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Notifications.Enabled"), true);
}

TEST(Defaults, WhatIsNotListedIsNull) {
    loadDefaults();
    for (const char* keyPath :
         {"Network.Menubar.Global.PrimaryInterface", "Sensors.Global.Fans.Speed",
          "MenubarCurrentApperance", "Profiles.Settings", "Menu.Theme.Vibrancy", ""}) {
        EXPECT_TRUE(QRVSettingsObjectForKeyPath(keyPath).isNull()) << keyPath;
    }
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath("Sensors.Global.Fans").isNull());
}

TEST(Defaults, WhatWasReadBeforeStaysNullUntilItsCacheEntryIsCleared) {
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("UpdateFrequency").isNull());
    loadDefaults();
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("UpdateFrequency").isNull());
    EXPECT_EQ(QRVSettingsDefaultForKeyPath("UpdateFrequency"), 1);
    QRVSettingsClearCacheForKeyPath("UpdateFrequency");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("UpdateFrequency"), 1);
}

TEST(Defaults, WithoutACacheAreThereAtOnce) {
    QRVSettings::sharedSettings().setDisableCache(true);
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("UpdateFrequency").isNull());
    loadDefaults();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("UpdateFrequency"), 1);
}

TEST(Defaults, LoadedAgainAreEqualButAnotherDictionary) {
    loadDefaults();
    const NSMutableDictionary first = QRVSettings::sharedSettings().defaults();
    loadDefaults();
    const NSMutableDictionary second = QRVSettings::sharedSettings().defaults();
    EXPECT_FALSE(first.isIdenticalTo(second));
    EXPECT_EQ(first, second);
    EXPECT_TRUE(second.isMutable());
}

TEST(Defaults, LoadedAgainAreRebuiltFromScratch) {
    loadDefaults();
    const NSMutableDictionary defaults = QRVSettings::sharedSettings().defaults();
    NSDictionaryQRV::setObjectAtKeyPath(defaults, "x", "Of.The.Host");
    NSDictionaryQRV::setObjectAtKeyPath(defaults, "x", "UpdateFrequency");
    loadDefaults();
    EXPECT_TRUE(QRVSettingsDefaultForKeyPath("Of.The.Host").isNull());
    EXPECT_EQ(QRVSettingsDefaultForKeyPath("UpdateFrequency"), 1);
}

TEST(Defaults, ArraysAndDictionariesAreSharedConstants) {
    loadDefaults();
    std::map<std::string, PropertyListValue> first;
    for (const ListedDefault& listed : listedDefaults())
        first[listed.keyPath] = QRVSettingsDefaultForKeyPath(listed.keyPath);
    loadDefaults();
    for (const auto& [keyPath, value] : first) {
        EXPECT_TRUE(isImmutableThroughout(value)) << keyPath;
        EXPECT_TRUE(QRVSettingsDefaultForKeyPath(keyPath).isIdenticalTo(value)) << keyPath;
        EXPECT_TRUE(QRVSettingsObjectForKeyPath(keyPath).isIdenticalTo(value)) << keyPath;
    }
}

TEST(Defaults, BelowTheTopAreImmutableAndSharedByTwoLoads) {
    loadDefaults();
    const NSDictionary first = QRVSettings::sharedSettings().defaults();
    loadDefaults();
    const NSDictionary second = QRVSettings::sharedSettings().defaults();
    EXPECT_TRUE(second.isMutable());
    for (const auto& [key, value] : second) {
        EXPECT_TRUE(isImmutableThroughout(value)) << key;
        EXPECT_TRUE(value.isIdenticalTo(first.objectForKey(key))) << key;
    }
}

TEST(Defaults, AreNotChangedThroughALevelThatWasReadAndWrittenIntoAProfile) {
    loadDefaults();
    QRVSettings& store = QRVSettings::sharedSettings();
    store.prepare();
    QRVSettingsSetObjectForKeyPath(QRVSettingsObjectForKeyPath("CPU"),
                                   "Profiles.Settings.work.CPU");
    store.setActiveProfile("work");
    QRVSettingsProfileSetObjectForKeyPath(false, "CPU.Menubar.Enabled");
    EXPECT_EQ(QRVSettingsDefaultForKeyPath("CPU.Menubar.Enabled"), true);
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("CPU.Menubar.Enabled"), false);
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("CPU.Menu.Processes.Count"), 5);
    QRVSettingsSetObjectForKeyPath(false, "CPU.Menubar.Enabled");
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("CPU.Menubar.Enabled"), false);
    loadDefaults();
    EXPECT_EQ(QRVSettingsDefaultForKeyPath("CPU.Menubar.Enabled"), true);
}

TEST(Defaults, OfTheTableThatAHostChangesAreItsOwn) {
    loadDefaults();
    const NSMutableDictionary defaults = QRVSettings::sharedSettings().defaults();
    const PropertyListValue cpu = defaults.objectForKey("CPU");
    NSDictionaryQRV::setObjectAtKeyPath(defaults, false, "CPU.Menubar.Enabled");
    EXPECT_EQ(QRVSettingsDefaultForKeyPath("CPU.Menubar.Enabled"), false);
    EXPECT_EQ(NSDictionaryQRV::objectAtKeyPath(cpu.dictionary(), "Menubar.Enabled"), true);
}

TEST(Defaults, AreNeverWrittenToTheFile) {
    loadDefaults();
    StoreSupport::finishSaves();
    const NSDictionary file = StoreSupport::fileTree();
    EXPECT_EQ(file.count(), 1U);
    EXPECT_EQ(file.objectForKey("Device").dictionary().count(), 2U);
}

TEST(Defaults, AWriteOfTheDefaultLeavesTheFileWithoutTheKey) {
    loadDefaults();
    QRVSettingsSetObjectForKeyPath(false, "CPU.Menubar.Enabled");
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("CPU.Menubar.Enabled"), false);
    QRVSettingsSetObjectForKeyPath(true, "CPU.Menubar.Enabled");
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath("CPU.Menubar.Enabled").isNull());
    QRVSettingsSetObjectForKeyPath(1, "CPU.Menubar.Enabled");
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath("CPU.Menubar.Enabled").isInteger())
        << "another kind than the default's";
    QRVSettingsSetObjectForKeyPath(true, "Processes.Combine");
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath("Processes.Combine").isBoolean());
}

TEST(Defaults, BuildingThemLogsNothing) {
    const StoreSupport::LogMessages messages;
    const StoreSupport::SystemLogLines lines;
    loadDefaults();
    EXPECT_TRUE(messages.messages().empty());
    EXPECT_TRUE(lines.lines().empty());
}

TEST(DefaultClock, FollowsTheUsersLocaleAtEachCall) {
    const auto hour = [] {
        return QRVSettingsDefaultForKeyPath("Time.Menu.Cities.Format.1.Line1")
            .array()
            .objectAtIndex(0)
            .dictionary()
            .objectForKey("format");
    };
    loadDefaults("de_DE.UTF-8");
    EXPECT_EQ(hour(), "HH");
    loadDefaults("bg_BG.UTF-8");
    EXPECT_EQ(hour(), "H");
    loadDefaults("kn_IN");
    EXPECT_EQ(hour(), "hh");
    loadDefaults("C");
    EXPECT_EQ(hour(), "h");
    loadDefaults("POSIX");
    EXPECT_EQ(hour(), "h");
    loadDefaults("fr_CA.UTF-8");
    EXPECT_EQ(hour(), "HH");
    loadDefaults("xx_YY");
    EXPECT_EQ(hour(), "HH");
}

TEST(DefaultClock, TakesTheFirstVariableThatNamesALocale) {
    setenv("LC_TIME", "bg_BG", 1);
    setenv("LANG", "kn_IN", 1);
    loadDefaults("de_DE");
    expectListedDefaults("A");
    loadDefaults("");
    expectListedDefaults("B");
    unsetenv("LC_TIME");
    loadDefaults("");
    expectListedDefaults("C");
    unsetenv("LANG");
    loadDefaults("");
    expectListedDefaults("D");
}

TEST(ClockRule, IsTheFirstHourFieldThatThePatternHolds) {
    EXPECT_EQ(clockRuleForPattern("HH:mm"), ClockRule::TwentyFourHoursTwoDigits);
    EXPECT_EQ(clockRuleForPattern("HH 'h' mm"), ClockRule::TwentyFourHoursTwoDigits);
    EXPECT_EQ(clockRuleForPattern("hh HH"), ClockRule::TwentyFourHoursTwoDigits);
    EXPECT_EQ(clockRuleForPattern("H:mm"), ClockRule::TwentyFourHours);
    EXPECT_EQ(clockRuleForPattern("hh H"), ClockRule::TwentyFourHours);
    EXPECT_EQ(clockRuleForPattern("hh:mm a"), ClockRule::TwelveHoursTwoDigits);
    EXPECT_EQ(clockRuleForPattern("a h:mm"), ClockRule::TwelveHours);
}

TEST(ClockRule, IsTwelveHoursForAnyOtherPattern) {
    for (const char* pattern : {"K:mm a", "k:mm", "KK:mm", "kk:mm", "", "Bh:mm", "mm"})
        EXPECT_EQ(clockRuleForPattern(pattern), ClockRule::TwelveHours) << pattern;
}
