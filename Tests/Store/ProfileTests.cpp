// SPDX-License-Identifier: MIT
// Settings of the active profile.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/StoreSupport.h"

using StoreSupport::cached;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::setDefaults;
using StoreSupport::writeSettings;

namespace {

NSDictionary profiles(const NSDictionary& settings) {
    return {{"Profiles", NSDictionary{{"Settings", settings}}}};
}

void activate(const char* profile) {
    QRVSettings::sharedSettings().setActiveProfile(profile);
}

}  // namespace

TEST(Profile, TheKeyPathIsMadeOfTheActiveProfilesName) {
    activate("default");
    EXPECT_EQ(QRVSettingsProfileKeyForKey("CPU.Menubar.Enabled"),
              "Profiles.Settings.default.CPU.Menubar.Enabled");
    activate("a.b");
    EXPECT_EQ(QRVSettingsProfileKeyForKey("X"), "Profiles.Settings.a.b.X");
    EXPECT_EQ(QRVSettingsProfileKeyForKey(""), "Profiles.Settings.a.b.");
}

TEST(Profile, WithoutANameTheKeyPathHoldsTheTextOfNull) {
    EXPECT_EQ(QRVSettingsProfileKeyForKey("X"), "Profiles.Settings.(null).X");
    EXPECT_EQ(QRVSettingsProfileKeyForKey(nullptr), "Profiles.Settings.(null).(null)");
}

TEST(Profile, AWriteIsStoredBelowTheProfileAndReadAgain) {
    activate("default");
    QRVSettingsProfileSetObjectForKeyPath(5, "CPU.Width");
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("CPU.Width"), 5);
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("CPU.Width").isNull());
    finishSaves();
    EXPECT_EQ(fileTree(),
              profiles({{"default", NSDictionary{{"CPU", NSDictionary{{"Width", 5}}}}}}));
}

TEST(Profile, TheRecordOfAWriteNamesTheProfileKeyPath) {
    activate("default");
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    QRVSettingsProfileSetObjectForKeyPathWithCache(5, "A", true);
    ASSERT_EQ(store.batchLogChanges().count(), 1U);
    EXPECT_EQ(store.batchLogChanges().objectAtIndex(0).dictionary().objectForKey("key"),
              "Profiles.Settings.default.A");
}

TEST(Profile, AValueEqualToTheGlobalDefaultIsRemoved) {
    activate("work");
    setDefaults({{"A", 1}});
    writeSettings(profiles({{"work", NSDictionary{{"A", 2}, {"B", 3}}}}));
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 2);
    QRVSettingsProfileSetObjectForKeyPath(1, "A");
    EXPECT_EQ(cached("Profiles.Settings.work.A"), 1) << "cached as it was passed";
    QRVSettingsProfileClearCacheForKeyPath("A");
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 1);
    finishSaves();
    EXPECT_EQ(fileTree(), profiles({{"work", NSDictionary{{"B", 3}}}}));
}

TEST(Profile, ADefaultAtTheProfileKeyPathDecidesNothing) {
    activate("work");
    setDefaults(profiles({{"work", NSDictionary{{"A", 1}}}}));
    QRVSettingsProfileSetObjectForKeyPath(1, "A");
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("Profiles.Settings.work.A"), 1);
    QRVSettingsProfileSetObjectForKeyPath(nullptr, "A");
    EXPECT_TRUE(QRVSettingsProfileObjectForKeyPath("A").isNull());
}

TEST(Profile, AValueStoredAtThePlainKeyPathIsNotUsed) {
    activate("work");
    writeSettings(NSDictionary{{"A", 2}, {"B", 2}});
    setDefaults({{"A", 1}});
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 1);
    EXPECT_TRUE(QRVSettingsProfileObjectForKeyPath("B").isNull());
}

TEST(Profile, SwitchingItSwitchesReadsAndWritesAtOnce) {
    setDefaults({{"A", 1}});
    activate("first");
    QRVSettingsProfileSetObjectForKeyPath(2, "A");
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 2);
    activate("second");
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 1);
    EXPECT_EQ(cached("Profiles.Settings.first.A"), 2) << "entries of the other profile stay";
    QRVSettingsProfileSetObjectForKeyPath(3, "A");
    activate("first");
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 2);
}

TEST(Profile, WhatIsNowhereIsNullFromTheCacheFromThenOn) {
    activate("work");
    EXPECT_TRUE(QRVSettingsProfileObjectForKeyPath("A").isNull());
    EXPECT_TRUE(cached("Profiles.Settings.work.A").isNullMarker());
    QRVSettings::sharedSettings().setStorageCache(
        profiles({{"work", NSDictionary{{"A", 1}}}}).mutableCopy());
    EXPECT_TRUE(QRVSettingsProfileObjectForKeyPath("A").isNull());
    QRVSettingsProfileClearCacheForKeyPath("A");
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 1);
}

TEST(Profile, AReadIsCachedAlsoWithTheCacheDisabled) {
    activate("work");
    writeSettings(profiles({{"work", NSDictionary{{"A", 1}}}}));
    QRVSettings::sharedSettings().setDisableCache(true);
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 1) << "without any cache";
    QRVSettings::sharedSettings().setCache(NSMutableDictionary());
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("A"), 1);
    EXPECT_TRUE(QRVSettingsProfileObjectForKeyPath("B").isNull());
    EXPECT_EQ(cached("Profiles.Settings.work.A"), 1);
    EXPECT_TRUE(cached("Profiles.Settings.work.B").isNullMarker());
}

TEST(Profile, ANullKeyPathReadsNull) {
    EXPECT_TRUE(QRVSettingsProfileObjectForKeyPath(nullptr).isNull());
    EXPECT_EQ(QRVSettings::sharedSettings().cache().count(), 0U);
}

TEST(Profile, AScalarInTheWayReadsNullAndFailsAWrite) {
    activate("work");
    writeSettings(NSDictionary{{"Profiles", 1}});
    const StoreSupport::SystemLogLines lines;
    EXPECT_TRUE(QRVSettingsProfileObjectForKeyPath("A").isNull());
    EXPECT_TRUE(cached("Profiles.Settings.work.A").isNullMarker());
    EXPECT_THROW(QRVSettingsProfileSetObjectForKeyPath(1, "A"), NSInvalidArgumentException);
}
