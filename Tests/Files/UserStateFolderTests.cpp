// SPDX-License-Identifier: MIT
// Where the user's state folder is; the rules are those of the library folder.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "Platform/Files/Files.h"
#include "Platform/Files/UserFolders.h"
#include "Support/PrivilegedProgram.h"

using namespace QRVPlatform;

namespace {

std::string databaseHome() {
    return "/database/";
}

}  // namespace

TEST(UserStateFolder, IsTheStateHomeWhenThatIsAbsolute) {
    EXPECT_EQ(UserFolders::stateFolder("/state//", "/home", databaseHome), "/state");
}

TEST(UserStateFolder, IsInTheHomeFolderOtherwise) {
    EXPECT_EQ(UserFolders::stateFolder("state", "/home/", databaseHome), "/home/.local/state");
    EXPECT_EQ(UserFolders::stateFolder(nullptr, nullptr, databaseHome), "/database/.local/state");
    EXPECT_EQ(UserFolders::stateFolder("", "", [] { return std::string(); }), "");
}

TEST(UserStateFolder, FollowsTheEnvironment) {
    setenv("XDG_STATE_HOME", "/somewhere/else", 1);
    EXPECT_EQ(userStateFolder(), "/somewhere/else");
    unsetenv("XDG_STATE_HOME");
    setenv("HOME", "/a/home", 1);
    EXPECT_EQ(userStateFolder(), "/a/home/.local/state");
}

TEST(UserStateFolder, OfAPrivilegedProgramIsNotChosenByItsCaller) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to give files away";
    EXPECT_EQ(PrivilegedProgram::printedWithoutPrivileges().back(), "/of/the/caller");
    const auto lines = PrivilegedProgram::printedWithPrivileges();
    if (lines.empty()) GTEST_SKIP() << "a program gets no privileges by its file here";
    EXPECT_TRUE(lines.back().ends_with("/.local/state"));
    EXPECT_FALSE(lines.back().starts_with("/of/the/caller"));
}
