// SPDX-License-Identifier: MIT
// Every step of an operation made to fail, or to be the last thing the process does.

#include <gtest/gtest.h>

#include <signal.h>

#include <filesystem>
#include <functional>
#include <set>
#include <stdexcept>

#include "Coordination/KernelLocks.h"
#include "Files/SystemCallFilter.h"
#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace {

using Paths = std::set<std::string>;

const std::string newContents(much, 'n');

bool failsToReplace(SystemCall call, int error) {
    ChildProcess child([&] {
        failCall(call, error);
        return replaceFile("file", newContents) == std::error_code(error, std::generic_category());
    });
    return child.succeeded();
}

bool diesReplacing(SystemCall call) {
    ChildProcess child([&] {
        dieAtCall(call);
        replaceFile("file", newContents);
        return false;
    });
    return child.diedOf(SIGSYS);
}

/// In a coordinated write, by a path that leads to the same file.
void replaceCoordinated(
    const std::string& path = "file", const std::function<void()>& afterwards = [] {}) {
    NSFileCoordinator().coordinateWritingItemAtURL(
        "file", NSFileCoordinator::WritingOptions::ForReplacing, [&](const std::string&) {
            replaceFile(path, newContents);
            afterwards();
        });
}

bool areLocksFree() {
    return !isLocked(".file.lock") && !isLocked("file");
}

bool backsUpUnder(SystemCall call, int error, const std::string& expectedPath) {
    ChildProcess child([&] {
        failCall(SystemCall::Link, EPERM);
        failCall(call, error);
        return backUpFile("file").path == expectedPath;
    });
    return child.succeeded();
}

}  // namespace

TEST(FailingSystemCalls, AnyStepOfAReplacementThatFailsLeavesTheOldFileAndNoTemporaryFile) {
    writePlainly("file", "old");
    EXPECT_TRUE(failsToReplace(SystemCall::Open, EACCES));
    EXPECT_TRUE(failsToReplace(SystemCall::ChangeMode, EIO));
    EXPECT_TRUE(failsToReplace(SystemCall::WriteMuch, ENOSPC));
    EXPECT_TRUE(failsToReplace(SystemCall::SyncData, EIO));
    EXPECT_TRUE(failsToReplace(SystemCall::Rename, EROFS));
    EXPECT_EQ(readPlainly("file"), "old");
    EXPECT_EQ(everythingIn("."), Paths{"file"});
}

TEST(FailingSystemCalls, AFileIsReplacedWhereOwnersCannotBeKeptOrFoldersNotSynced) {
    for (const SystemCall call : {SystemCall::ChangeOwner, SystemCall::Sync}) {
        writePlainly("file", "old");
        ChildProcess child([&] {
            failCall(call, EPERM);
            return !replaceFile("file", newContents);
        });
        EXPECT_TRUE(child.succeeded());
        EXPECT_EQ(readPlainly("file"), newContents);
        EXPECT_EQ(everythingIn("."), Paths{"file"});
    }
}

TEST(FailingSystemCalls, ReadersMayReadBeforeTheFolderIsSynced) {
    for (const std::string& path :
         {std::string("file"), std::string("./file"), std::filesystem::absolute("file").string()}) {
        writePlainly("file", "old");
        ChildProcess child([&] {
            const auto look = [](int) {
                _exit(areLocksFree() && readPlainly("file") == newContents ? 0 : 2);
            };
            if (signal(SIGSYS, look) == SIG_ERR) return false;
            answerCallWith(SystemCall::Sync, SECCOMP_RET_TRAP);
            replaceCoordinated(path);
            return false;
        });
        EXPECT_TRUE(child.succeeded()) << path;
    }
}

TEST(FailingSystemCalls, ACoordinatedWriteReturnsOnlyAfterTheFolderIsSynced) {
    ChildProcess returning([] {
        dieAtCall(SystemCall::Sync);
        replaceCoordinated();
        return false;
    });
    EXPECT_TRUE(returning.diedOf(SIGSYS));
    ChildProcess throwing([] {
        dieAtCall(SystemCall::Sync);
        try {
            replaceCoordinated("file", [] { throw std::runtime_error("after the replacement"); });
        } catch (const std::runtime_error&) {
            return false;
        }
        return false;
    });
    EXPECT_TRUE(throwing.diedOf(SIGSYS));
}

TEST(FailingSystemCalls, ACoordinatedWriteSucceedsWhereFoldersCannotBeSynced) {
    writePlainly("file", "old");
    ChildProcess child([] {
        failCall(SystemCall::Sync, EIO);
        std::error_code replaced = make_error_code(std::errc::io_error);
        const std::error_code coordinated = NSFileCoordinator().coordinateWritingItemAtURL(
            "file", NSFileCoordinator::WritingOptions::ForReplacing,
            [&](const std::string& path) { replaced = replaceFile(path, newContents); });
        return !replaced && !coordinated;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), newContents);
}

TEST(FailingSystemCalls, ACrashAtAnyStepLeavesAWholeFileAndTheNextReplacementCleansUp) {
    for (const SystemCall call :
         {SystemCall::ChangeOwner, SystemCall::ChangeMode, SystemCall::WriteMuch,
          SystemCall::SyncData, SystemCall::Rename}) {
        writePlainly("file", "old");
        ASSERT_TRUE(diesReplacing(call));
        EXPECT_EQ(readPlainly("file"), "old");
        EXPECT_EQ(everythingIn("."), (Paths{".file.tmp", "file"}));
        EXPECT_FALSE(replaceFile("file", "next"));
        EXPECT_EQ(readPlainly("file"), "next");
        EXPECT_EQ(everythingIn("."), Paths{"file"});
    }
    ASSERT_TRUE(diesReplacing(SystemCall::Sync));
    EXPECT_EQ(readPlainly("file"), newContents);
    EXPECT_EQ(everythingIn("."), Paths{"file"});
}

TEST(FailingSystemCalls, TheTemporaryFileIsNeverWiderAndReadyBeforeItsFirstByte) {
    const mode_t before = umask(0);
    for (const unsigned mode : {0400U, 0600U, 0640U, 0664U}) {
        writePlainly("file", "old");
        chmod("file", mode);
        ASSERT_TRUE(diesReplacing(SystemCall::ChangeOwner));
        EXPECT_EQ(modeOf(".file.tmp") & ~0600U, 0U) << "private while it has no owner";
        ASSERT_TRUE(diesReplacing(SystemCall::ChangeMode));
        EXPECT_EQ(modeOf(".file.tmp") & ~0600U, 0U);
        ASSERT_TRUE(diesReplacing(SystemCall::WriteMuch));
        EXPECT_EQ(modeOf(".file.tmp"), mode);
        EXPECT_EQ(readPlainly(".file.tmp"), "");
        std::filesystem::remove("file");
    }
    ASSERT_TRUE(diesReplacing(SystemCall::ChangeMode));
    EXPECT_EQ(modeOf(".file.tmp") & ~0600U, 0U) << "a new file";
    umask(before);
}

TEST(FailingSystemCalls, TheLockFileIsNeverWiderThanPrivate) {
    const mode_t before = umask(0);
    ChildProcess child([] {
        dieAtCall(SystemCall::ChangeMode);
        NSFileCoordinator().coordinateWritingItemAtURL(
            "file", NSFileCoordinator::WritingOptions::None, [](const std::string&) {});
        return false;
    });
    EXPECT_TRUE(child.diedOf(SIGSYS));
    umask(before);
    EXPECT_EQ(modeOf(".file.lock"), 0600U);
}

TEST(FailingSystemCalls, WhereLinksAreNotPossibleTheBackupIsACopy) {
    writePlainly("file", std::string(200'000, 'd'));
    chmod("file", 0640);
    writePlainly("file.damaged-1", "earlier");
    for (const int error : {EPERM, EOPNOTSUPP, EMLINK, EXDEV, ENOSYS}) {
        ChildProcess child([&] {
            failCall(SystemCall::Link, error);
            return backUpFile("file").path == "file.damaged-2";
        });
        EXPECT_TRUE(child.succeeded()) << error;
        EXPECT_EQ(readPlainly("file.damaged-2"), std::string(200'000, 'd'));
        EXPECT_EQ(modeOf("file.damaged-2"), 0640U);
        EXPECT_EQ(readPlainly("file.damaged-1"), "earlier");
        EXPECT_EQ(std::filesystem::hard_link_count("file"), 1U);
        std::filesystem::remove("file.damaged-2");
    }
}

TEST(FailingSystemCalls, ACopyThatFailsIsRemoved) {
    writePlainly("file", std::string(much, 'd'));
    for (const SystemCall call :
         {SystemCall::Open, SystemCall::ChangeMode, SystemCall::WriteMuch, SystemCall::SyncData})
        EXPECT_TRUE(backsUpUnder(call, EIO, ""));
    EXPECT_EQ(everythingIn("."), Paths{"file"});
    EXPECT_TRUE(backsUpUnder(SystemCall::Sync, EIO, "file.damaged-1"));
}

TEST(FailingSystemCalls, WhereLocksAreNotPossibleReadersReadAndWritersFail) {
    NSFileCoordinator().coordinateWritingItemAtURL("file", NSFileCoordinator::WritingOptions::None,
                                                   [](const std::string&) {});
    ChildProcess child([] {
        failCall(SystemCall::Flock, ENOLCK);
        int runs = 0;
        const auto count = [&](const std::string&) { ++runs; };
        NSFileCoordinator coordinator;
        return coordinator.coordinateWritingItemAtURL("file",
                                                      NSFileCoordinator::WritingOptions::None,
                                                      count) == std::errc::no_lock_available &&
               runs == 0 &&
               !coordinator.coordinateReadingItemAtURL(
                   "file", NSFileCoordinator::ReadingOptions::None, count) &&
               runs == 1;
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(FailingSystemCalls, EveryFileIsOpenedCloseOnExec) {
    ChildProcess child([] {
        failCall(SystemCall::Link, EPERM);
        dieAtOpenWithoutCloseOnExec();
        NSFileCoordinator coordinator;
        const auto replace = [](const std::string& path) { replaceFile(path, "bytes"); };
        const auto read = [](const std::string& path) { contentsOfFile(path, 100); };
        for (int count = 0; count < 2; ++count) {
            coordinator.coordinateWritingItemAtURL(
                "new/file", NSFileCoordinator::WritingOptions::None, replace);
            coordinator.coordinateReadingItemAtURL("new/file",
                                                   NSFileCoordinator::ReadingOptions::None, read);
        }
        return backUpFile("new/file").path == "new/file.damaged-1";
    });
    EXPECT_TRUE(child.succeeded());
}
