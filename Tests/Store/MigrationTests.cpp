// SPDX-License-Identifier: MIT
// Settings of earlier versions, and what a migration leaves unchanged.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/StoreSupport.h"

using StoreSupport::setDefaults;
using StoreSupport::writeSettings;

namespace {

constexpr const char* items = "Combined.Menubar.Items";
constexpr const char* profileItems = "Profiles.Settings.default.Combined.Menubar.Items";

NSDictionary item(const PropertyListValue& source) {
    return {{"source", source}};
}

NSDictionary tree(const char* first, const char* second, const char* third,
                  const PropertyListValue& value) {
    return {{first, NSDictionary{{second, NSDictionary{{third, value}}}}}};
}

NSDictionary profileWithItems(const NSArray& list) {
    return {{"Profiles",
             NSDictionary{{"Settings",
                           NSDictionary{{"default", tree("Combined", "Menubar", "Items", list)}}}}},
            {"Migration", NSDictionary{{"Profiles", true}}}};
}

PropertyListValue stored(QRVKeyPath keyPath) {
    return QRVSettingsStoredObjectForKeyPath(keyPath);
}

/// In a batch, so that the records tell what was written.
std::vector<std::string> migrate() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setActiveProfile("default");
    store.setInBatchSave(true);
    store.batchLogChanges().removeAllObjects();
    store.migrate();
    std::vector<std::string> keys;
    for (const PropertyListValue& record : store.batchLogChanges())
        keys.push_back(record.dictionary().objectForKey("key").stringValue());
    return keys;
}

}  // namespace

TEST(Migration, WithBothFlagsSetWritesNothing) {
    writeSettings(NSDictionary{
        {"Migration", NSDictionary{{"CombinedPowerItems", false}, {"Profiles", "any"}}},
        {"Combined", tree("Menubar", "Items", "x", 1)}});
    EXPECT_THAT(migrate(), testing::ElementsAre());
}

TEST(Migration, DoneTwiceChangesNothingMore) {
    writeSettings(tree("CPU", "Menubar", "Enabled", true));
    EXPECT_EQ(migrate().size(), 4U);
    const NSDictionary after = QRVSettingsStoredValues();
    EXPECT_THAT(migrate(), testing::ElementsAre());
    EXPECT_EQ(QRVSettingsStoredValues(), after);
}

TEST(Migration, MergesItemsOfTheOldKindIntoOneOfTheNew) {
    const NSDictionary three{{"source", 3}, {"label", "x"}};
    const NSArray list = {three, item(8), item(5), NSDictionary{{"source", 8}, {"label", "y"}},
                          item(21)};
    writeSettings(profileWithItems(list));
    EXPECT_THAT(migrate(), testing::ElementsAre(items, "Migration.CombinedPowerItems"));
    EXPECT_EQ(stored(items), NSArray({three, item(21), item(5), item(21)}));
    EXPECT_EQ(stored(profileItems), list) << "the profile's own list stays";
    EXPECT_EQ(stored("Migration.CombinedPowerItems"), true);
    EXPECT_TRUE(stored("Migration.CombinedPowerItems").isBoolean());
}

TEST(Migration, TakesTheSourceAsAnInteger) {
    const NSArray list = {item("8"), item(8.0), NSDictionary{{"label", 8}}, item("x8")};
    writeSettings(profileWithItems(list));
    migrate();
    EXPECT_EQ(stored(items), NSArray({item(21), NSDictionary{{"label", 8}}, item("x8")}));
}

TEST(Migration, AnEqualListIsNotWrittenButTheFlagIs) {
    writeSettings(profileWithItems({item(3), item(21)}));
    EXPECT_THAT(migrate(), testing::ElementsAre("Migration.CombinedPowerItems"));
    EXPECT_TRUE(stored(items).isNull());
}

TEST(Migration, WithoutAListInTheProfileAnEmptyOneReplacesThePlainOne) {
    writeSettings(tree("Combined", "Menubar", "Items", NSArray({item(3), item(8)})));
    migrate();
    EXPECT_EQ(stored(items), NSArray());
    EXPECT_EQ(stored(profileItems), NSArray()) << "and is copied into the profile";
}

TEST(Migration, TheListMayBeTheDefaultOfThePlainKeyPath) {
    setDefaults(tree("Combined", "Menubar", "Items", NSArray({item(8), item(1)})));
    migrate();
    EXPECT_EQ(stored(items), NSArray({item(21), item(1)}));
}

TEST(Migration, MovesMenubarSettingsIntoTheDefaultProfile) {
    writeSettings(tree("CPU", "Menubar", "Enabled", true));
    EXPECT_THAT(migrate(), testing::ElementsAre(items, "Migration.CombinedPowerItems", "Profiles",
                                                "Migration.Profiles"));
    EXPECT_EQ(stored("Profiles.Settings.default.CPU.Menubar.Enabled"), true);
    EXPECT_EQ(stored("Profiles.Settings.default.Memory.Menubar"), NSDictionary());
    EXPECT_EQ(stored("Profiles.Available"), NSDictionary({{"identifier", "default"}}));
    EXPECT_EQ(stored("CPU.Menubar.Enabled"), true) << "the old entry stays";
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("CPU.Menubar.Enabled"), true);
    EXPECT_EQ(stored("Migration.Profiles"), true);
}

TEST(Migration, CopiesTheKnownKeysOfTheKnownModulesOnly) {
    const NSDictionary known{{"Enabled", false},    {"Items", NSArray{1}},
                             {"Clocks", NSArray{}}, {"Disks", "d"},
                             {"Sensors", 1},        {"Batteries", NSDictionary{{"a", 1}}},
                             {"DetailedState", 2.5}};
    const NSMutableDictionary menubar = known.mutableCopy();
    menubar.setObjectForKey(1, "Mode");
    const NSMutableDictionary old;
    const NSMutableDictionary expected;
    for (const char* module : {"CPU", "Network", "Battery", "Weather", "Disks", "Sensors",
                               "Combined", "Memory", "Time"}) {
        old.setObjectForKey(NSDictionary{{"Menubar", menubar}, {"Menu", NSDictionary{{"x", 1}}}},
                            module);
        expected.setObjectForKey(NSDictionary{{"Menubar", known}}, module);
    }
    old.setObjectForKey(NSDictionary{{"Menubar", menubar}}, "GPU");
    old.setObjectForKey(NSDictionary{{"CombinedPowerItems", true}}, "Migration");
    writeSettings(old);
    EXPECT_THAT(migrate(), testing::ElementsAre("Profiles", "Migration.Profiles"));
    EXPECT_EQ(stored("Profiles.Settings.default"), expected);
}

TEST(Migration, OfTheProfilesDoesNotCopyDefaults) {
    setDefaults(tree("CPU", "Menubar", "Enabled", true));
    migrate();
    EXPECT_EQ(stored("Profiles.Settings.default.CPU.Menubar"), NSDictionary());
}

TEST(Migration, ReplacesWhateverStoodAtProfiles) {
    writeSettings(
        NSDictionary{{"Profiles", NSDictionary{{"Settings", NSDictionary{{"work", 1}}}}}});
    migrate();
    EXPECT_TRUE(stored("Profiles.Settings.work").isNull());
}

TEST(Migration, OneFlagIsReadFromAllLayersAndTheOtherFromTheFile) {
    setDefaults({{"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}}});
    // The flag that is written equals its default, so it never reaches the file.
    EXPECT_THAT(migrate(), testing::ElementsAre("Profiles", "Migration.Profiles"));
}

TEST(Migration, TakesValuesOfOtherShapesForMissing) {
    writeSettings(NSDictionary{{"CPU", 1}, {"Memory", NSDictionary{{"Menubar", "flat"}}}});
    const StoreSupport::SystemLogLines lines;
    migrate();
    EXPECT_EQ(stored("Profiles.Settings.default.CPU.Menubar"), NSDictionary());
    EXPECT_EQ(stored("Profiles.Settings.default.Memory.Menubar"), NSDictionary());
}

TEST(Migration, IsNeverLeftToTheHost) {
    EXPECT_FALSE(QRVSettingsMigrationNeeded());
    QRVSettingsPerformMigration();
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
    migrate();
    EXPECT_FALSE(QRVSettingsMigrationNeeded());
}
