// SPDX-License-Identifier: MIT
// The command `doctor` where files and folders belong to other users: its advice works.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "Tool/ToolSupport.h"

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::writeFile;

namespace {

constexpr uid_t stranger = 54321;
constexpr int cannotBeTried = 77;

void becomeStranger() {
    if (setgid(stranger) != 0 || setuid(stranger) != 0 || access(QRV_TOOL, X_OK) != 0)
        _exit(cannotBeTried);
}

void give(const std::filesystem::path& path, uid_t user) {
    ASSERT_EQ(lchown(path.c_str(), user, user), 0) << path;
}

uid_t ownerOf(const std::filesystem::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? status.st_uid : static_cast<uid_t>(-1);
}

struct Finding {
    std::string message;
    std::string advice;
};

std::vector<Finding> findings(const std::function<void()>& prepare = {}) {
    const json report = json::parse(run({"doctor", "--json"}, {"", prepare}).output);
    std::vector<Finding> found;
    for (const json& finding : report["findings"]) {
        // The machine of the test is not examined here.
        if (finding["message"].get<std::string>().starts_with("this machine has no id")) continue;
        found.push_back(
            {finding["level"].get<std::string>() + ": " + finding["message"].get<std::string>(),
             finding["advice"]});
    }
    return found;
}

/// The part of an advice that is a command.
Outcome follow(const std::string& advice, const std::string& start,
               const std::function<void()>& prepare = {}) {
    const std::size_t at = advice.find(start);
    EXPECT_NE(at, advice.npos) << advice;
    return ToolSupport::runProgram("/bin/sh", {"-e", "-c", advice.substr(at)}, {"", prepare});
}

/// A home folder of the stranger with settings, in which the tests put what belongs to root.
class HomeOfAStranger : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "takes root to give files away";
        std::filesystem::permissions(".", std::filesystem::perms(0711));
        unsetenv("XDG_CONFIG_HOME");
        home_ = std::filesystem::absolute("home");
        setenv("HOME", home_.c_str(), 1);
        file_ = settingsFile();
        lock_ = file_.parent_path() / ("." + file_.filename().string() + ".lock");
        writeFile(file_, propertyList("<key>Migration</key><dict><key>CombinedPowerItems</key>"
                                      "<true/><key>Profiles</key><true/></dict>"
                                      "<key>a</key><string>1</string>"));
        writeFile(lock_, "");
        for (const auto& path : {file_, lock_})
            std::filesystem::permissions(path, std::filesystem::perms(0600));
        for (const auto& path : {home_, home_ / ".config", file_.parent_path(), file_, lock_})
            give(path, stranger);
        if (run({"path"}, {"", becomeStranger}).exitCode == cannotBeTried)
            GTEST_SKIP() << "the tool was built in a folder that other users may not search";
    }

    static Outcome asStranger(const std::vector<std::string>& arguments) {
        return run(arguments, {"", becomeStranger});
    }

    std::filesystem::path home_;
    std::filesystem::path file_;
    std::filesystem::path lock_;
};

}  // namespace

TEST_F(HomeOfAStranger, IsInOrder) {
    EXPECT_TRUE(findings(becomeStranger).empty());
    const auto found = findings();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].message, "note: the settings belong to another user: 54321");
}

TEST_F(HomeOfAStranger, TheUserCanReplaceALockFileOfRoot) {
    give(lock_, 0);
    ASSERT_EQ(asStranger({"set", "a", "2"}).exitCode, 4);
    const auto found = findings(becomeStranger);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_THAT(found[0].message, HasSubstr("error: no save can succeed, the lock file cannot be "
                                            "opened: Permission denied, "));
    EXPECT_THAT(found[0].message, HasSubstr("; it belongs to another user: root"));
    ASSERT_EQ(follow(found[0].advice, "rm -f ", becomeStranger).exitCode, 0);
    EXPECT_EQ(asStranger({"set", "a", "2"}).exitCode, 0);
    EXPECT_TRUE(findings(becomeStranger).empty());
}

TEST_F(HomeOfAStranger, TheUserCanTakeOverAFileThatHeCanRead) {
    give(file_, 0);
    std::filesystem::permissions(file_, std::filesystem::perms(0604));
    const auto found = findings(becomeStranger);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].message, "warning: the file belongs to another user: root");
    const Outcome outcome = follow(found[1].advice, "install ", becomeStranger);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(ownerOf(file_), stranger);
    EXPECT_EQ(asStranger({"get", "a"}).output, "1\n");
    EXPECT_TRUE(findings(becomeStranger).empty());
}

TEST_F(HomeOfAStranger, OnlyRootCanGiveAFileThatCannotBeRead) {
    give(file_, 0);
    const auto found = findings(becomeStranger);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_THAT(found[0].message, HasSubstr("error: the settings file cannot be read"));
    EXPECT_EQ(found[0].advice, "as root: chown 54321 '" + file_.string() + "'");
    ASSERT_EQ(follow(found[0].advice, "chown ").exitCode, 0);
    EXPECT_TRUE(findings(becomeStranger).empty());
}

TEST_F(HomeOfAStranger, FoldersOfRootAreGivenBack) {
    for (const auto& path : {home_ / ".config", file_.parent_path(), file_, lock_}) give(path, 0);
    std::filesystem::permissions(home_ / ".config", std::filesystem::perms(0700));
    auto found = findings(becomeStranger);
    ASSERT_FALSE(found.empty());
    bool isNamed = false;
    for (const Finding& finding : found) {
        if (finding.message.find("may not write into the folder") == std::string::npos) continue;
        isNamed = true;
        EXPECT_THAT(finding.message, HasSubstr(", which belongs to another user: root"));
        ASSERT_EQ(follow(finding.advice, "chown -R ").exitCode, 0);
    }
    EXPECT_TRUE(isNamed);
    EXPECT_TRUE(findings(becomeStranger).empty());
    EXPECT_EQ(asStranger({"set", "a", "2"}).exitCode, 0);
}

TEST_F(HomeOfAStranger, RootSeesWhatLocksTheUserOut) {
    give(file_, 0);
    give(lock_, 0);
    auto found = findings();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].message,
              "warning: the file belongs to another user: root, and its folder to 54321");
    EXPECT_EQ(found[1].message,
              "warning: the lock file belongs to another user: root, and its folder to 54321");
    for (const Finding& finding : found) ASSERT_EQ(follow(finding.advice, "chown ").exitCode, 0);
    EXPECT_TRUE(findings(becomeStranger).empty());
    for (const auto& path : {home_ / ".config", file_.parent_path(), file_, lock_}) give(path, 0);
    found = findings();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].message, "warning: the folder " + (home_ / ".config").string() +
                                    " belongs to root, and the one above it to 54321");
    ASSERT_EQ(follow(found[0].advice, "chown -R ").exitCode, 0);
    EXPECT_TRUE(findings(becomeStranger).empty());
}
