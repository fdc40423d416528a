// SPDX-License-Identifier: MIT
// Merging saves that fail, or leave out what no file can hold; and waiting for saves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "MergingSupport.h"
#include "Platform/Files/NSFileCoordinator.h"

using namespace QRVPlatform;

using MergingSupport::HeldQueue;
using MergingSupport::MergingHost;
using MergingSupport::otherSets;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

TEST(Merging, AValueThatNoFileCanHoldDoesNotStopTheOthers) {
    const MergingHost host;
    std::vector<std::string> reported;
    setFileFailureHandler(
        [&reported](const FileFailure& failure) { reported.push_back(failure.keyPath); });
    {
        const HeldQueue held;
        QRVSettingsSetObjectForKeyPath(1, "Before");
        QRVSettingsSetObjectForKeyPath(NSNull{}, "Bad.Null");
        QRVSettingsSetObjectForKeyPath("\xFF", "Bad.Text");
        QRVSettingsSetObjectForKeyPath(2, "After");
    }
    const QRVSaveStatus status = QRVSettingsWaitForSaves(std::chrono::seconds(20));
    EXPECT_EQ(fileTree(), NSDictionary({{"Before", 1}, {"After", 2}}));
    EXPECT_THAT(reported, UnorderedElementsAre("Bad.Null", "Bad.Text"));
    EXPECT_EQ(status.state, QRVSaveStatus::State::Failed);
    EXPECT_EQ(status.keyPaths, NSArray({"Bad.Null", "Bad.Text"}));
    QRVSettingsSetObjectForKeyPath(3, "Bad.Null");
    QRVSettingsSetObjectForKeyPath("text", "Bad.Text");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state, QRVSaveStatus::State::Saved);
    setFileFailureHandler(nullptr);
}

TEST(Merging, ATreeWithAValueThatNoFileCanHoldIsSavedWithoutItAndStopsNoLaterSave) {
    const MergingHost host;
    std::vector<std::string> reported;
    setFileFailureHandler(
        [&reported](const FileFailure& failure) { reported.push_back(failure.keyPath); });
    QRVSettingsSaveObject(NSDictionary{
        {"Good", 1}, {"Level", NSDictionary{{"Null", NSNull{}}, {"Good", 2}}}, {"Bad", "\xFF"}});
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).keyPaths,
              NSArray({"Bad", "Level.Null"}));
    EXPECT_EQ(fileTree(), NSDictionary({{"Good", 1}, {"Level", NSDictionary{{"Good", 2}}}}));
    EXPECT_THAT(reported, UnorderedElementsAre("Bad", "Level.Null"));
    QRVSettingsSetObjectForKeyPath(3, "Later");
    finishSaves();
    EXPECT_EQ(fileTree().objectForKey("Later"), 3);
    setFileFailureHandler(nullptr);
}

TEST(Merging, AValueThatReplacesOneThatNoFileCanHoldIsAllThatWasWritten) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(NSNull{}, "Level.Bad");
    QRVSettingsSetObjectForKeyPath(NSNull{}, "LevelBeside.Bad");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).keyPaths,
              NSArray({"Level.Bad", "LevelBeside.Bad"}));
    QRVSettingsSetObjectForKeyPath(nullptr, "Level");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).keyPaths,
              NSArray({"LevelBeside.Bad"}));
    QRVSettingsSetObjectForKeyPath(nullptr, "LevelBeside.Bad");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state, QRVSaveStatus::State::Saved);
}

TEST(Merging, SavesThatGoOnFailingKeepOneRecordOfEachKeyPath) {
    const MergingHost host;
    const std::string lock = filesBeside(QRVSettingsLocation()).lock;
    std::filesystem::create_directories(lock);
    for (int number = 0; number < 20; ++number) {
        QRVSettingsSetObjectForKeyPath(number, "A");
        finishSaves();
    }
    std::filesystem::remove(lock);
    QRVSettingsSetObjectForKeyPath(20, "A");
    finishSaves();
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 20}}));
    EXPECT_EQ(QRVSettings::sharedSettings().localChanges().count(), 2U) << "kept and last";
}

TEST(Merging, TheWritesOfAFailedSaveJoinTheNext) {
    const MergingHost host;
    const std::string temporary = filesBeside(QRVSettingsLocation()).temporary;
    std::filesystem::create_directories(std::filesystem::path(temporary) / "inside");
    QRVSettingsSetObjectForKeyPath(1, "A");
    const QRVSaveStatus status = QRVSettingsWaitForSaves(std::chrono::seconds(20));
    EXPECT_EQ(status.state, QRVSaveStatus::State::Failed);
    EXPECT_EQ(status.keyPaths, NSArray({"A"}));
    EXPECT_FALSE(status.reason.empty());
    std::filesystem::remove_all(temporary);
    otherSets(2, "Other");
    QRVSettingsSetObjectForKeyPath(3, "B");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state, QRVSaveStatus::State::Saved);
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"Other", 2}, {"B", 3}}));
}

TEST(Merging, AWholeTreeIsSavedWithoutWhatNoFileCanHold) {
    const MergingHost host;
    const NSDictionary level{{"Good", 1}, {"Null", NSNull{}}, {"\xFF", 1}};
    QRVSettingsImport(NSDictionary{
        {"Level", level},
        {"List", NSArray{1, NSNull{}}},
        {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}}});
    const QRVSaveStatus status = QRVSettingsWaitForSaves(std::chrono::seconds(20));
    EXPECT_EQ(status.state, QRVSaveStatus::State::Failed);
    EXPECT_EQ(status.keyPaths, NSArray({"Level.Null", "Level.\xFF", "List"}));
    QRVSettingsSetObjectForKeyPath(2, "A");
    finishSaves();
    EXPECT_EQ(fileTree().objectForKey("Level"), NSDictionary({{"Good", 1}}));
    EXPECT_EQ(fileTree().objectForKey("A"), 2);
    EXPECT_EQ(fileTree().count(), 3U);
}

TEST(Merging, AWholeTreeThatIsSavedLeavesNothingMissing) {
    const MergingHost host;
    const std::string temporary = filesBeside(QRVSettingsLocation()).temporary;
    std::filesystem::create_directories(std::filesystem::path(temporary) / "inside");
    QRVSettingsSetObjectForKeyPath(1, "A");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state,
              QRVSaveStatus::State::Failed);
    std::filesystem::remove_all(temporary);
    QRVSettingsSaveObject(NSDictionary{{"Whole", 1}});
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state, QRVSaveStatus::State::Saved);
    EXPECT_EQ(fileTree(), NSDictionary({{"Whole", 1}}));
}

TEST(Merging, ACommitWithoutATreeLeavesAFailureKnown) {
    const MergingHost host;
    const std::string temporary = filesBeside(QRVSettingsLocation()).temporary;
    std::filesystem::create_directories(std::filesystem::path(temporary) / "inside");
    QRVSettingsSaveObject(NSDictionary{{"Whole", 1}});
    QRVSettingsCommitBatchSave();
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state,
              QRVSaveStatus::State::Failed);
}

TEST(Merging, ADamagedFileIsBackedUpAndTheKnownSettingsAreSaved) {
    const MergingHost host;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    StoreSupport::writeSettings("<plist>");
    QRVSettingsSetObjectForKeyPath(2, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", 2}}));
    EXPECT_EQ(StoreSupport::contentsOf(filesBeside(QRVSettingsLocation()).backupStart + "1"),
              "<plist>");
}

TEST(Merging, ASaveThatWaitsTooLongForOthersChangesNothing) {
    const MergingHost host;
    std::vector<std::error_code> failures;
    setFileFailureHandler([&](const FileFailure& failure) { failures.push_back(failure.error); });
    QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_FALSE(store.saveLockTimeout());
    for (const auto timeout : {-1, 0, 50}) {
        store.setSaveLockTimeout(std::chrono::milliseconds(timeout));
        NSFileCoordinator other;
        other.coordinateWritingItemAtURL(
            QRVSettingsLocation(), NSFileCoordinator::WritingOptions::ForReplacing,
            [](const std::string&) {
                QRVSettingsSetObjectForKeyPath(1, "Own");
                const QRVSaveStatus status = QRVSettingsWaitForSaves(std::chrono::minutes(1));
                EXPECT_EQ(status.state, QRVSaveStatus::State::Failed);
                EXPECT_EQ(status.keyPaths, NSArray{"Own"});
            });
        EXPECT_TRUE(fileTree().isNull()) << "also when the lock is free later";
        EXPECT_THAT(failures, ElementsAre(std::errc::timed_out));
        failures.clear();
    }
    store.setSaveLockTimeout(std::nullopt);
    QRVSettingsSetObjectForKeyPath(2, "Later");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::minutes(1)).state, QRVSaveStatus::State::Saved);
    EXPECT_EQ(fileTree(), NSDictionary({{"Own", 1}, {"Later", 2}}));
    setFileFailureHandler(nullptr);
}

TEST(WaitForSaves, AnswersPendingAtTheTimeoutAndForAnOpenBatch) {
    {
        const HeldQueue held;
        QRVSettingsSetObjectForKeyPath(1, "A");
        EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::milliseconds(1)).state,
                  QRVSaveStatus::State::Pending);
    }
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state, QRVSaveStatus::State::Saved);
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}}));
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(2, "A");
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state,
              QRVSaveStatus::State::Pending);
    QRVSettingsCommitBatchSave();
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::seconds(20)).state, QRVSaveStatus::State::Saved);
}
