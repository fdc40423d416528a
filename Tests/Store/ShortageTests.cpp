// SPDX-License-Identifier: MIT
// A host whose system has no descriptors, threads, watches or memory left: nothing ends it, what it
// wrote is read, the failure handler is called, and once there is enough again everything is saved
// and noticed.

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>

#include "Files/SystemCallFilter.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"
#include "Support/MachineSupport.h"
#include "Support/Shortages.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;

namespace {

QRVSettings& store() {
    return QRVSettings::sharedSettings();
}

std::atomic<int> failures = 0;
std::atomic<int> reports = 0;

bool isSaved(const char* key, const PropertyListValue& value) {
    const NSDictionary tree = fileTree();
    return !tree.isNull() && tree.objectForKey(key) == value;
}

/// The same while this process has no descriptor left to read the file.
bool isSavedAsAnotherSees(const char* key, const PropertyListValue& value) {
    const pid_t pid = fork();
    if (pid < 0) return isSaved(key, value);
    if (pid == 0) {
        for (int number = 3; number < 100; ++number) close(number);
        _exit(isSaved(key, value) ? 0 : 1);
    }
    int status = -1;
    return waitpid(pid, &status, 0) == pid && status == 0;
}

/// All that a store does in its life; true when what was written is read. A reload takes over what
/// the file holds, and so comes only when the writes are there.
bool lives() {
    store().setMergesSaves(true);  // Otherwise a reload may replace what could not be saved.
    setFileFailureHandler([](const FileFailure&) { ++failures; });
    store().setOnChange([](const NSArray&) { ++reports; });
    MachineSupport::startWatching();
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    DispatchMainQueue::shared().drain();
    static_cast<void>(DispatchMainQueue::shared().fd());
    if (isSavedAsAnotherSees("A", 1)) {
        store().presentedItemDidChange();
        store().readQueue().sync([] {});
        DispatchMainQueue::shared().drain();
    }
    QRVSettingsSetObjectForKeyPath(2, "B.C");
    finishSaves();
    DispatchMainQueue::shared().drain();
    return QRVSettingsObjectForKeyPath("A") == 1 && QRVSettingsObjectForKeyPath("B.C") == 2 &&
           QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled");
}

/// The next save brings everything to the disk, and a change by another process is noticed.
bool isWellAfterwards() {
    QRVSettingsSetObjectForKeyPath(3, "D");
    finishSaves();
    if (!isSaved("A", 1) || !isSaved("B", NSDictionary{{"C", 2}}) || !isSaved("D", 3)) return false;
    if (DispatchMainQueue::shared().fd() < 0) return false;
    reports = 0;
    ChildProcess another([] {
        NSMutableDictionary tree = fileTree().mutableCopy();
        tree.setObjectForKey(5, "Theirs");
        bool isReplaced = false;
        NSFileCoordinator().coordinateWritingItemAtURL(
            store().location(), NSFileCoordinator::WritingOptions::ForReplacing,
            [&](const std::string& url) {
                isReplaced = !replaceFile(
                    url, NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
            });
        return isReplaced;
    });
    return another.succeeded() &&
           drainUntil([] { return QRVSettingsObjectForKeyPath("Theirs") == 5; });
}

/// A process that lives under a shortage, and afterwards without.
template <typename Shortage, typename... Arguments>
bool isUnharmedBy(bool mustFail, Arguments... arguments) {
    ChildProcess child([&] {
        bool isRight = false;
        {
            const Shortage shortage(arguments...);
            isRight = lives();
        }
        EXPECT_TRUE(isRight) << "what was written is not read";
        EXPECT_TRUE(!mustFail || failures > 0) << "nothing was reported";
        EXPECT_TRUE(isWellAfterwards());
        return !testing::Test::HasFailure();
    });
    return child.succeeded();
}

}  // namespace

class DescriptorShortage : public testing::TestWithParam<int> {};

TEST_P(DescriptorShortage, EndsNoHostAndLosesNothing) {
    constexpr int neededAtLeast = 8;
    if (isSanitized) GTEST_SKIP() << "a sanitizer needs descriptors of its own";
    EXPECT_TRUE(isUnharmedBy<FreeDescriptors>(GetParam() < neededAtLeast, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(OfSoMany, DescriptorShortage, testing::Range(0, 13));

TEST(ThreadShortage, EndsNoHostAndLosesNothing) {
    letNobodyIn();
    EXPECT_TRUE(isUnharmedBy<NoThreads>(true));
}

TEST(ThreadShortage, EndsNoHostThatNeverGetsAThread) {
    ChildProcess child([] {
        failCall(SystemCall::Clone, EAGAIN);
        return lives() && failures > 0 && isSaved("A", 1) && isSaved("B", NSDictionary{{"C", 2}});
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(ThreadShortage, AWaitForSavesRunsThem) {
    ChildProcess child([] {
        failCall(SystemCall::Clone, EAGAIN);
        QRVSettingsSetObjectForKeyPath(1, "A");
        EXPECT_EQ(QRVSettingsWaitForSaves({}).state, QRVSaveStatus::State::Pending);
        const auto status = QRVSettingsWaitForSaves(std::chrono::seconds(10));
        EXPECT_EQ(status.state, QRVSaveStatus::State::Saved);
        EXPECT_TRUE(isSaved("A", 1));
        return !testing::Test::HasFailure();
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(MemoryShortage, ForTheStacksOfThreadsEndsNoHostAndLosesNothing) {
    if (isSanitized) GTEST_SKIP() << "a sanitizer needs more than the limit leaves";
    EXPECT_TRUE(isUnharmedBy<NoStacks>(true));
}

TEST(WatchShortage, EndsNoHostAndIsReportedOnce) {
    ChildProcess child([] {
        failCall(SystemCall::InotifyAdd, ENOSPC);
        return lives() && failures == 1 && isWellAfterwards();
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(NoHomeFolder, IsReportedOnceAndNothingIsWatched) {
    ChildProcess child([] {
        unsetenv("HOME");
        unsetenv("XDG_CONFIG_HOME");
        // The password database cannot be read either.
        failCall(SystemCall::Open, EACCES);
        std::atomic<int> watchFailures = 0;
        setFileFailureHandler([&](const FileFailure& failure) {
            if (failure.operation == "watch file") ++watchFailures;
        });
        store().setMonitorFileChanges(true);
        store().prepare();
        store().prepare();
        QRVSettingsSetObjectForKeyPath(1, "A");
        finishSaves();
        setFileFailureHandler(nullptr);
        return store().location().empty() && watchFailures == 1 &&
               QRVSettingsObjectForKeyPath("A") == 1;
    });
    EXPECT_TRUE(child.succeeded());
}
