// SPDX-License-Identifier: MIT
// The store in forked children, and in programs that go to the background.

#include <gtest/gtest.h>

#include <sys/file.h>

#include <fcntl.h>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <future>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"
#include "Support/MachineSupport.h"
#include "Support/Shortages.h"
#include "Support/StoreSupport.h"

using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;

namespace {

QRVSettings& store() {
    return QRVSettings::sharedSettings();
}

/// As a host that receives what others change, and nothing that it writes itself at the same time.
void startWatchingAndMerging() {
    store().setMergesSaves(true);
    MachineSupport::startWatching();
}

/// Goes to the background as a daemon does: the parent ends at once, without any clean-up. What
/// the body returns is seen by the parent of both.
ChildProcess daemon(const std::function<void()>& start, const Gate& hasSucceeded,
                    const std::function<bool()>& body) {
    return ChildProcess([&start, &hasSucceeded, &body]() -> bool {
        start();
        const pid_t pid = fork();
        if (pid < 0) return false;
        if (pid > 0) _exit(0);
        alarm(60);
        if (body()) hasSucceeded.open();
        _exit(0);
    });
}

bool isInFile(const char* key, const PropertyListValue& value) {
    const NSDictionary tree = fileTree();
    return !tree.isNull() && tree.objectForKey(key) == value;
}

/// What another process does.
bool saveByAnother(const char* key, int value) {
    NSMutableDictionary tree = fileTree().mutableCopy();
    tree.setObjectForKey(value, key);
    bool isReplaced = false;
    NSFileCoordinator().coordinateWritingItemAtURL(
        store().location(), NSFileCoordinator::WritingOptions::ForReplacing,
        [&](const std::string& url) {
            isReplaced = !QRVPlatform::replaceFile(
                url, NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
        });
    return isReplaced;
}

}  // namespace

TEST(StoreFork, AChildSavesWhatItWrites) {
    QRVSettingsSetObjectForKeyPath(1, "Parent");
    finishSaves();
    ChildProcess child([] {
        QRVSettingsSetObjectForKeyPath(2, "Child");
        finishSaves();
        return isInFile("Child", 2) && isInFile("Parent", 1);
    });
    EXPECT_TRUE(child.succeeded());
    QRVSettingsSetObjectForKeyPath(3, "Parent");
    finishSaves();
    EXPECT_TRUE(isInFile("Parent", 3));
}

TEST(StoreFork, AChildThatMergesSavesWhatItWritesAndNothingOfItsParent) {
    store().setMergesSaves(true);
    QRVSettingsSetObjectForKeyPath(1, "Parent");
    finishSaves();
    const std::string lockPath = QRVPlatform::filesBeside(store().location()).lock;
    const int lock = open(lockPath.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    QRVSettingsSetObjectForKeyPath(2, "Parent");  // still unsaved at the fork
    ChildProcess child([lock] {
        close(lock);
        QRVSettingsSetObjectForKeyPath(3, "Child");
        const auto status = QRVSettingsWaitForSaves(std::chrono::seconds(20));
        if (status.state != QRVSaveStatus::State::Saved || !isInFile("Child", 3)) return false;
        QRVSettingsSetObjectForKeyPath(4, "Child");
        QRVSettingsWaitForSaves(std::chrono::seconds(20));
        return isInFile("Child", 4);
    });
    flock(lock, LOCK_UN);
    close(lock);
    EXPECT_TRUE(child.succeeded());
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"Parent", 2}, {"Child", 4}}));
}

TEST(StoreFork, AForkWaitsForTheSavesSoThatNoneRunsTwice) {
    std::atomic<int> runs = 0;
    for (int round = 0; round < 20; ++round) {
        QRVSettingsSetObjectForKeyPath(round, "A");
        store().queue().async([&] { ++runs; });
        ChildProcess child([&, round] {
            finishSaves();
            return runs == round + 1 && isInFile("A", round);
        });
        EXPECT_EQ(runs, round + 1);
        EXPECT_TRUE(isInFile("A", round));
        ASSERT_TRUE(child.succeeded());
    }
}

TEST(StoreFork, AForkDoesNotWaitForeverForALockedFile) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    const std::string lockPath = QRVPlatform::filesBeside(store().location()).lock;
    const int lock = open(lockPath.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    QRVSettingsSetObjectForKeyPath(2, "A");
    const auto begin = std::chrono::steady_clock::now();
    ChildProcess child([lock] {
        close(lock);
        QRVSettingsSetObjectForKeyPath(3, "B");
        finishSaves();
        return isInFile("A", 2) && QRVSettingsObjectForKeyPath("B") == 3;
    });
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited, QRVPlatform::forkTimeout);
    EXPECT_LT(waited, 5 * QRVPlatform::forkTimeout);
    flock(lock, LOCK_UN);
    close(lock);
    EXPECT_TRUE(child.succeeded());
    finishSaves();
    EXPECT_TRUE(isInFile("A", 2));
}

TEST(StoreFork, AProgramThatGoesToTheBackgroundAfterItsFirstStartHasASettingsFile) {
    const Gate hasSucceeded;
    ChildProcess parent = daemon(MachineSupport::startWatching, hasSucceeded, [] {
        return isInFile("Migration", fileTree().objectForKey("Migration")) &&
               !fileTree().objectForKey("Migration").isNull();
    });
    EXPECT_TRUE(parent.succeeded());
    EXPECT_TRUE(hasSucceeded.wait());
    EXPECT_TRUE(std::filesystem::exists(store().location()));
}

TEST(StoreFork, AProgramThatGoesToTheBackgroundSavesAndIsNotifiedLikeAnyOther) {
    const Gate hasSucceeded;
    const Gate isReady;
    std::atomic<int> reports = 0;
    ChildProcess parent = daemon(
        [&] {
            store().setOnChange([&](const NSArray& keyPaths) {
                if (keyPaths.count() == 1 && keyPaths.objectAtIndex(0) == "Theirs") ++reports;
            });
            startWatchingAndMerging();
            QRVSettingsSetObjectForKeyPath(1, "Own");
        },
        hasSucceeded,
        [&] {
            QRVSettingsSetObjectForKeyPath(2, "Later");
            finishSaves();
            if (!isInFile("Own", 1) || !isInFile("Later", 2)) return false;
            isReady.open();
            return drainUntil([&] { return reports == 1; }) &&
                   QRVSettingsObjectForKeyPath("Theirs") == 5 &&
                   QRVSettingsObjectForKeyPath("Own") == 1;
        });
    ASSERT_TRUE(isReady.wait());
    EXPECT_TRUE(parent.succeeded());
    ASSERT_TRUE(saveByAnother("Theirs", 5));
    EXPECT_TRUE(hasSucceeded.wait());
}

TEST(StoreFork, ABackgroundProgramThatOnlyPollsTheDescriptorIsNotified) {
    const Gate hasSucceeded;
    const Gate isReady;
    std::atomic<int> reports = 0;
    int fd = -1;
    ChildProcess parent = daemon(
        [&] {
            store().setOnChange([&](const NSArray&) { ++reports; });
            fd = DispatchMainQueue::shared().fd();
            startWatchingAndMerging();
        },
        hasSucceeded,
        [&] {
            isReady.open();
            while (reports == 0) {
                pollfd entry{fd, POLLIN, 0};
                if (poll(&entry, 1, 20000) != 1) return false;
                DispatchMainQueue::shared().drain();
            }
            return QRVSettingsObjectForKeyPath("Theirs") == 5;
        });
    ASSERT_TRUE(isReady.wait());
    ASSERT_TRUE(saveByAnother("Theirs", 5));
    EXPECT_TRUE(hasSucceeded.wait());
    EXPECT_TRUE(parent.succeeded());
}

TEST(StoreFork, AChildPublishesWhatItsParentHadNoticedOnly) {
    startWatchingAndMerging();
    finishSaves();
    DispatchMainQueue::shared().drain();
    ASSERT_TRUE(saveByAnother("Theirs", 5));
    ASSERT_TRUE(DispatchMainQueue::shared().wait(testDeadline));
    bool isReported = false;
    store().setOnChange([&](const NSArray&) { isReported = true; });
    ChildProcess child([&] {
        return drainUntil([&] { return isReported; }) && QRVSettingsObjectForKeyPath("Theirs") == 5;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(drainUntil([&] { return isReported; }));
}

TEST(StoreFork, ReloadsOfAChildDoNotWaitForTheSavesOfItsParent) {
    startWatchingAndMerging();
    finishSaves();
    std::promise<void> end;
    store().queue().async([ended = end.get_future().share()] { ended.wait(); });
    QRVSettingsSetObjectForKeyPath(1, "Pending");
    bool isReported = false;
    store().setOnChange([&](const NSArray&) { isReported = true; });
    ChildProcess child([&] {
        if (!saveByAnother("Theirs", 5)) return false;
        return drainUntil([&] { return isReported; }) && QRVSettingsObjectForKeyPath("Theirs") == 5;
    });
    EXPECT_TRUE(child.succeeded());
    end.set_value();
    finishSaves();
}

TEST(StoreFork, AChildThatASaveForksEndsWithItsThread) {
    if (isSanitized) GTEST_SKIP() << "what the child inherits counts as a leak";
    std::atomic<pid_t> child = 0;
    store().queue().sync([&] {
        const pid_t pid = fork();
        if (pid != 0) child = pid;
    });
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    EXPECT_TRUE(isInFile("A", 1));
}
