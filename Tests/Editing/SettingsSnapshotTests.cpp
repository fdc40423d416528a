// SPDX-License-Identifier: MIT
// Snapshots of settings: what decides about values, again and again in one process.
#include "Rows/SettingsSnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Editing/RowsSupport.h"
#include "QRVSettings/QRVSettings.h"
#include "Text/JSON.h"
#include "Tool/ToolSupport.h"

using namespace Tool;
using NSDictionaryQRV::objectAtKeyPath;
using RowsSupport::migrated;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr const char* device = "Device.Device";
constexpr const char* count = "CPU.Menu.Processes.Count";

}  // namespace

TEST(SettingsSnapshot, HasWhatTheFileHoldsAndWhatTheStartMakesOfIt) {
    const NSDictionary stored = migrated({{count, 7}});
    const SettingsSnapshot snapshot = snapshotOfSettings(stored);
    EXPECT_EQ(jsonText(snapshot.stored), jsonText(stored));
    EXPECT_EQ(objectAtKeyPath(snapshot.prepared, count), PropertyListValue(7));
    EXPECT_FALSE(objectAtKeyPath(snapshot.prepared, device).isNull());
    EXPECT_TRUE(objectAtKeyPath(stored, device).isNull());
    EXPECT_EQ(objectAtKeyPath(snapshot.builtIn, count), PropertyListValue(5));
    EXPECT_TRUE(snapshot.site.isNull());
    EXPECT_EQ(jsonText(snapshot.defaults), jsonText(snapshot.builtIn));
    EXPECT_THAT(snapshot.notes, IsEmpty());
    EXPECT_EQ(snapshot.obstacle, "");
}

TEST(SettingsSnapshot, OfNoFileHasDefaultsAndRecordsAlone) {
    const SettingsSnapshot snapshot = snapshotOfSettings(nullptr);
    EXPECT_TRUE(snapshot.stored.isNull());
    EXPECT_FALSE(objectAtKeyPath(snapshot.prepared, device).isNull());
    EXPECT_EQ(objectAtKeyPath(snapshot.defaults, count), PropertyListValue(5));
}

TEST(SettingsSnapshot, HasNothingOfAnEarlierOne) {
    snapshotOfSettings(migrated({{count, 7}, {"Old.Setting", 1}}));
    EXPECT_EQ(QRVSettingsObjectForKeyPath(count), PropertyListValue(7));
    const SettingsSnapshot second = snapshotOfSettings(migrated({{count, 8}}));
    EXPECT_EQ(QRVSettingsObjectForKeyPath(count), PropertyListValue(8));
    EXPECT_TRUE(objectAtKeyPath(second.prepared, "Old.Setting").isNull());
    const SettingsSnapshot third = snapshotOfSettings(nullptr);
    EXPECT_EQ(QRVSettingsObjectForKeyPath(count), PropertyListValue(5));
    EXPECT_TRUE(objectAtKeyPath(third.prepared, count).isNull());
}

TEST(SettingsSnapshot, GathersNothingForASaveThatNeverComes) {
    const auto gathered = [] {
        snapshotOfSettings(nullptr);
        return QRVSettings::sharedSettings().batchLogChanges().count();
    };
    const std::size_t ofTheFirst = gathered();
    EXPECT_GT(ofTheFirst, 0U);
    EXPECT_EQ(gathered(), ofTheFirst);
}

TEST(SettingsSnapshot, DoesNotChangeWhatItWasGivenNorAnEarlierOne) {
    const NSMutableDictionary machine{{"Device", "another"}, {"Model", "another"}};
    const NSMutableDictionary tree{{"Device", machine}};
    const std::string given = jsonText(tree);
    const SettingsSnapshot first = snapshotOfSettings(tree);
    const std::string prepared = jsonText(first.prepared);
    EXPECT_EQ(jsonText(tree), given);
    EXPECT_EQ(jsonText(first.stored), given);
    QRVSettingsSetObjectForKeyPath("written", "Device.Other");
    EXPECT_EQ(jsonText(first.prepared), prepared);
    snapshotOfSettings(first.prepared);
    EXPECT_EQ(jsonText(first.prepared), prepared);
    machine.setObjectForKey("changed", "Model");
    EXPECT_EQ(jsonText(first.stored), given);
}

TEST(SettingsSnapshot, SharesWithTheStoredTreeWhatTheStartDoesNotChange) {
    const NSDictionary tree = RowsSupport::readAgain(migrated({{"Own.Level.A", 1}}));
    const SettingsSnapshot snapshot = snapshotOfSettings(tree);
    EXPECT_TRUE(snapshot.stored.isIdenticalTo(tree));
    EXPECT_TRUE(snapshot.prepared.objectForKey("Own").isIdenticalTo(tree.objectForKey("Own")));
}

TEST(SettingsSnapshot, TellsWhatTheStartResetsAndMigrates) {
    const SettingsSnapshot snapshot = snapshotOfSettings(
        {{"Device", NSDictionary{{"Device", "another"}}}, {"UpdateFrequency", 3}});
    EXPECT_THAT(snapshot.notes, Contains(HasSubstr("are migrated")));
}

TEST(SettingsSnapshot, SaysWhatPreventsTheStartAndHasTheDefaultsAllTheSame) {
    for (const NSDictionary& tree :
         {NSDictionary{{"Device", 5}, {count, 7}}, NSDictionary{{"Combined", 5}},
          NSDictionary{{"Migration", 5}}}) {
        const SettingsSnapshot snapshot = snapshotOfSettings(tree);
        EXPECT_THAT(snapshot.obstacle, HasSubstr("cannot start")) << jsonText(tree);
        EXPECT_EQ(jsonText(snapshot.prepared), jsonText(tree));
        EXPECT_EQ(jsonText(QRVSettingsStoredValues()), jsonText(tree));
        EXPECT_EQ(objectAtKeyPath(snapshot.builtIn, "Menu.Theme.Dark"),
                  PropertyListValue("indigo"));
        EXPECT_EQ(QRVSettingsObjectForKeyPath("Menu.Theme.Dark"), PropertyListValue("indigo"));
    }
    EXPECT_EQ(snapshotOfSettings(migrated()).obstacle, "");
}

TEST(SettingsSnapshot, ReadsTheFilesOfTheSiteEachTime) {
    EXPECT_TRUE(snapshotOfSettings(nullptr).site.isNull());
    SiteSupport::writeList({{"UpdateFrequency", 7}});
    const SettingsSnapshot snapshot = snapshotOfSettings(nullptr);
    EXPECT_EQ(objectAtKeyPath(snapshot.site, "UpdateFrequency"), PropertyListValue(7));
    EXPECT_EQ(objectAtKeyPath(snapshot.defaults, "UpdateFrequency"), PropertyListValue(7));
    EXPECT_NE(objectAtKeyPath(snapshot.builtIn, "UpdateFrequency"), PropertyListValue(7));
}

TEST(SettingsSnapshot, WritesNothing) {
    StoreSupport::writeSettings(migrated({{count, 7}}));
    const auto before = ToolSupport::snapshot(std::filesystem::current_path());
    for (int time = 0; time < 3; ++time) snapshotOfSettings(StoreSupport::fileTree());
    snapshotOfSettings(nullptr);
    QRVSettingsWaitForSaves(std::chrono::seconds(10));
    EXPECT_EQ(ToolSupport::snapshot(std::filesystem::current_path()), before);
}
