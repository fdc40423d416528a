// SPDX-License-Identifier: MIT
// Commands that write while another process keeps the settings file locked.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/StoreSupport.h"
#include "Tool/ToolSupport.h"

using StoreSupport::fileTree;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::Outcome;
using ToolSupport::run;
using ToolSupport::RunningTool;
using ToolSupport::snapshot;

namespace {

std::filesystem::path lockFile() {
    return QRVPlatform::filesBeside(QRVSettingsLocation()).lock;
}

int openLockFile() {
    std::filesystem::create_directories(lockFile().parent_path());
    return open(lockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
}

bool takeLock() {
    const int file = openLockFile();
    return file >= 0 && flock(file, LOCK_EX) == 0;
}

/// A process that has the lock of the settings file until it is told to end.
class LockHolder {
  public:
    LockHolder() { EXPECT_TRUE(holds_.wait()); }
    [[nodiscard]] pid_t pid() const { return process_.pid(); }
    void release() {
        end_.open();
        EXPECT_TRUE(process_.succeeded());
    }

  private:
    Gate holds_;
    Gate end_;
    ChildProcess process_{[this] {
        if (!takeLock()) return false;
        holds_.open();
        return end_.wait();
    }};
};

/// As a program that edits the file does: reads it, takes its time, and replaces it, all under the
/// lock.
bool edit(const Gate& holds, std::chrono::milliseconds time) {
    if (!takeLock()) return false;
    const NSMutableDictionary tree = fileTree().mutableCopy();
    holds.open();
    std::this_thread::sleep_for(time);
    tree.setObjectForKey("edited", "Editor");
    const std::string bytes = NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
    const std::filesystem::path newFile = QRVSettingsLocation() + ".new";
    ToolSupport::writeFile(newFile, bytes);
    std::filesystem::rename(newFile, QRVSettingsLocation());
    return true;
}

const std::vector<std::vector<std::string>> commandsThatWrite = {{"set", "a", "2"},
                                                                 {"unset", "a"},
                                                                 {"color", "set", "c", "#000000"},
                                                                 {"color", "unset", "a"},
                                                                 {"appearance", "set", "dark"},
                                                                 {"apply", "changes"},
                                                                 {"import", "whole.plist"}};

}  // namespace

TEST(LockedFile, AnEditorThatHoldsTheLockLosesNothingAndNobodyBesideIt) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const Gate holds;
    ChildProcess editor([&holds] { return edit(holds, std::chrono::milliseconds(2500)); });
    ASSERT_TRUE(holds.wait());
    RunningTool set({"set", "b", "2"});
    RunningTool unset({"unset", "a"});
    EXPECT_EQ(set.finish().exitCode, 0);
    EXPECT_EQ(unset.finish().exitCode, 0);
    EXPECT_TRUE(editor.succeeded());
    EXPECT_EQ(ToolSupport::storedSettings(), R"({"Editor":"edited","b":2})");
}

TEST(LockedFile, AtTheTimeoutACommandEndsAndHasWrittenNothing) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    ToolSupport::writeFile("changes", "set a 3\n");
    ToolSupport::writeFile("whole.plist", ToolSupport::propertyList("<key>a</key><true/>"));
    LockHolder holder;
    const auto before = snapshot(ToolSupport::configurationFolder());
    for (std::vector<std::string> arguments : commandsThatWrite) {
        arguments.insert(arguments.end(), {"--timeout", "0.1"});
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 6) << arguments.front();
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(
            outcome.errors,
            AllOf(StartsWith("qrvsettings: nothing is saved: timed out waiting for the lock of " +
                             QRVSettingsLocation()),
                  HasSubstr("held by process " + std::to_string(holder.pid()) + " (")));
    }
    holder.release();
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);
}

TEST(LockedFile, AHolderThatHasEndedIsNamedByItsNumberAlone) {
    const int file = openLockFile();  // keeps the lock that the child takes
    ChildProcess child([file] { return flock(file, LOCK_EX) == 0; });
    const std::string holder = std::to_string(child.pid());
    ASSERT_TRUE(child.succeeded());
    const Outcome outcome = run({"set", "a", "1", "--timeout", "0.1"});
    EXPECT_EQ(outcome.exitCode, 6);
    EXPECT_THAT(outcome.errors, EndsWith("held by process " + holder + "\n"));
    close(file);
}

TEST(LockedFile, ATimeoutThatDoesNotPassChangesNothing) {
    LockHolder holder;
    RunningTool waiting({"set", "a", "1", "--timeout", "1e9"});
    RunningTool patient({"set", "b", "1"});
    EXPECT_TRUE(fileTree().isNull());
    holder.release();
    EXPECT_EQ(waiting.finish().exitCode, 0);
    EXPECT_EQ(patient.finish().exitCode, 0);
    EXPECT_EQ(ToolSupport::storedSettings(), R"({"a":1,"b":1})");
}

TEST(LockedFile, AFreeLockIsHadAtTheShortestTimeout) {
    EXPECT_EQ(run({"set", "a", "1", "--timeout", "1e-300"}).exitCode, 0);
    for (const char* timeout : {"0", "-1", "nan", "soon"})
        EXPECT_EQ(run({"set", "a", "2", "--timeout", timeout}).exitCode, 2) << timeout;
    EXPECT_EQ(run({"get", "a"}).output, "1\n");
}

TEST(LockedFile, WhatIsSoAlreadyNeedsNoLock) {
    ASSERT_EQ(run({"apply", "-"}, {"set a 1\nset c \"0 0 0 1\"\n", {}}).exitCode, 0);
    ASSERT_EQ(run({"appearance", "set", "dark"}).exitCode, 0);
    ToolSupport::writeFile("changes", "set a 1\nunset b\n");
    ToolSupport::writeFile("whole.plist", run({"export"}).output);
    LockHolder holder;
    const auto before = snapshot(ToolSupport::configurationFolder());
    for (std::vector<std::string> arguments :
         std::vector<std::vector<std::string>>{{"set", "a", "1"},
                                               {"color", "set", "c", "#000000"},
                                               {"appearance", "set", "dark"},
                                               {"apply", "changes"},
                                               {"import", "whole.plist"}}) {
        arguments.insert(arguments.end(), {"--timeout", "0.1"});
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << arguments.front() << outcome.errors;
    }
    holder.release();
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);
}
