// SPDX-License-Identifier: MIT
// Saves: their order, their contents and their change records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>

#include "Platform/Files/Files.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::contentsOf;
using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::writeSettings;

namespace {

std::size_t localChangeCount() {
    return QRVSettings::sharedSettings().localChanges().count();
}

NSArray oneRecord(std::string_view keyPath) {
    return NSArray({NSDictionary{{"key", keyPath}, {"time", 1.5}}});
}

// Keeps the store's queue busy during its life, so that saves wait behind it.
class HeldQueue {
  public:
    HeldQueue() {
        QRVSettings::sharedSettings().queue().async([this] {
            std::unique_lock guard(mutex_);
            condition_.wait(guard, [this] { return released_; });
        });
    }
    HeldQueue(const HeldQueue&) = delete;
    HeldQueue& operator=(const HeldQueue&) = delete;
    ~HeldQueue() {
        {
            const std::lock_guard guard(mutex_);
            released_ = true;
            condition_.notify_one();
        }
        finishSaves();
    }

  private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool released_ = false;
};

}  // namespace

TEST(Saving, TheFileIsXMLAndOfTheUserAlone) {
    QRVSettingsSetObjectForKeyPath(true, "A.B");
    finishSaves();
    EXPECT_THAT(contentsOf(QRVSettingsLocation()),
                testing::StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    EXPECT_EQ(std::filesystem::status(QRVSettingsLocation()).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(Saving, AWriteDoesNotWaitForTheFile) {
    const HeldQueue held;
    QRVSettingsSetObjectForKeyPath(1, "A");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    EXPECT_FALSE(QRVSettings::sharedSettings().exists());
}

TEST(Saving, EachWriteQueuesASaveOfItsOwnWholeTreeInOrder) {
    // Each save leaves its records behind, so that counting them counts the saves.
    {
        const HeldQueue held;
        for (int number = 0; number < 5; ++number) {
            QRVSettingsSetObjectForKeyPath(number, "Top" + std::to_string(number));
        }
    }
    ASSERT_TRUE(drainUntil([] { return localChangeCount() == 5; }));
    for (std::size_t index = 0; index < 5; ++index) {
        EXPECT_EQ(QRVSettings::sharedSettings()
                      .localChanges()
                      .objectAtIndex(index)
                      .dictionary()
                      .objectForKey("key"),
                  "Top" + std::to_string(index));
    }
    EXPECT_EQ(fileTree(),
              NSDictionary({{"Top0", 0}, {"Top1", 1}, {"Top2", 2}, {"Top3", 3}, {"Top4", 4}}));
}

TEST(Saving, ATreeHandedToASaveHoldsItsOwnTopLevelAndSharesMutableLevels) {
    QRVSettings& store = QRVSettings::sharedSettings();
    const auto treesSeen = std::make_shared<std::vector<NSDictionary>>();
    {
        const HeldQueue held;
        QRVSettingsSetObjectForKeyPath(1, "A.B");
        store.queue().async([treesSeen] { treesSeen->push_back(fileTree()); });
        QRVSettingsSetObjectForKeyPath(2, "A.B");
        QRVSettingsSetObjectForKeyPath(3, "C");
    }
    ASSERT_EQ(treesSeen->size(), 1U);
    EXPECT_EQ(treesSeen->front(), NSDictionary({{"A", NSDictionary{{"B", 2}}}}))
        << "the nested level already holds the later write, the top level does not";
    EXPECT_EQ(fileTree(), NSDictionary({{"A", NSDictionary{{"B", 2}}}, {"C", 3}}));
}

TEST(Saving, NothingIsMergedWithWhatIsOnDisk) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    writeSettings(NSDictionary{{"A", 9}, {"B", 9}});
    QRVSettingsSetObjectForKeyPath(2, "C");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"C", 2}}));
}

TEST(Saving, TheRecordsArePostedBeforeTheFileIsReplaced) {
    // A folder that cannot be removed stands where the new bytes would be written, so that the
    // replacement fails and calls the failure handler during the save.
    const std::filesystem::path file = QRVSettings::sharedSettings().location();
    std::filesystem::create_directories(file.parent_path() /
                                        ("." + file.filename().string() + ".tmp") / "inside");
    std::vector<bool> wasPosted;
    setFileFailureHandler([&wasPosted](const FileFailure&) {
        wasPosted.push_back(DispatchMainQueue::shared().wait(std::chrono::nanoseconds(0)));
    });
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    setFileFailureHandler(nullptr);
    EXPECT_EQ(wasPosted, std::vector<bool>{true});
    EXPECT_FALSE(QRVSettings::sharedSettings().exists());
    EXPECT_EQ(localChangeCount(), 0U) << "the main queue runs nothing by itself";
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(localChangeCount(), 1U) << "and keeps the record though the replacement failed";
}

TEST(Saving, RecordsLeaveLocalChangesThreeSecondsAfterTheMainQueueTookThemUp) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    const auto start = std::chrono::steady_clock::now();
    DispatchMainQueue::shared().drain();
    ASSERT_EQ(localChangeCount(), 1U);
    ASSERT_TRUE(drainUntil([] { return localChangeCount() == 0; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

TEST(Saving, OnlyTheRecordsOfTheSaveAreRemoved) {
    QRVSettings& store = QRVSettings::sharedSettings();
    const NSDictionary other{{"key", "Other"}, {"time", 0.5}};
    store.localChanges().addObject(other);
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    DispatchMainQueue::shared().drain();
    ASSERT_EQ(localChangeCount(), 2U);
    ASSERT_TRUE(drainUntil([] { return localChangeCount() == 1; }));
    EXPECT_EQ(store.localChanges().objectAtIndex(0), other);
}

TEST(Saving, AnObjectIsSavedWithoutRecordsAndWithoutTouchingTheLayers) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    QRVSettingsSaveObject(NSDictionary{{"B", 2}});
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"B", 2}}));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    EXPECT_EQ(QRVSettings::sharedSettings().storageCache(), NSDictionary({{"A", 1}}));
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(localChangeCount(), 1U) << "the record of the write alone";
}

TEST(Saving, AnObjectIsSavedAsItWasWhenItWasHandedOver) {
    const NSMutableDictionary tree;
    tree.setObjectForKey(1, "A");
    {
        const HeldQueue held;
        QRVSettingsSaveObject(tree);
        tree.setObjectForKey(2, "B");
    }
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}}));
}

TEST(Saving, WithALogTheGivenRecordsBecomeLocalChanges) {
    QRVSettingsSaveObjectWithLog(NSDictionary{{"A", 1}}, oneRecord("Given"));
    finishSaves();
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(QRVSettings::sharedSettings().localChanges(), oneRecord("Given"));
}

TEST(Saving, InABatchTheRecordsAreGatheredInOrderAndANullLogAddsNothing) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    QRVSettingsSaveObjectWithLog(NSDictionary{{"A", 1}}, oneRecord("first"));
    QRVSettingsSaveObjectWithLog(nullptr, oneRecord("second"));
    QRVSettingsSaveObjectWithLog(NSDictionary{{"A", 1}}, nullptr);
    EXPECT_EQ(store.batchLogChanges(),
              NSArray({oneRecord("first").objectAtIndex(0), oneRecord("second").objectAtIndex(0)}));
    finishSaves();
    EXPECT_FALSE(store.exists());
}

TEST(Saving, TheModificationDateIsNotTouched) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    EXPECT_FALSE(QRVSettings::sharedSettings().modificationDate().has_value());
}

TEST(Saving, ManyThreadsMayReadTheTreesWhileTheMainThreadWrites) {
    QRVSettings& store = QRVSettings::sharedSettings();
    std::atomic<bool> finished = false;
    std::thread reader([&] {
        while (!finished) {
            const NSDictionary tree = store.storageCache().copy();
            const auto bytes = NSPropertyListSerialization::dataWithPropertyList(
                tree.isNull() ? NSDictionary() : tree);
            EXPECT_FALSE(bytes.error);
        }
    });
    for (int number = 0; number < 300; ++number) {
        QRVSettingsSetObjectForKeyPath(number, "A.B.C" + std::to_string(number % 20));
        EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B.C" + std::to_string(number % 20)), number);
    }
    finished = true;
    reader.join();
    finishSaves();
    EXPECT_EQ(fileTree(), store.storageCache());
}
