// SPDX-License-Identifier: MIT
// Saves that bring only what this process wrote, beside another writer of the file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "MergingSupport.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/FileEvents.h"
#include "Support/MachineSupport.h"

using namespace QRVPlatform;

using MergingSupport::HeldQueue;
using MergingSupport::MergingHost;
using MergingSupport::otherSets;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::SystemLogLines;
using testing::Contains;
using testing::ElementsAre;

TEST(Merging, IsOffAtTheStart) {
    EXPECT_FALSE(QRVSettings::sharedSettings().mergesSaves());
}

TEST(Merging, ASaveKeepsWhatAnotherProcessHasWritten) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "Own");
    finishSaves();
    otherSets(2, "Other");
    QRVSettingsSetObjectForKeyPath(3, "Later");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"Own", 1}, {"Other", 2}, {"Later", 3}}));
}

TEST(Merging, WhatASaveFindsIsPublished) {
    const MergingHost host;
    const SystemLogLines log;
    QRVSettingsSetObjectForKeyPath(1, "Own");
    finishSaves();
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Other").isNull());
    otherSets(2, "Other");
    QRVSettingsSetObjectForKeyPath(3, "Own");
    MergingHost::drain();
    EXPECT_THAT(host.calls(), ElementsAre(std::vector<std::string>{"Other"}));
    EXPECT_THAT(log.lines(), ElementsAre("Prefs file changed"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Other"), 2);
    EXPECT_EQ(QRVSettingsStoredValues(), fileTree());
    MergingHost::notify();
    EXPECT_EQ(host.calls().size(), 1U) << "told once";
}

TEST(Merging, ARemovalIsSavedAndNothingElseIsRemoved) {
    StoreSupport::writeSettings(NSDictionary{{"A", NSDictionary{{"x", 1}, {"y", 2}}}});
    const MergingHost host;
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.x"), 1);
    otherSets(NSDictionary{{"x", 1}, {"z", 3}}, "A");
    QRVSettingsSetObjectForKeyPath(nullptr, "A.x");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"z", 3}}}}));
}

TEST(Merging, EmptyLevelsThatAnotherProcessHasFilledStay) {
    const MergingHost host;
    const auto removeWithLevels = [] {
        QRVSettingsSetObjectForKeyPath(nullptr, "A.B.C");
        QRVSettingsRemoveEmptyLevelsAbove("A.B.C");
    };
    QRVSettingsSetObjectForKeyPath(1, "A.B.C");
    finishSaves();
    {
        const HeldQueue held;
        removeWithLevels();
        otherSets(NSDictionary{{"B", NSDictionary{{"C", 1}}}, {"D", 2}}, "A");
    }
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"D", 2}}}}));
    MergingHost::drain();
    QRVSettingsSetObjectForKeyPath(nullptr, "A.D");
    QRVSettingsRemoveEmptyLevelsAbove("A.D");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary());
    {
        const HeldQueue held;
        QRVSettingsSetObjectForKeyPath(NSDictionary{{"B", NSDictionary{{"C", 1}}}}, "A");
        removeWithLevels();
        removeWithLevels();
    }
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary()) << "none of its own writes is left";
}

TEST(Merging, TheLaterSaveOfAKeyPathWins) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    otherSets(2, "A");
    MergingHost::notify();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 2)
        << "told although this process saved it just now";
    EXPECT_THAT(host.calls(), ElementsAre(std::vector<std::string>{"A"}));
    QRVSettingsSetObjectForKeyPath(3, "A");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 3}}));
}

TEST(Merging, AWriteReplacesAValueOnItsWay) {
    const MergingHost host;
    const SystemLogLines log;
    QRVSettingsSetObjectForKeyPath(1, "A.B.C");
    finishSaves();
    otherSets("value", "A");
    QRVSettingsSetObjectForKeyPath(2, "A.B.C");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"B", NSDictionary{{"C", 2}}}}}}));
    EXPECT_THAT(log.lines(), Contains(testing::HasSubstr("A.B.C")));
}

TEST(Merging, ARemovalBelowAValueLeavesTheValue) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A.B");
    finishSaves();
    otherSets("value", "A");
    QRVSettingsSetObjectForKeyPath(nullptr, "A.B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", "value"}}));
}

TEST(Merging, AReloadKeepsUnsavedWrites) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    MergingHost::drain();
    {
        const HeldQueue held;
        QRVSettingsSetObjectForKeyPath(5, "Own");
        otherSets(2, "Other");
        QRVSettings::sharedSettings().presentedItemDidChange();
        QRVSettings::sharedSettings().readQueue().sync([] {});
        DispatchMainQueue::shared().drain();
        EXPECT_EQ(QRVSettingsObjectForKeyPath("Own"), 5);
        EXPECT_EQ(QRVSettingsObjectForKeyPath("Other"), 2);
        EXPECT_THAT(host.calls(), ElementsAre(std::vector<std::string>{"Other"}));
    }
    MergingHost::drain();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"Other", 2}, {"Own", 5}}));
    EXPECT_EQ(host.calls().size(), 1U);
}

// A large value takes long on the way from the stored tree to the waiting writes.
TEST(Merging, AReloadInTheMidstOfAWriteKeepsTheWrite) {
    constexpr int elements = 100'000;
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    MergingHost::drain();
    otherSets(2, "Other");
    const NSMutableArray large;
    for (int number = 0; number < elements; ++number) large.addObject(NSMutableArray{number});
    QRVSettings& store = QRVSettings::sharedSettings();
    store.readQueue().async([&store, before = store.storageCache()] {
        while (store.storageCache().isIdenticalTo(before)) std::this_thread::yield();
        store.presentedItemDidChange();
    });
    QRVSettingsSetObjectForKeyPath(large, "Own");
    store.readQueue().sync([] {});
    store.readQueue().sync([] {});  // the reload, which the first one has queued
    DispatchMainQueue::shared().drain();
    EXPECT_THAT(host.calls(), ElementsAre(std::vector<std::string>{"Other"}));
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("Own").array().count(), std::size_t{elements});
    MergingHost::drain();
    EXPECT_EQ(QRVSettingsStoredValues(), fileTree());
}

TEST(Merging, AReloadKeepsTheWritesOfAnOpenBatch) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    MergingHost::drain();
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(5, "Own");
    otherSets(2, "Other");
    MergingHost::notify();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Own"), 5);
    EXPECT_FALSE(fileTree().objectForKey("Own").isInteger());
    QRVSettingsCommitBatchSave();
    MergingHost::drain();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"Other", 2}, {"Own", 5}}));
    EXPECT_EQ(QRVSettingsStoredValues(), fileTree());
}

TEST(Merging, AnOpenBatchIsNoPartOfAnEarlierSave) {
    const MergingHost host;
    const HeldQueue* held = new HeldQueue;
    QRVSettingsSetObjectForKeyPath(NSMutableDictionary{{"x", 1}}, "A");
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(2, "A.x");
    delete held;
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"x", 1}}}}));
    QRVSettingsCommitBatchSave();
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"x", 2}}}}));
}

TEST(Merging, SavesInLineBecomeOne) {
    const MergingHost host;
    {
        const HeldQueue held;
        for (int number = 0; number < 1000; ++number)
            QRVSettingsSetObjectForKeyPath(number, "Key" + std::to_string(number % 10));
    }
    finishSaves();
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(fileTree().count(), 10U);
    EXPECT_EQ(fileTree().objectForKey("Key9"), 999);
    EXPECT_EQ(QRVSettings::sharedSettings().localChanges().count(), 1000U);
}

TEST(Merging, TenThousandWritesReplaceTheFileAFewTimes) {
    constexpr int settings = 1000;
    constexpr int writes = 10'000;
    const auto keyPath = [](int number) {
        return "Group" + std::to_string(number % 40) + ".Key" + std::to_string(number % settings);
    };
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(true, "First");
    finishSaves();
    FileEvents replacements(QRVSettingsLocation(), IN_MOVED_TO);
    for (int number = 0; number < writes; ++number)
        QRVSettingsSetObjectForKeyPath(number, keyPath(number));
    finishSaves();
    const int count = replacements.count();
    EXPECT_GE(count, 1);
    EXPECT_LT(count, writes / 100);
    RecordProperty("Replacements", count);
    const NSDictionary tree = fileTree();
    for (int number = writes - settings; number < writes; ++number)
        EXPECT_EQ(NSDictionaryQRV::objectAtKeyPath(tree, keyPath(number)), number);
}

TEST(Merging, SavesWithoutRecordsReplaceTheWholeFile) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    otherSets(2, "Other");
    QRVSettingsSaveObject(NSDictionary{{"Whole", 1}});
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"Whole", 1}}));
    QRVSettings::sharedSettings().setStorageCache(NSMutableDictionary{{"Tree", 1}});
    QRVSettingsSetObjectForKeyPath(2, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"Tree", 1}, {"B", 2}}));
    otherSets(2, "Other");
    QRVSettingsSetObjectForKeyPath(3, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"Tree", 1}, {"B", 3}, {"Other", 2}}));
}

TEST(Merging, AfterTheStoredTreeIsDiscardedTheFileIsReadAgainAndKept) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    QRVSettings::sharedSettings().setStorageCache(nullptr);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), 1);
    otherSets(2, "Other");
    QRVSettingsSetObjectForKeyPath(3, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"Other", 2}, {"B", 3}}));
}

TEST(Merging, ATreeThatIsReadAgainReplacesNothing) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    QRVSettings::sharedSettings().setStorageCache(NSMutableDictionary{{"Tree", 1}});
    QRVSettings::sharedSettings().setStorageCache(nullptr);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), 1);
    otherSets(2, "Other");
    QRVSettingsSetObjectForKeyPath(3, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"Other", 2}, {"B", 3}}));
}

TEST(Merging, AFileThatIsReadAgainAfterItsDeletionIsTheKnownOne) {
    const MergingHost host;
    MergingHost::notify();  // no file is known
    StoreSupport::writeSettings(NSDictionary{{"Other", 2}});
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("Other"), 2);
    std::filesystem::remove(QRVSettingsLocation());
    QRVSettingsSetObjectForKeyPath(1, "A");
    MergingHost::drain();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}}));
    EXPECT_EQ(QRVSettingsStoredValues(), fileTree());
    EXPECT_THAT(host.calls(), ElementsAre(std::vector<std::string>{"Other"}));
}

TEST(Merging, AMigrationThatAnotherProcessHasSavedIsNotDoneAgain) {
    MachineSupport::beMachine("1", "M");
    const NSDictionary old{{"CPU", NSDictionary{{"Menubar", NSDictionary{{"Enabled", false}}}}}};
    StoreSupport::writeSettings(old);
    const MergingHost host;
    {
        const HeldQueue held;
        QRVSettings::sharedSettings().migrate();
        const NSMutableDictionary theirs = old.mutableCopy();
        theirs.setObjectForKey(NSDictionary{{"Profiles", true}, {"CombinedPowerItems", true}},
                               "Migration");
        theirs.setObjectForKey(NSDictionary{{"Theirs", 1}}, "Profiles");
        StoreSupport::writeSettings(theirs);
    }
    MergingHost::drain();
    EXPECT_EQ(fileTree().objectForKey("Profiles"), NSDictionary({{"Theirs", 1}}));
    EXPECT_EQ(QRVSettingsStoredValues(), fileTree());
}

TEST(Merging, ADeletedFileIsPublishedAndSavedAnewWithWhatIsWritten) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    std::filesystem::remove(QRVSettingsLocation());
    MergingHost::notify();
    EXPECT_THAT(host.calls(), ElementsAre(std::vector<std::string>{"A"}));
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
    QRVSettingsSetObjectForKeyPath(2, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"B", 2}}));
}
