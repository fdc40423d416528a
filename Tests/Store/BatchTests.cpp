// SPDX-License-Identifier: MIT
// Batches and imports: many writes, one save.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/StoreSupport.h"

using StoreSupport::cached;
using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::LogMessages;
using StoreSupport::writeSettings;

namespace {

const NSDictionary migrated{
    {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}}};

/// A tree that needs no migration, with one more entry.
NSDictionary migratedWith(const PropertyListValue& value, std::string_view key) {
    const NSMutableDictionary tree = migrated.mutableCopy();
    tree.setObjectForKey(value, key);
    return tree;
}

std::vector<std::string> keysOf(const NSArray& records) {
    std::vector<std::string> keys;
    for (const PropertyListValue& record : records)
        keys.push_back(record.dictionary().objectForKey("key").stringValue());
    return keys;
}

}  // namespace

TEST(Batch, IsSavedOnceAtItsCommit) {
    QRVSettings& store = QRVSettings::sharedSettings();
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(1, "A");
    QRVSettingsSetObjectForKeyPath(2, "B.C");
    QRVSettingsSetObjectForKeyPath(3, "D");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("B.C"), 2) << "readable at once";
    finishSaves();
    EXPECT_FALSE(store.exists()) << "nothing is saved before the commit";
    QRVSettingsCommitBatchSave();
    EXPECT_FALSE(store.inBatchSave());
    EXPECT_EQ(store.batchLogChanges().count(), 0U);
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", NSDictionary{{"C", 2}}}, {"D", 3}}));
    EXPECT_TRUE(drainUntil([&] { return store.localChanges().count() == 3; }));
    EXPECT_THAT(keysOf(store.localChanges()), testing::ElementsAre("A", "B.C", "D"));
    EXPECT_TRUE(drainUntil([&] { return store.localChanges().count() == 0; }));
}

TEST(Batch, OpenedTwiceIsOpenOnce) {
    QRVSettings& store = QRVSettings::sharedSettings();
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(1, "A");
    QRVSettingsPrepareBatchSave();
    EXPECT_EQ(store.batchLogChanges().count(), 1U);
    QRVSettingsCommitBatchSave();
    EXPECT_FALSE(store.inBatchSave());
}

TEST(Batch, ACommitSavesAlsoWithoutABatch) {
    writeSettings(NSDictionary{{"A", 1}});
    EXPECT_EQ(QRVSettingsStoredValues().count(), 1U);
    writeSettings(NSDictionary{{"B", 1}});
    QRVSettingsCommitBatchSave();
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}})) << "the tree of this process";
}

TEST(Batch, ACommitWhereNothingWasEverStoredLogsAndWritesNothing) {
    const LogMessages log;
    QRVSettingsCommitBatchSave();
    finishSaves();
    ASSERT_EQ(log.messages().size(), 1U);
    EXPECT_EQ(log.messages()[0].text(), "Trying to save settings with missing value");
    EXPECT_FALSE(QRVSettings::sharedSettings().exists());
}

TEST(Import, ReplacesAllStoredSettingsInOneSaveWithoutRecords) {
    writeSettings(NSDictionary{{"Old", 1}});
    QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_EQ(QRVSettingsStoredValues().count(), 1U);
    const NSDictionary imported = migratedWith(2, "New");
    QRVSettingsImport(imported);
    EXPECT_FALSE(store.inBatchSave());
    EXPECT_TRUE(store.storageCache().isMutable());
    EXPECT_FALSE(store.storageCache().isIdenticalTo(imported));
    finishSaves();
    EXPECT_EQ(fileTree(), imported);
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(store.localChanges().count(), 0U);
}

TEST(Import, MigratesTheTreeAndLeavesTheRecordsToTheNextCommit) {
    QRVSettings& store = QRVSettings::sharedSettings();
    QRVSettingsImport({{"CPU", NSDictionary{{"Menubar", NSDictionary{{"Enabled", false}}}}}});
    EXPECT_THAT(keysOf(store.batchLogChanges()),
                testing::ElementsAre("Combined.Menubar.Items", "Migration.CombinedPowerItems",
                                     "Profiles", "Migration.Profiles"));
    finishSaves();
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("Migration.Profiles"), true);
    EXPECT_EQ(fileTree(), store.storageCache());
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(store.localChanges().count(), 0U);
    QRVSettingsCommitBatchSave();
    EXPECT_TRUE(drainUntil([&] { return store.localChanges().count() == 4; }));
}

TEST(Import, LeavesWhatIsCachedReadable) {
    writeSettings(NSDictionary{{"A", 1}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    QRVSettingsImport(migratedWith(2, "A"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), 2);
}

TEST(Import, EndsAnOpenBatchAndKeepsItsRecords) {
    QRVSettings& store = QRVSettings::sharedSettings();
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(1, "A");
    QRVSettingsImport(migratedWith(2, "B"));
    EXPECT_FALSE(store.inBatchSave());
    EXPECT_EQ(store.storageCache(), migratedWith(2, "B"));
    EXPECT_EQ(cached("A"), 1) << "the cache is left alone";
    EXPECT_THAT(keysOf(store.batchLogChanges()), testing::ElementsAre("A"));
    finishSaves();
    EXPECT_EQ(fileTree(), migratedWith(2, "B"));
    QRVSettingsCommitBatchSave();
    EXPECT_EQ(store.batchLogChanges().count(), 0U);
}

TEST(Import, ThatRaisesAnExceptionLeavesNoBatchOpen) {
    for (const bool merges : {false, true}) {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setMergesSaves(merges);
        EXPECT_THROW(QRVSettingsImport(NSDictionary{{"Migration", "no dictionary"}}),
                     NSInvalidArgumentException);
        EXPECT_FALSE(store.inBatchSave());
        QRVSettingsSetObjectForKeyPath(merges, "Later");
        EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state,
                  QRVSaveStatus::State::Saved);
        EXPECT_EQ(fileTree().objectForKey("Later"), merges);
        EXPECT_EQ(fileTree().objectForKey("Migration"), "no dictionary");
    }
}

TEST(Import, AMigrationThatRaisesAnExceptionLeavesNoBatchOpen) {
    for (const bool merges : {false, true}) {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setMergesSaves(merges);
        writeSettings(NSDictionary{{"Migration", "no dictionary"}});
        EXPECT_THROW(store.prepare(), NSInvalidArgumentException);
        EXPECT_FALSE(store.inBatchSave());
        QRVSettingsSetObjectForKeyPath(merges, "Later");
        finishSaves();
        EXPECT_EQ(fileTree().objectForKey("Later"), merges);
    }
}
