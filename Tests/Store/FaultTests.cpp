// SPDX-License-Identifier: MIT
// Saves that are killed at each of their system calls, and saves of which each call fails; and the
// order of the calls, which decides what a crash of the system leaves.

#include <gtest/gtest.h>

#include <span>

#include "Files/SystemCallFilter.h"
#include "Platform/Files/Files.h"
#include "Support/TracedSave.h"

using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using namespace TracedSave;

namespace {

bool write(const char* keyPath, const PropertyListValue& value) {
    QRVSettingsSetObjectForKeyPath(value, keyPath);
    finishSaves();
    return QRVSettingsObjectForKeyPath(keyPath) == value;
}

const NSDictionary before{{"Key", "old"}};
const NSDictionary first{{"Key", "old"}, {"A", "first"}};
const NSDictionary both{{"Key", "old"}, {"A", "first"}, {"B", "second"}};

/// Answers how many calls there were that might have failed.
int runWithFailureOf(int unlucky, int error, const std::function<bool()>& body) {
    int count = 0;
    bool isOver = false;
    const int status = TracedProcess::run(body, [&](const Call& call) {
        isOver = isOver || call.is({SYS_getppid});
        return !isOver && mayFail(call) && count++ == unlucky ? error : TracedProcess::goesOn;
    });
    EXPECT_TRUE(TracedProcess::succeeded(status))
        << "call " << unlucky << " fails with " << std::strerror(error);
    return count;
}

/// What a system call does to the settings file; empty when nothing.
std::string stepOf(const Call& call, std::uint64_t& newFile) {
    const bool creates = call.is({SYS_openat}) && (call.arguments[2] & O_CREAT) != 0;
    if (creates && call.textOf(1).ends_with(".tmp")) return "create";
    if (call.is({SYS_fchmod}) && newFile == 0) {
        newFile = call.arguments[0];
        return "set mode";
    }
    if (isFileWrite(call)) return "write";
    if (call.is({SYS_fdatasync}) && call.arguments[0] == newFile) return "sync bytes";
    if (call.is({SYS_rename})) return "rename";
    if (call.is({SYS_fsync})) return "sync folder";
    return {};
}

/// A disk that loses whatever is not synced: a rename may have happened without the bytes before
/// it.
bool isWholeAfterACrash(std::span<const std::string> steps) {
    const auto has = [steps](const char* step) {
        return std::find(steps.begin(), steps.end(), step) != steps.end();
    };
    return !has("rename") || has("sync bytes");
}

}  // namespace

TEST(Faults, ASaveThatIsKilledAtAnySystemCallLeavesAWholeFile) {
    if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    int killed = 0;
    auto slowest = std::chrono::steady_clock::duration::zero();
    for (int last = 0;; ++last) {
        StoreSupport::writeSettings(before);
        int calls = 0;
        const int status = TracedProcess::run([] { return write("A", "first"); },
                                              [&](const Call&) {
                                                  return calls++ == last ? TracedProcess::kills
                                                                         : TracedProcess::goesOn;
                                              });
        if (TracedProcess::succeeded(status)) break;
        ++killed;
        const NSDictionary left = fileTree();
        ASSERT_TRUE(left == before || left == first) << "killed at call " << last << ": " << left;
        const auto start = std::chrono::steady_clock::now();
        ChildProcess next([] { return write("A", "first") && write("B", "second"); });
        ASSERT_TRUE(next.succeeded()) << "after a kill at call " << last;
        slowest = std::max(slowest, std::chrono::steady_clock::now() - start);
        ASSERT_EQ(fileTree(), both);
        ASSERT_EQ(filesInFolder(), fileAndLock());
    }
    EXPECT_GT(killed, 20);
    RecordProperty("Kills", killed);
    RecordProperty("SlowestNextProcessMilliseconds",
                   static_cast<int>(slowest / std::chrono::milliseconds(1)));
}

TEST(Faults, WhicheverCallOfASaveFailsNothingIsLost) {
    if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    int failures = 0;
    for (const int error : {ENOSPC, EIO, EMFILE, EACCES, EDQUOT}) {
        int unlucky = 0;
        for (bool hasFailed = true; hasFailed; ++unlucky) {
            StoreSupport::writeSettings(before);
            const int calls = runWithFailureOf(unlucky, error, [] {
                const bool isWritten = write("A", "first");
                endOfFailures();
                const NSDictionary left = fileTree();
                const bool isWhole =
                    left == before || left == first || left == NSDictionary{{"A", "first"}};
                return isWritten && isWhole && write("B", "second");
            });
            hasFailed = calls > unlucky;
            const NSDictionary left = fileTree();
            ASSERT_EQ(left.objectForKey("A"), "first") << unlucky << " " << std::strerror(error);
            ASSERT_EQ(left.objectForKey("B"), "second") << unlucky << " " << std::strerror(error);
            ASSERT_TRUE(writerGetsTheLock());
            if (left == both) {
                ASSERT_EQ(filesInFolder(), fileAndLock()) << unlucky << " " << std::strerror(error);
                continue;
            }
            // The file could not be read, and was not known when it was replaced.
            const std::string backup = QRVSettingsLocation() + ".damaged-1";
            ASSERT_EQ(
                NSPropertyListSerialization::propertyListWithData(StoreSupport::contentsOf(backup))
                    .value.dictionary(),
                before)
                << unlucky << " " << std::strerror(error);
            std::filesystem::remove(backup);
        }
        EXPECT_GT(unlucky, 15);
        failures += unlucky - 1;
    }
    RecordProperty("FailedCalls", failures);
}

TEST(Faults, WhicheverCallOfAFirstSaveFailsTheNextOneMakesTheFile) {
    if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    for (const int error : {ENOSPC, EIO, EMFILE, EACCES, EDQUOT}) {
        int unlucky = 0;
        for (bool hasFailed = true; hasFailed; ++unlucky) {
            std::filesystem::remove_all(folder().parent_path());
            const int calls = runWithFailureOf(unlucky, error, [] {
                const bool isWritten = write("A", "first");
                endOfFailures();
                const NSDictionary left = fileTree();
                return isWritten && (left.isNull() || left == NSDictionary{{"A", "first"}}) &&
                       write("B", "second");
            });
            hasFailed = calls > unlucky;
            ASSERT_EQ(fileTree(), NSDictionary({{"A", "first"}, {"B", "second"}}))
                << unlucky << " " << std::strerror(error);
            ASSERT_EQ(filesInFolder(), fileAndLock()) << unlucky << " " << std::strerror(error);
            ASSERT_TRUE(writerGetsTheLock());
        }
        EXPECT_GT(unlucky, 15);
    }
}

TEST(Faults, ASystemThatCrashesAtAnyMomentOfASaveLeavesAWholeFile) {
    if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    StoreSupport::writeSettings(before);
    ASSERT_TRUE(writerGetsTheLock());  // whose file is there from now on
    std::vector<std::string> steps;
    std::uint64_t newFile = 0;
    const int status =
        TracedProcess::run([] { return write("A", "first"); },
                           [&](const Call& call) {
                               if (const std::string step = stepOf(call, newFile); !step.empty())
                                   steps.push_back(step);
                               return TracedProcess::goesOn;
                           });
    EXPECT_TRUE(TracedProcess::succeeded(status));
    const std::vector<std::string> inOrder{"create",     "set mode", "write",
                                           "sync bytes", "rename",   "sync folder"};
    ASSERT_EQ(steps, inOrder);
    for (std::size_t done = 0; done <= steps.size(); ++done)
        EXPECT_TRUE(isWholeAfterACrash(std::span(steps).first(done))) << "after " << done;
}

TEST(Faults, AProcessReadsTheOldFileWhileTheDiskHoldsUpTheSaveOfAnother) {
    StoreSupport::writeSettings(before);
    const Gate isSyncing;
    ChildProcess writer([&] {
        static const Gate* const gate = &isSyncing;
        const auto hang = [](int) {
            gate->open();
            pause();
        };
        if (signal(SIGSYS, hang) == SIG_ERR) return false;
        answerCallWith(SystemCall::SyncData, SECCOMP_RET_TRAP);
        return write("A", "first");
    });
    ASSERT_TRUE(isSyncing.wait());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(QRVSettingsStorage(), before);
    EXPECT_LT(std::chrono::steady_clock::now() - start, QRVPlatform::readerLockTimeout);
    EXPECT_FALSE(writer.hasEnded());
}
