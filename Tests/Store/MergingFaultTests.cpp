// SPDX-License-Identifier: MIT
// Merging saves that are killed at each of their system calls, and merging saves of which each call
// fails, also when another process has written before.

#include <gtest/gtest.h>
#include <ucontext.h>

#include <atomic>
#include <csignal>

#include "Files/SystemCallFilter.h"
#include "Platform/Files/Files.h"
#include "Support/HostProcess.h"
#include "Support/TracedSave.h"

using namespace QRVPlatform;
using namespace TracedSave;
using HostProcess::allIsSaved;
using StoreSupport::fileTree;

namespace {

const NSDictionary old{{"Key", "old"}};

/// The file when the save under test begins.
enum class Found {
    NeverRead,   ///< by this process; the reading is part of the test
    OwnFile,     ///< of this process's last save
    OthersFile,  ///< of another process, after this process's last save
};

NSDictionary with(const NSDictionary& tree, const char* key) {
    const NSMutableDictionary result = tree.mutableCopy();
    result.setObjectForKey("written", key);
    return result.copy();
}

NSDictionary fileBefore(Found found) {
    switch (found) {
        case Found::NeverRead:
            return old;
        case Found::OwnFile:
            return with(old, "A");
        case Found::OthersFile:
            break;
    }
    return with(with(old, "A"), "Other");
}

/// What is between two of these is under test.
void mark() {
    syscall(SYS_getppid);
}

bool prepareFile(Found found) {
    QRVSettings::sharedSettings().setMergesSaves(true);
    if (found == Found::NeverRead) return true;
    QRVSettingsSetObjectForKeyPath("written", "A");
    if (!allIsSaved()) return false;
    return found == Found::OwnFile ||
           !replaceFile(QRVSettingsLocation(),
                        NSPropertyListSerialization::dataWithPropertyList(fileBefore(found)).bytes);
}

bool memoryEqualsTheFile() {
    DispatchMainQueue::shared().drain();
    return QRVSettingsStoredValues() == fileTree();
}

bool saveUnderTest(Found found) {
    if (!prepareFile(found)) return false;
    mark();
    QRVSettingsSetObjectForKeyPath("written", "B");
    return allIsSaved();
}

/// Whatever happened to the save, the file is old or new, and this process knows which. The next
/// save brings everything.
bool saveThatMayFail(Found found) {
    int reports = 0;
    setFileFailureHandler([&reports](const FileFailure&) { ++reports; });
    const bool isSaved = saveUnderTest(found);
    const QRVSaveStatus status = QRVSettingsWaitForSaves(testDeadline);
    mark();
    const NSDictionary before = fileBefore(found);
    if (isSaved) {
        EXPECT_EQ(fileTree(), with(before, "B"));
    } else {
        EXPECT_EQ(fileTree(), before);
        EXPECT_EQ(status.state, QRVSaveStatus::State::Failed);
        EXPECT_EQ(status.keyPaths, NSArray({"B"}));
        EXPECT_GT(reports, 0) << status.reason;
    }
    EXPECT_EQ(QRVSettingsObjectForKeyPath("B"), "written");
    QRVSettingsSetObjectForKeyPath("written", "C");
    EXPECT_TRUE(allIsSaved());
    EXPECT_TRUE(memoryEqualsTheFile()) << QRVSettingsStoredValues();
    return !testing::Test::HasFailure();
}

/// Calls under test, counted; the one with the number gets the verdict.
class Verdict {
  public:
    Verdict(int number, int verdict) : number_(number), verdict_(verdict) {}
    int operator()(const Call& call, bool counts) {
        if (call.is({SYS_getppid})) ++marks_;
        if (marks_ != 1 || !counts) return TracedProcess::goesOn;
        return calls_++ == number_ ? verdict_ : TracedProcess::goesOn;
    }
    [[nodiscard]] bool isGiven() const { return calls_ > number_; }

  private:
    int number_;
    int verdict_;
    int marks_ = 0;
    int calls_ = 0;
};

std::string nameOf(const testing::TestParamInfo<Found>& information) {
    switch (information.param) {
        case Found::NeverRead:
            return "NeverRead";
        case Found::OwnFile:
            return "OwnFile";
        case Found::OthersFile:
            break;
    }
    return "OthersFile";
}

class MergingFaults : public testing::TestWithParam<Found> {
  protected:
    void SetUp() override {
        if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    }
};

}  // namespace

TEST_P(MergingFaults, ASaveThatIsKilledAtAnySystemCallLosesNothingOfOthers) {
    const NSDictionary before = fileBefore(GetParam());
    int killed = 0;
    for (;; ++killed) {
        StoreSupport::writeSettings(old);
        Verdict verdict(killed, TracedProcess::kills);
        TracedProcess::run([] { return saveUnderTest(GetParam()); },
                           [&verdict](const Call& call) { return verdict(call, true); });
        if (!verdict.isGiven()) break;
        const NSDictionary left = fileTree();
        ASSERT_TRUE(left == before || left == with(before, "B")) << killed << ": " << left;
        ChildProcess next([] {
            QRVSettings::sharedSettings().setMergesSaves(true);
            QRVSettingsSetObjectForKeyPath("written", "C");
            return allIsSaved();
        });
        ASSERT_TRUE(next.succeeded()) << "after a kill at call " << killed;
        ASSERT_EQ(fileTree(), with(left, "C"));
        ASSERT_EQ(filesInFolder(), fileAndLock());
    }
    EXPECT_GT(killed, 15);
    RecordProperty("Kills", killed);
}

TEST_P(MergingFaults, WhicheverCallOfASaveFailsTheNextSaveBringsEverything) {
    const NSDictionary all = with(with(fileBefore(GetParam()), "B"), "C");
    int failures = 0;
    for (const int error : {ENOSPC, EIO, EMFILE, EACCES}) {
        for (int unlucky = 0;; ++unlucky, ++failures) {
            StoreSupport::writeSettings(old);
            Verdict verdict(unlucky, error);
            const int status = TracedProcess::run(
                [] { return saveThatMayFail(GetParam()); },
                [&verdict](const Call& call) { return verdict(call, mayFail(call)); });
            ASSERT_TRUE(TracedProcess::succeeded(status))
                << "call " << unlucky << " fails with " << std::strerror(error);
            ASSERT_EQ(fileTree(), all) << unlucky << " " << std::strerror(error);
            ASSERT_EQ(filesInFolder(), fileAndLock()) << unlucky << " " << std::strerror(error);
            ASSERT_TRUE(writerGetsTheLock());
            if (!verdict.isGiven()) break;
        }
    }
    EXPECT_GT(failures, 40);
    RecordProperty("FailedCalls", failures);
}

namespace {

/// Holds up the next sync of a folder, which is the last thing that a save does.
struct HeldSync {
    const Gate isThere;
    const Gate goesOn;
    std::atomic<bool> isArmed = false;
};
HeldSync* heldSync = nullptr;

/// In the place of each sync of a folder, on its thread.
void onSyncOfFolder(int, siginfo_t*, void* context) {
    if (heldSync->isArmed.exchange(false)) {
        heldSync->isThere.open();
        if (!heldSync->goesOn.wait()) _exit(2);
    }
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RAX] = 0;
}

void watchSyncsOfFolders(HeldSync& held) {
    heldSync = &held;
    struct sigaction action {};
    action.sa_sigaction = onSyncOfFolder;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigaction(SIGSYS, &action, nullptr);
    answerCallWith(SystemCall::Sync, SECCOMP_RET_TRAP);
}

bool hearsWhatIsWrittenWhileItSyncs() {
    HeldSync held;
    watchSyncsOfFolders(held);
    QRVSettings& store = QRVSettings::sharedSettings();
    std::vector<std::string> received;
    store.setMergesSaves(true);
    store.setMonitorFileChanges(true);
    store.setOnChange([&received](const NSArray& keyPaths) {
        for (const PropertyListValue& keyPath : keyPaths) received.push_back(keyPath.stringValue());
    });
    const auto drain = [&store] {
        store.readQueue().sync([] {});
        DispatchMainQueue::shared().drain();
    };
    QRVSettingsSetObjectForKeyPath(1, "A");
    StoreSupport::finishSaves();
    held.isArmed = true;
    QRVSettingsSetObjectForKeyPath(2, "A");
    if (!held.isThere.wait()) return false;
    const NSDictionary others{{"A", 3}};
    EXPECT_FALSE(replaceFile(QRVSettingsLocation(),
                             NSPropertyListSerialization::dataWithPropertyList(others).bytes));
    store.presentedItemDidChange();
    drain();
    held.goesOn.open();
    StoreSupport::finishSaves();
    drain();
    EXPECT_EQ(received, std::vector<std::string>{"A"});
    EXPECT_EQ(QRVSettingsStoredValues(), others);
    return !testing::Test::HasFailure();
}

}  // namespace

TEST(MergingSync, AChangeThatAReloadReadsBeforeTheEndOfASaveIsReported) {
    ChildProcess host(hearsWhatIsWrittenWhileItSyncs);
    EXPECT_TRUE(host.succeeded());
}

INSTANTIATE_TEST_SUITE_P(Files, MergingFaults,
                         testing::Values(Found::NeverRead, Found::OwnFile, Found::OthersFile),
                         nameOf);
