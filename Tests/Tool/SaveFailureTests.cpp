// SPDX-License-Identifier: MIT
// Saves that fail: what the tool says, and what it leaves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iomanip>
#include <set>
#include <sstream>

#include "Support/Shortages.h"
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

rlim_t mostDescriptors = 0;

/// The tool has none of this process's but the first three.
void limitDescriptors() {
    if (close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) != 0) _exit(1);
    const rlimit limit{mostDescriptors, mostDescriptors};
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0) _exit(1);
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
              "qrvsettings: cannot save a: Not a directory, " + settingsFile().string() + "\n");
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

TEST(ReadOnlyFile, IsNoObstacleToWhatIsSoAlready) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    writeFile("same.json", run({"export", "--json"}).output);
    std::filesystem::permissions(settingsFile(), std::filesystem::perms(0444));
    EXPECT_EQ(run({"set", "a", "1"}).exitCode, 0);
    EXPECT_EQ(run({"apply", "-"}, {"set a 1\nunset b\n", {}}).exitCode, 0);
    EXPECT_EQ(run({"import", "same.json"}).exitCode, 0);
    EXPECT_EQ(run({"set", "a", "2"}).exitCode, 4);
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
              "qrvsettings: cannot save b: File too large, " + settingsFile().string() + "\n");
    EXPECT_EQ(contentsOf(settingsFile()), before);
    EXPECT_EQ(run({"get", "a"}).output, "1\n");
}

TEST(SaveFailure, TooFewDescriptorsAreNamedAsTheReason) {
    if (isSanitized) GTEST_SKIP() << "a sanitizer needs descriptors of its own";
    ASSERT_EQ(run({"set", "a", "0"}).exitCode, 0);
    std::set<int> exitCodes;
    for (mostDescriptors = 4; mostDescriptors <= 12; ++mostDescriptors) {
        const std::string before = contentsOf(settingsFile());
        const std::string value = std::to_string(mostDescriptors);
        const Outcome outcome = run({"set", "a", value}, {"", limitDescriptors});
        exitCodes.insert(outcome.exitCode);
        if (outcome.exitCode == 0) {
            EXPECT_EQ(run({"get", "a"}).output, value + "\n");
            continue;
        }
        EXPECT_THAT(outcome.errors, HasSubstr("Too many open files")) << value;
        EXPECT_EQ(contentsOf(settingsFile()), before) << value;
    }
    // 3: the file cannot be read.
    EXPECT_THAT(exitCodes, testing::Each(testing::AnyOf(0, 3, 4)));
    EXPECT_TRUE(exitCodes.contains(0));
}

TEST(SaveFailure, UnsetFailsLikeSet) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    ASSERT_EQ(run({"set", "b", "-"}, {std::string(2 * mostBytes, 'x'), {}}).exitCode, 0);
    const std::string before = contentsOf(settingsFile());
    const Outcome outcome = run({"unset", "a"}, {"", limitFileSize});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, HasSubstr("cannot save a: File too large"));
    EXPECT_EQ(contentsOf(settingsFile()), before);
}

TEST(SaveFailure, ADamagedFileStaysWhereTheNewOneCannotBeWritten) {
    ToolSupport::writeSettings("{broken");
    const Outcome outcome = run({"set", "a", "-", "--replace-damaged"},
                                {std::string(2 * mostBytes, 'x'), limitFileSize});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, HasSubstr("cannot save a: File too large"));
    EXPECT_EQ(contentsOf(settingsFile()), "{broken");
}

TEST(SaveFailure, OfManyKeyPathsTheFirstAreNamed) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const std::string changes =
        "set e " + std::string(2 * mostBytes, 'x') + "\nset b 1\nset c 1\nset d 1\nunset a\n";
    const Outcome outcome = run({"apply", "-"}, {changes, limitFileSize});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_EQ(outcome.errors, "qrvsettings: cannot save a, b, c and 2 more: File too large, " +
                                  settingsFile().string() + "\n");
    EXPECT_EQ(run({"get", "a"}).output, "1\n");
}

TEST(SaveFailure, WhatAFileCannotHoldIsSaidWithTheReason) {
    std::string keyPath = "a";
    for (int level = 0; level < 600; ++level) keyPath += ".a";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"set", keyPath, "1"}, {"color", "set", keyPath, "#000000"}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 5);
        EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: there are more than 512 levels"));
        EXPECT_FALSE(std::filesystem::exists(settingsFile()));
    }
}
