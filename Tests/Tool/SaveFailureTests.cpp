// SPDX-License-Identifier: MIT
// Saves that fail: what the tool says, and what it leaves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::configurationFolder;
using ToolSupport::contentsOf;
using ToolSupport::Outcome;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::writeFile;

namespace {

constexpr rlim_t mostBytes = 4096;

/// As on a full disk: no file of this process may grow past the limit.
void limitFileSize() {
    if (std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR) _exit(1);
    const rlimit limit{mostBytes, mostBytes};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(1);
}

}  // namespace

TEST(SaveFailure, AFileInPlaceOfTheConfigurationFolderIsNamedAsTheReason) {
    writeFile(configurationFolder(), "mine");
    const Outcome outcome = run({"set", "a", "1"});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: cannot save: Not a directory, " + settingsFile().string() + "\n");
    EXPECT_EQ(contentsOf(configurationFolder()), "mine");
    EXPECT_EQ(run({"get", "a"}).exitCode, 1);
}

TEST(SaveFailure, SomethingInPlaceOfTheLockFileIsAFailure) {
    const auto lock =
        settingsFile().parent_path() / ("." + settingsFile().filename().string() + ".lock");
    std::filesystem::create_directories(lock);
    const Outcome outcome = run({"set", "a", "1"});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: cannot save: "));
    EXPECT_FALSE(std::filesystem::exists(settingsFile()));
}

TEST(SaveFailure, AFullDiskLeavesTheOldFile) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const std::string before = contentsOf(settingsFile());
    const Outcome outcome =
        run({"set", "b", "-"}, {std::string(2 * mostBytes, 'x'), limitFileSize});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: cannot save: File too large, " + settingsFile().string() + "\n");
    EXPECT_EQ(contentsOf(settingsFile()), before);
    EXPECT_EQ(run({"get", "a"}).output, "1\n");
}

TEST(SaveFailure, UnsetFailsLikeSet) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    ASSERT_EQ(run({"set", "b", "-"}, {std::string(2 * mostBytes, 'x'), {}}).exitCode, 0);
    const std::string before = contentsOf(settingsFile());
    const Outcome outcome = run({"unset", "a"}, {"", limitFileSize});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, HasSubstr("cannot save: File too large"));
    EXPECT_EQ(contentsOf(settingsFile()), before);
}

TEST(SaveFailure, ADamagedFileStaysWhereTheNewOneCannotBeWritten) {
    ToolSupport::writeSettings("{broken");
    const Outcome outcome = run({"set", "a", "-", "--replace-damaged"},
                                {std::string(2 * mostBytes, 'x'), limitFileSize});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, HasSubstr("cannot save: File too large"));
    EXPECT_EQ(contentsOf(settingsFile()), "{broken");
}

TEST(SaveFailure, WhatAFileCannotHoldIsSaidWithTheReason) {
    std::string keyPath = "a";
    for (int level = 0; level < 600; ++level) keyPath += ".a";
    const Outcome outcome = run({"set", keyPath, "1"});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: cannot save: "));
    EXPECT_THAT(outcome.errors, HasSubstr("512"));
    EXPECT_FALSE(std::filesystem::exists(settingsFile()));
}

TEST(Saving, ProcessesAtTheSameTimeLeaveAWholeFile) {
    constexpr int processes = 8;
    std::vector<pid_t> children;
    for (int number = 0; number < processes; ++number) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const std::string key = "key" + std::to_string(number);
            const int exitCode = run({"set", key, std::string(1000, 'x')}).exitCode;
            _exit(exitCode == 0 || exitCode == 4 ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    const Outcome outcome = run({"list"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("\nkey"));
}
