// SPDX-License-Identifier: MIT
// Writes: what they store, cache and refuse.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/StoreSupport.h"

using StoreSupport::cached;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::setDefaults;
using StoreSupport::SystemLogLines;
using StoreSupport::writeSettings;

TEST(Writing, AWriteIsReadAtOnceAndReachesTheFileLater) {
    QRVSettingsSetObjectForKeyPath(40, "CPU.Graph.Width");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("CPU.Graph.Width"), 40);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("CPU.Graph.Width"), 40);
    finishSaves();
    EXPECT_EQ(fileTree(),
              NSDictionary({{"CPU", NSDictionary{{"Graph", NSDictionary{{"Width", 40}}}}}}));
}

TEST(Writing, WritingTheDefaultRemovesTheKeyAndCachesTheValue) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}, {"C", 2}}}});
    setDefaults({{"A", NSDictionary{{"B", 5}}}});
    QRVSettingsSetObjectForKeyPath(5, "A.B");
    EXPECT_EQ(cached("A.B"), 5);
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"C", 2}}}}));
    QRVSettingsClearCacheForKeyPath("A.B");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 5) << "the default shows through";
}

TEST(Writing, AValueOfAnotherKindThanTheDefaultIsStored) {
    setDefaults({{"text", "1"}, {"flag", true}, {"number", 1}});
    QRVSettingsSetObjectForKeyPath(1, "text");
    QRVSettingsSetObjectForKeyPath(1, "flag");
    QRVSettingsSetObjectForKeyPath(true, "number");
    finishSaves();
    const NSDictionary file = fileTree();
    EXPECT_TRUE(file.objectForKey("text").isInteger());
    EXPECT_TRUE(file.objectForKey("flag").isInteger());
    EXPECT_TRUE(file.objectForKey("number").isBoolean());
}

TEST(Writing, ARealEqualToAnIntegerDefaultIsNotStored) {
    setDefaults({{"A", 1}, {"B", NSArray{1, NSDictionary{{"x", true}}}}});
    QRVSettingsSetObjectForKeyPath(1.0, "A");
    QRVSettingsSetObjectForKeyPath(NSArray({1, NSDictionary{{"x", true}}.mutableCopy()}), "B");
    EXPECT_EQ(QRVSettingsStoredValues().count(), 0U);
    EXPECT_TRUE(cached("A").isReal()) << "the cache holds the value as it was passed";
}

TEST(Writing, EmptyLevelsAboveAKeyPathAreRemovedUpToTheFirstThatHoldsSomething) {
    QRVSettingsSetObjectForKeyPath(NSDictionary{{"B", NSDictionary{{"C", NSDictionary{}}}}}, "A");
    QRVSettingsRemoveEmptyLevelsAbove("A.B.C");
    EXPECT_FALSE(QRVSettingsStoredObjectForKeyPath("A.B.C").isNull()) << "it is not above";
    QRVSettingsRemoveEmptyLevelsAbove("A.B.C.D");
    EXPECT_EQ(QRVSettingsStoredValues(), NSDictionary());
    QRVSettingsSetObjectForKeyPath(NSDictionary{{"B", NSDictionary{}}, {"C", 1}}, "A");
    QRVSettingsRemoveEmptyLevelsAbove("A.B.D");
    QRVSettingsRemoveEmptyLevelsAbove("A.C.D");
    QRVSettingsRemoveEmptyLevelsAbove("Absent.Key");
    QRVSettingsRemoveEmptyLevelsAbove("Key");
    QRVSettingsRemoveEmptyLevelsAbove(nullptr);
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"C", 1}}}}));
}

TEST(Writing, NullRemovesTheKeyFromTreeAndCacheAndTheDefaultIsCachedAgain) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}}}});
    setDefaults({{"A", NSDictionary{{"B", 7}}}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1);
    QRVSettingsSetObjectForKeyPath(nullptr, "A.B");
    EXPECT_TRUE(cached("A.B").isNull());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 7);
    EXPECT_EQ(cached("A.B"), 7);
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{}}}));
}

TEST(Writing, TheFirstWriteWithoutAFileMakesATreeOfJustThatSetting) {
    QRVSettingsSetObjectForKeyPath("value", "A.B");
    EXPECT_EQ(QRVSettings::sharedSettings().storageCache(),
              NSDictionary({{"A", NSDictionary{{"B", "value"}}}}));
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"B", "value"}}}}));
}

TEST(Writing, TheFirstWriteReadsTheFileAndKeepsWhatIsThere) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}}}, {"C", 2}});
    QRVSettingsSetObjectForKeyPath(3, "A.D");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"B", 1}, {"D", 3}}}, {"C", 2}}));
}

TEST(Writing, TwoWritesInSuccessionAreBothInTheFile) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    QRVSettingsSetObjectForKeyPath(2, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", 2}}));
}

TEST(Writing, TheStorageCacheIsANewMutableDictionaryAfterEachWrite) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}}}});
    const NSDictionary before = QRVSettingsStoredValues();
    QRVSettingsSetObjectForKeyPath(2, "A.B");
    const NSDictionary after = QRVSettings::sharedSettings().storageCache();
    EXPECT_TRUE(after.isMutable());
    EXPECT_EQ(before, NSDictionary({{"A", NSDictionary{{"B", 1}}}}))
        << "the immutable level that a reader holds is not changed";
    EXPECT_EQ(after, NSDictionary({{"A", NSDictionary{{"B", 2}}}}));
}

TEST(Writing, ALevelThatAWriteMadeMutableIsSharedByLaterTrees) {
    QRVSettingsSetObjectForKeyPath(1, "A.B");
    const NSDictionary first = QRVSettings::sharedSettings().storageCache();
    QRVSettingsSetObjectForKeyPath(2, "A.B");
    const NSDictionary second = QRVSettings::sharedSettings().storageCache();
    EXPECT_FALSE(first.isIdenticalTo(second));
    EXPECT_TRUE(first.objectForKey("A").isIdenticalTo(second.objectForKey("A")));
    EXPECT_EQ(first, NSDictionary({{"A", NSDictionary{{"B", 2}}}}));
}

TEST(Writing, CacheEntriesOfParentsAndChildrenKeepTheirOldValues) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", NSDictionary{{"C", 1}}}}}});
    const PropertyListValue parent = QRVSettingsObjectForKeyPath("A");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B.C"), 1);
    QRVSettingsSetObjectForKeyPath("flat", "A.B");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), parent);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B.C"), 1);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), "flat");
}

TEST(Writing, WithoutACacheAWriteStillStores) {
    QRVSettings::sharedSettings().setDisableCache(true);
    QRVSettingsSetObjectForKeyPath(1, "A");
    EXPECT_TRUE(QRVSettings::sharedSettings().cache().isNull());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
}

TEST(Writing, TheCacheIsWrittenWhateverWithCacheSays) {
    QRVSettingsSetObjectForKeyPathWithCache(1, "A", false);
    QRVSettingsSetObjectForKeyPathWithCache(2, "B", true);
    EXPECT_EQ(cached("A"), 1);
    EXPECT_EQ(cached("B"), 2);
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setDisableCache(true);
    store.setCache(NSMutableDictionary());
    QRVSettingsSetObjectForKeyPathWithCache(3, "C", false);
    EXPECT_EQ(cached("C"), 3) << "disableCache is about reads";
}

TEST(Writing, ThroughAStoredScalarFailsAndSavesNothing) {
    writeSettings(NSDictionary{{"A", 1}});
    const std::string before = StoreSupport::contentsOf(QRVSettingsLocation());
    const SystemLogLines log;
    EXPECT_THROW(QRVSettingsSetObjectForKeyPath(2, "A.B"), NSInvalidArgumentException);
    EXPECT_THAT(log.lines(), testing::ElementsAre("leaf is not a dictionary"));
    EXPECT_TRUE(cached("A.B").isNull());
    finishSaves();
    EXPECT_EQ(StoreSupport::contentsOf(QRVSettingsLocation()), before);
}

TEST(Writing, ANullKeyPathIsAnInvalidArgument) {
    EXPECT_THROW(QRVSettingsSetObjectForKeyPath(1, nullptr), NSInvalidArgumentException);
    EXPECT_THROW(QRVSettingsSetObjectForKeyPathWithCache(nullptr, nullptr, true),
                 NSInvalidArgumentException);
    finishSaves();
    EXPECT_FALSE(QRVSettings::sharedSettings().exists());
}

TEST(Writing, InABatchAWriteChangesTheLayersAndGathersItsRecord) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    const double before = NSDate::now().timeIntervalSince1970();
    QRVSettingsSetObjectForKeyPath(1, "A.B");
    QRVSettingsSetObjectForKeyPath(2, "C");
    const double after = NSDate::now().timeIntervalSince1970();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("C"), 2);
    ASSERT_EQ(store.batchLogChanges().count(), 2U);
    const NSDictionary record = store.batchLogChanges().objectAtIndex(0).dictionary();
    EXPECT_EQ(record.count(), 2U);
    EXPECT_EQ(record.objectForKey("key"), "A.B");
    EXPECT_TRUE(record.objectForKey("time").isReal());
    EXPECT_GE(record.objectForKey("time").doubleValue(), before);
    EXPECT_LE(record.objectForKey("time").doubleValue(), after);
    EXPECT_EQ(store.batchLogChanges().objectAtIndex(1).dictionary().objectForKey("key"), "C");
    finishSaves();
    EXPECT_FALSE(store.exists());
}

TEST(Writing, SavingAnObjectInABatchWritesAndRecordsNothing) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    QRVSettingsSaveObject(NSDictionary{{"A", 1}});
    finishSaves();
    EXPECT_FALSE(store.exists());
    EXPECT_EQ(store.batchLogChanges().count(), 0U);
}

TEST(Writing, ClearingTheCacheOfAKeyPathForgetsExactlyThat) {
    QRVSettingsSetObjectForKeyPath(1, "A.B");
    QRVSettingsSetObjectForKeyPath(2, "A.C");
    QRVSettingsClearCacheForKeyPath("A");
    QRVSettingsClearCacheForKeyPath("never cached");
    QRVSettingsClearCacheForKeyPath(nullptr);
    EXPECT_EQ(QRVSettings::sharedSettings().cache().count(), 2U);
    QRVSettingsClearCacheForKeyPath("A.B");
    EXPECT_TRUE(cached("A.B").isNull());
    EXPECT_EQ(cached("A.C"), 2);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1) << "the stored value is still there";
}

TEST(Writing, SynchronizeDoesNothing) {
    QRVSettings& store = QRVSettings::sharedSettings();
    QRVSettingsSynchronize();
    finishSaves();
    EXPECT_FALSE(store.exists());
    EXPECT_TRUE(store.storageCache().isNull());
}
