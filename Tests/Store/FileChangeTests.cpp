// SPDX-License-Identifier: MIT
// What an observer of the settings file receives.

#include <gtest/gtest.h>

#include "MergingSupport.h"
#include "Support/StoreSupport.h"

using MergingSupport::HeldQueue;
using MergingSupport::otherSets;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::writeSettings;

namespace {

QRVSettings& store() {
    return QRVSettings::sharedSettings();
}

/// In both kinds of saves.
class FileChange : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        store().setMergesSaves(GetParam());
        store().setFileChangeHandler([this](const QRVFileChange& change) {
            if (change.by == QRVFileChange::By::ThisProcess)
                saves_.push_back(change);
            else
                others_.push_back(change);
        });
    }
    void TearDown() override { store().setFileChangeHandler(nullptr); }

    const std::vector<QRVFileChange>& saves() {
        finishSaves();
        return saves_;
    }
    const std::vector<QRVFileChange>& others() {
        store().readQueue().sync([] {});
        return others_;
    }

  private:
    std::vector<QRVFileChange> saves_;
    std::vector<QRVFileChange> others_;
};

INSTANTIATE_TEST_SUITE_P(Saves, FileChange, testing::Bool(),
                         [](const auto& suite) { return suite.param ? "Merging" : "Whole"; });

}  // namespace

TEST_P(FileChange, OfASaveTellsWhatTheFileHeldAndHolds) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    ASSERT_EQ(saves().size(), 1U);
    EXPECT_TRUE(saves()[0].isBeforeKnown);
    EXPECT_TRUE(saves()[0].before.isNull());
    EXPECT_TRUE(saves()[0].fileBefore.isMissing());
    EXPECT_EQ(saves()[0].after, (NSDictionary{{"A", 1}}));
    EXPECT_EQ(saves()[0].fileAfter, QRVPlatform::identityOfFileAtPath(QRVSettingsLocation()));

    QRVSettingsSetObjectForKeyPath(2, "A");
    ASSERT_EQ(saves().size(), 2U);
    EXPECT_EQ(saves()[1].before, saves()[0].after);
    EXPECT_EQ(saves()[1].fileBefore, saves()[0].fileAfter);
    EXPECT_EQ(saves()[1].after, fileTree());
}

TEST_P(FileChange, IsPassedOnByAHandlerThatTookThePlaceOfAnother) {
    int count = 0;
    store().setFileChangeHandler(
        [&count, next = store().fileChangeHandler()](const QRVFileChange& change) {
            ++count;
            next(change);
        });
    QRVSettingsSetObjectForKeyPath(1, "A");
    EXPECT_EQ(saves().size(), 1U);
    EXPECT_EQ(count, 1);
    store().setFileChangeHandler(nullptr);
    EXPECT_FALSE(store().fileChangeHandler());
}

TEST_P(FileChange, OfASaveTellsWhatAnotherProcessHadStored) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    otherSets(5, "Other");
    const auto other = QRVPlatform::identityOfFileAtPath(QRVSettingsLocation());
    QRVSettingsSetObjectForKeyPath(2, "A");
    ASSERT_EQ(saves().size(), 2U);
    EXPECT_EQ(saves()[1].before, (NSDictionary{{"A", 1}, {"Other", 5}}));
    EXPECT_EQ(saves()[1].fileBefore, other);
    EXPECT_EQ(saves()[1].after, fileTree());
}

TEST_P(FileChange, OfASaveBegunBeforeTheHandlerWasSetTellsWhatTheFileHeld) {
    store().setFileChangeHandler(nullptr);
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    SetUp();
    QRVSettingsSetObjectForKeyPath(2, "A");
    ASSERT_EQ(saves().size(), 1U);
    EXPECT_EQ(saves()[0].before, (NSDictionary{{"A", 1}}));
}

TEST_P(FileChange, OfASaveTellsWhatASaveOfTheOtherKindHasLeft) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    store().setMergesSaves(!GetParam());
    QRVSettingsSetObjectForKeyPath(2, "A");
    finishSaves();
    store().setMergesSaves(GetParam());
    QRVSettingsSetObjectForKeyPath(3, "A");
    ASSERT_EQ(saves().size(), 3U);
    EXPECT_EQ(saves()[1].before, (NSDictionary{{"A", 1}}));
    EXPECT_EQ(saves()[2].before, (NSDictionary{{"A", 2}}));
    EXPECT_EQ(saves()[2].fileBefore, saves()[1].fileAfter);
}

TEST_P(FileChange, OfASaveThatReplacesADamagedFileDoesNotTellWhatThatHeld) {
    writeSettings("{ damaged");
    QRVSettingsSetObjectForKeyPath(1, "A");
    ASSERT_EQ(saves().size(), 1U);
    EXPECT_FALSE(saves()[0].isBeforeKnown);
    EXPECT_EQ(saves()[0].after, fileTree());
}

TEST_P(FileChange, StaysAsItWasWhateverIsWrittenLater) {
    QRVSettingsSetObjectForKeyPath(1, "A.B");
    ASSERT_EQ(saves().size(), 1U);
    QRVSettingsSetObjectForKeyPath(2, "A.B");
    EXPECT_EQ(saves()[0].after, (NSDictionary{{"A", NSDictionary{{"B", 1}}}}));
    EXPECT_EQ(saves()[1].before, saves()[0].after);
    EXPECT_FALSE(saves()[1].after.objectForKey("A").dictionary().isMutable());
}

TEST_P(FileChange, IsNoneForASaveThatFails) {
    std::filesystem::create_directories(QRVSettingsLocation());
    QRVSettingsSetObjectForKeyPath("not UTF-8 \xff", "A");
    QRVSettingsSetObjectForKeyPath(1, "B");
    EXPECT_EQ(saves().size(), 0U);
}

TEST_P(FileChange, HasTheOriginOfTheSave) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(2, "A");
    QRVSettingsCommitBatchSave();
    finishSaves();
    QRVSettingsSaveObject(NSDictionary{{"B", 1}});
    finishSaves();
    QRVSettingsImport(NSDictionary());
    finishSaves();
    store().setChangeOrigin("mine");
    EXPECT_EQ(store().changeOrigin(), "mine");
    QRVSettingsImport(NSDictionary());
    store().setChangeOrigin(std::nullopt);
    std::vector<std::string> origins;
    for (const QRVFileChange& change : saves()) origins.push_back(change.origin);
    EXPECT_EQ(origins, (std::vector<std::string>{"set", "batch", "tree", "import", "mine"}));
}

TEST_P(FileChange, HasTheOriginsOfAllWritesThatBecameOneSave) {
    {
        const HeldQueue held;
        QRVSettingsSetObjectForKeyPath(1, "A");
        store().setChangeOrigin("mine");
        QRVSettingsSetObjectForKeyPath(2, "A");
        QRVSettingsSetObjectForKeyPath(2, "B");
        store().setChangeOrigin(std::nullopt);
    }
    if (GetParam()) {
        ASSERT_EQ(saves().size(), 1U);
        EXPECT_EQ(saves()[0].origin, "set, mine");
    } else {
        ASSERT_EQ(saves().size(), 3U);
        EXPECT_EQ(saves()[0].origin, "set");
        EXPECT_EQ(saves()[1].origin, "mine");
    }
}

TEST_P(FileChange, ByOthersIsWhatAReloadHasRead) {
    store().setMonitorFileChanges(true);
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    otherSets(5, "Other");
    store().presentedItemDidChange();
    ASSERT_EQ(others().size(), 1U);
    EXPECT_EQ(others()[0].after, fileTree());
    EXPECT_EQ(others()[0].fileAfter, QRVPlatform::identityOfFileAtPath(QRVSettingsLocation()));
    EXPECT_FALSE(others()[0].isBeforeKnown);
    EXPECT_EQ(others()[0].origin, "");
}

TEST_P(FileChange, HasBeenReceivedWhenTheSavesAreWaitedFor) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state, QRVSaveStatus::State::Saved);
    EXPECT_EQ(saves().size(), 1U);
}

TEST_P(FileChange, IsNotReceivedWithoutAHandler) {
    store().setFileChangeHandler(nullptr);
    QRVSettingsSetObjectForKeyPath(1, "A");
    EXPECT_EQ(saves().size(), 0U);
    EXPECT_EQ(fileTree().objectForKey("A"), 1);
}
