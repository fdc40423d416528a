// SPDX-License-Identifier: MIT
// Saves that fail: what the tool says, and what it leaves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iomanip>
#include <sstream>

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

std::string beside(const std::string& suffix) {
    return settingsFile().parent_path() / ("." + settingsFile().filename().string() + suffix);
}

void expectNotSaved(const std::string& reason) {
    const Outcome outcome = run({"set", "a", "1"});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_EQ(outcome.errors, "qrvsettings: cannot save: " + reason + "\n");
}

/// Root too is refused what its own mode refuses.
void obeyModes() {
    prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

std::string octal(unsigned mode) {
    std::ostringstream digits;
    digits << std::oct << std::setw(3) << std::setfill('0') << mode;
    return digits.str();
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

TEST(SaveFailure, WhatLiesInThePlaceOfTheLockFileIsNamed) {
    const std::string lock = beside(".lock");
    std::filesystem::create_directories(lock);
    expectNotSaved("a folder lies in the place of the lock file, " + lock);
    std::filesystem::remove(lock);
    std::filesystem::create_symlink("elsewhere", lock);
    expectNotSaved("a link lies in the place of the lock file, " + lock);
    std::filesystem::remove(lock);
    ASSERT_EQ(mkfifo(lock.c_str(), 0600), 0);
    expectNotSaved("what is neither file nor folder lies in the place of the lock file, " + lock);
    EXPECT_FALSE(std::filesystem::exists("elsewhere"));
    EXPECT_FALSE(std::filesystem::exists(settingsFile()));
}

TEST(SaveFailure, ALockFileThatCannotBeOpenedIsNamed) {
    writeFile(beside(".lock"), "");
    std::filesystem::permissions(beside(".lock"), std::filesystem::perms::none);
    const Outcome outcome = run({"set", "a", "1"}, {"", obeyModes});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: cannot save: the lock file cannot be opened: Permission denied, " +
                  beside(".lock") + "\n");
}

TEST(SaveFailure, AFolderWhereSavesBeginIsNamed) {
    std::filesystem::create_directories(beside(".tmp"));
    expectNotSaved("a folder lies where saves begin, " + beside(".tmp"));
    EXPECT_EQ(run({"apply", "-", "--dry-run"}, {"set a 1\n", {}}).exitCode, 0) << "saves nothing";
}

TEST(ReadOnlyFile, IsNotReplacedUnlessForced) {
    ASSERT_EQ(run({"set", "a.b", "1"}).exitCode, 0);
    writeFile("new.json", R"({"a":{"b":2}})");
    const std::string before = contentsOf(settingsFile());
    const std::vector<std::vector<std::string>> commands = {
        {"set", "a.b", "2"},          {"unset", "a.b"}, {"color", "set", "c", "#000000"},
        {"color", "unset", "a.b"},    {"apply", "-"},   {"import", "new.json"},
        {"appearance", "set", "dark"}};
    for (const auto& command : commands) {
        writeFile(settingsFile(), before);
        for (const auto mode : {0444U, 0400U, 0466U}) {
            std::filesystem::permissions(settingsFile(), std::filesystem::perms(mode));
            const Outcome outcome = run(command, {"set a.b 2\n", {}});
            EXPECT_EQ(outcome.exitCode, 4) << command.front();
            EXPECT_EQ(outcome.errors, "qrvsettings: the settings file is read-only: mode 0" +
                                          octal(mode) + ", " + settingsFile().string() +
                                          "; --force overwrites it\n");
            EXPECT_EQ(contentsOf(settingsFile()), before);
        }
        std::filesystem::permissions(settingsFile(), std::filesystem::perms(0444));
        std::vector<std::string> forced = command;
        forced.emplace_back("--force");
        EXPECT_EQ(run(forced, {"set a.b 2\n", {}}).exitCode, 0) << command.front();
        EXPECT_NE(contentsOf(settingsFile()), before) << command.front();
        EXPECT_EQ(std::filesystem::status(settingsFile()).permissions(),
                  std::filesystem::perms(0444));
        std::filesystem::remove(settingsFile());
    }
}

TEST(ReadOnlyFile, IsAnObstacleBehindALinkToo) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const auto target = std::filesystem::absolute("target.plist");
    std::filesystem::rename(settingsFile(), target);
    std::filesystem::create_symlink(target, settingsFile());
    std::filesystem::permissions(target, std::filesystem::perms(0444));
    EXPECT_EQ(run({"set", "a", "2"}).exitCode, 4);
    EXPECT_EQ(run({"apply", "-", "--dry-run"}, {"set a 2\n", {}}).output, "a\t1 -> 2\n");
    EXPECT_EQ(run({"get", "a"}).output, "1\n");
    EXPECT_EQ(run({"set", "a", "2", "--force"}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "2\n");
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
