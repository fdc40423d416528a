// SPDX-License-Identifier: MIT
// What is known of each setting: the table, compared with the defaults and with what the store
// does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVKnownSettings.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using Kind = PropertyListValue::Kind;
using Scope = QRVSettingScope;

namespace {

void loadDefaults() {
    MachineSupport::beMachine("1", "M");
    QRVSettings::sharedSettings().loadDefaults();
}

bool isColorText(const PropertyListValue& value) {
    return value.isString() && std::ranges::count(value.stringValue(), ' ') == 3;
}

}  // namespace

TEST(KnownSettings, AreSortedAndEachThereOnce) {
    const auto known = QRVKnownSettings();
    EXPECT_EQ(known.size(), 97U);
    for (std::size_t index = 1; index < known.size(); ++index)
        EXPECT_LT(known[index - 1].keyPath, known[index].keyPath);
}

TEST(KnownSettings, HaveEveryDefaultWithItsKind) {
    loadDefaults();
    std::size_t defaults = 0;
    for (const QRVKnownSetting& setting : QRVKnownSettings()) {
        const PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(setting.keyPath);
        const bool isLevelOfDefaults = setting.keyPath == QRVStoreKeyPaths::fans;
        EXPECT_EQ(setting.hasDefault, !byDefault.isNull() && !isLevelOfDefaults) << setting.keyPath;
        if (!setting.hasDefault) continue;
        ++defaults;
        EXPECT_EQ(byDefault.kind(), setting.storedKind()) << setting.keyPath;
        EXPECT_EQ(isColorText(byDefault), setting.kind == Kind::Color) << setting.keyPath;
    }
    EXPECT_EQ(defaults, 87U);
}

TEST(KnownSettings, IncludeThoseThatTheStoreUsesWithoutADefault) {
    for (const std::string_view keyPath :
         {QRVStoreKeyPaths::device, QRVStoreKeyPaths::model,
          QRVStoreKeyPaths::combinedItemsMigrated, QRVStoreKeyPaths::profilesMigrated,
          QRVStoreKeyPaths::availableProfile, QRVStoreKeyPaths::currentAppearance,
          QRVStoreKeyPaths::combinedItems, QRVStoreKeyPaths::primaryInterface,
          QRVStoreKeyPaths::fans, QRVStoreKeyPaths::profileSensors}) {
        const QRVKnownSetting* setting = QRVKnownSettingAt(keyPath);
        ASSERT_NE(setting, nullptr) << keyPath;
        EXPECT_EQ(setting->keyPath, keyPath);
        EXPECT_FALSE(setting->hasDefault) << keyPath;
    }
}

TEST(KnownSettings, AreExplainedInASentenceEach) {
    std::set<std::string_view> sentences;
    for (const QRVKnownSetting& setting : QRVKnownSettings()) {
        EXPECT_THAT(std::string(setting.sentence), testing::MatchesRegex("[A-Z][^.]*[.]"))
            << setting.keyPath;
        EXPECT_TRUE(sentences.insert(setting.sentence).second) << setting.sentence;
        const bool isOnOrOff = setting.sentence.starts_with("Whether ");
        if (setting.kind == Kind::Boolean && setting.scope != Scope::Record) {
            EXPECT_TRUE(isOnOrOff) << setting.keyPath;
        }
        EXPECT_EQ(setting.kind == Kind::Integer && isOnOrOff,
                  setting.sentence.ends_with(": 1 or 0."))
            << setting.keyPath;
    }
}

TEST(KnownSettings, AreFoundByPlainKeyPathAndBelowAProfile) {
    const QRVKnownSetting* setting = QRVKnownSettingAt("CPU.Menubar.Enabled");
    ASSERT_NE(setting, nullptr);
    EXPECT_EQ(setting->keyPath, "CPU.Menubar.Enabled");
    EXPECT_EQ(setting->kind, Kind::Boolean);
    EXPECT_EQ(setting->scope, Scope::Profile);
    EXPECT_EQ(QRVKnownSettingAt("Profiles.Settings.work.CPU.Menubar.Enabled"), setting);
    for (const char* other : {"CPU.Menubar.Enable", "CPU.Menubar", "", "Profiles.Settings.work",
                              "Profiles.Settings.CPU.Menubar.Enabled", "Profiles.Settings",
                              "Profiles.SettingsX.a.CPU.Menubar.Enabled"})
        EXPECT_EQ(QRVKnownSettingAt(other), nullptr) << other;
    EXPECT_EQ(QRVKnownSettingAt(nullptr), nullptr);
    for (const QRVKnownSetting& known : QRVKnownSettings())
        EXPECT_EQ(QRVKnownSettingAt(known.keyPath), &known) << known.keyPath;
}

TEST(KnownSettings, LoseTheProfileOfTheirKeyPath) {
    EXPECT_EQ(QRVPlainKeyPath("Profiles.Settings.work.CPU.Menubar"), "CPU.Menubar");
    EXPECT_EQ(QRVPlainKeyPath("Profiles.Settings.work."), "");
    EXPECT_EQ(QRVPlainKeyPath("Profiles.Settings.work"), "Profiles.Settings.work");
    EXPECT_EQ(QRVPlainKeyPath("Profiles.Settings."), "Profiles.Settings.");
    EXPECT_EQ(QRVPlainKeyPath("CPU.Menubar"), "CPU.Menubar");
    EXPECT_EQ(QRVPlainKeyPath(nullptr), "");
}

TEST(KnownSettings, AreOfAProfileExactlyWhereTheMigrationCopiesThemThere) {
    MachineSupport::beMachine("1", "M");
    NSMutableDictionary tree;
    for (const QRVKnownSetting& setting : QRVKnownSettings())
        if (setting.scope != Scope::Record && setting.kind != Kind::Dictionary)
            NSDictionaryQRV::setObjectAtKeyPath(tree, "value", setting.keyPath);
    StoreSupport::writeSettings(tree);
    QRVSettings::sharedSettings().prepare();
    for (const QRVKnownSetting& setting : QRVKnownSettings()) {
        const std::string inProfile = "Profiles.Settings.default." + std::string(setting.keyPath);
        const bool isCopied = !QRVSettingsStoredObjectForKeyPath(inProfile).isNull();
        EXPECT_EQ(isCopied, setting.scope == Scope::Profile) << setting.keyPath;
    }
}

TEST(ScopeOfAKeyPath, IsToldForUnknownKeyPathsToo) {
    EXPECT_EQ(QRVScopeOfKeyPath("Weather.Menubar.Enabled"), Scope::Profile);
    EXPECT_EQ(QRVScopeOfKeyPath("Profiles.Settings.a.Weather.Menubar.Items"), Scope::Profile);
    EXPECT_EQ(QRVScopeOfKeyPath("Sensors.Menubar.Sensors.Fans"), Scope::Profile);
    EXPECT_EQ(QRVScopeOfKeyPath("GPU.Menubar.Enabled"), Scope::Application);
    EXPECT_EQ(QRVScopeOfKeyPath("CPU.Menubar.Mode"), Scope::Application);
    EXPECT_EQ(QRVScopeOfKeyPath("CPU.Menubar"), Scope::Application);
    EXPECT_EQ(QRVScopeOfKeyPath("Host.Menubar.Enabled"), Scope::Application);
    EXPECT_EQ(QRVScopeOfKeyPath("Device.Device"), Scope::Record);
    EXPECT_EQ(QRVScopeOfKeyPath(nullptr), Scope::Application);
}

TEST(RecordsOfTheStore, AreEverythingThatAFreshStartStores) {
    MachineSupport::beMachine("1", "M");
    QRVSettings& store = QRVSettings::sharedSettings();
    store.loadDefaults();
    store.prepare();
    QRVSettingsSetCurrentAppearance("NSAppearanceNameDarkAqua");
    NSMutableDictionary leaves;
    NSDictionaryQRV::flatten(QRVSettingsStoredValues(), leaves);
    EXPECT_EQ(leaves.count(), 8U);
    for (const auto& [keyPath, value] : leaves)
        EXPECT_TRUE(QRVIsRecordOfStore(keyPath, value)) << keyPath;
}

TEST(RecordsOfTheStore, AreKnownByTheirKeyPath) {
    for (const QRVKnownSetting& setting : QRVKnownSettings())
        EXPECT_EQ(QRVIsRecordOfStore(setting.keyPath), setting.scope == Scope::Record)
            << setting.keyPath;
    for (const char* record :
         {"Device", "Device.Other", "Device.Device.Below", "Migration", "Migration.Later",
          "Profiles.Available", "MenubarCurrentApperance", "Profiles.Settings.default.CPU.Menubar"})
        EXPECT_TRUE(QRVIsRecordOfStore(record)) << record;
    for (const char* other :
         {"Devices", "Device2.Device", "Profiles", "Profiles.Settings", "Profiles.AvailableX",
          "Profiles.Settings.default", "Profiles.Settings.default.CPU.Menubar.Enabled",
          "Profiles.Settings.work.CPU.Menubar", "CPU.Menubar", ""})
        EXPECT_FALSE(QRVIsRecordOfStore(other)) << other;
    EXPECT_FALSE(QRVIsRecordOfStore(nullptr));
}

TEST(RecordsOfTheStore, IncludeWhatItLeavesWhereThereWasNothing) {
    const NSDictionary noEntries;
    const NSArray noItems;
    EXPECT_TRUE(QRVIsRecordOfStore("Network.Menubar.Global", noEntries));
    EXPECT_TRUE(QRVIsRecordOfStore("Profiles.Settings.work.Sensors.Menubar", noEntries));
    EXPECT_FALSE(QRVIsRecordOfStore("Host.Tree", noEntries));
    EXPECT_FALSE(QRVIsRecordOfStore("Weather.Global.Location", noEntries));
    EXPECT_FALSE(QRVIsRecordOfStore("CPU.Men", noEntries));
    EXPECT_TRUE(QRVIsRecordOfStore("Combined.Menubar.Items", noItems));
    EXPECT_TRUE(QRVIsRecordOfStore("Profiles.Settings.default.Combined.Menubar.Items", noItems));
    EXPECT_FALSE(QRVIsRecordOfStore("Profiles.Settings.work.Combined.Menubar.Items", noItems));
    EXPECT_FALSE(QRVIsRecordOfStore("Combined.Menubar.Items", NSArray{1}));
    EXPECT_FALSE(QRVIsRecordOfStore("Combined.Menubar.Items"));
    EXPECT_FALSE(QRVIsRecordOfStore("Combined.Menu.Items", noItems));
    EXPECT_FALSE(QRVIsRecordOfStore("Network.Menubar.Global", NSDictionary{{"A", 1}}));
}
