// SPDX-License-Identifier: MIT
// Where the user's library folder is, and those of the site.

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "Platform/Files/Files.h"
#include "Platform/Files/UserFolders.h"
#include "Support/PrivilegedProgram.h"

using namespace QRVPlatform;

namespace {

std::string noHome() {
    return {};
}
std::string databaseHome() {
    return "/database";
}
std::string relativeHome() {
    return "database";
}

std::string configurationFolderOf(uid_t user) {
    const passwd* const entry = getpwuid(user);
    return entry == nullptr ? "" : std::string(entry->pw_dir) + "/.config";
}

}  // namespace

TEST(UserLibraryFolder, IsTheConfigurationHomeWhenThatIsAbsolute) {
    EXPECT_EQ(UserFolders::libraryFolder("/configuration", "/home", databaseHome),
              "/configuration");
}

TEST(UserLibraryFolder, HasNoSlashAtItsEndWhateverTheEnvironmentHas) {
    EXPECT_EQ(UserFolders::libraryFolder("/configuration///", "/home", databaseHome),
              "/configuration");
    EXPECT_EQ(UserFolders::libraryFolder("//a//b/", "/home", databaseHome), "//a//b");
    EXPECT_EQ(UserFolders::libraryFolder(nullptr, "/home//", databaseHome), "/home/.config");
    EXPECT_EQ(UserFolders::libraryFolder(nullptr, "/", databaseHome), "/.config");
    EXPECT_EQ(
        UserFolders::libraryFolder(nullptr, nullptr, [] { return std::string("/home/user/"); }),
        "/home/user/.config");
    for (const char* top : {"/", "//"})
        EXPECT_EQ(UserFolders::libraryFolder(top, "/home", databaseHome), "/.");
}

TEST(UserLibraryFolder, IsInTheHomeFolderWhenTheConfigurationHomeIsNoAbsolutePath) {
    for (const char* unusable : {static_cast<const char*>(nullptr), "", "relative", "./x", "~"})
        EXPECT_EQ(UserFolders::libraryFolder(unusable, "/home", databaseHome), "/home/.config");
}

TEST(UserLibraryFolder, IsInThePasswordDatabasesHomeWhenHomeIsNoAbsolutePath) {
    for (const char* unusable : {static_cast<const char*>(nullptr), "", "relative", "~"})
        EXPECT_EQ(UserFolders::libraryFolder("relative", unusable, databaseHome),
                  "/database/.config");
}

TEST(UserLibraryFolder, IsEmptyWithoutAnyHome) {
    EXPECT_EQ(UserFolders::libraryFolder(nullptr, nullptr, noHome), "");
    EXPECT_EQ(UserFolders::libraryFolder("", "", relativeHome), "");
}

TEST(UserLibraryFolder, FollowsTheEnvironment) {
    setenv("XDG_CONFIG_HOME", "/somewhere/else", 1);
    EXPECT_EQ(userLibraryFolder(), "/somewhere/else");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    setenv("HOME", "/a/home", 1);
    EXPECT_EQ(userLibraryFolder(), "/a/home/.config");
}

TEST(UserLibraryFolder, AsksThePasswordDatabaseLast) {
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("HOME");
    EXPECT_EQ(userLibraryFolder(), configurationFolderOf(geteuid()));
}

TEST(UserLibraryFolder, OfAPrivilegedProgramIsNotChosenByItsCaller) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to give files away";
    EXPECT_EQ(PrivilegedProgram::printedWithoutPrivileges().at(0), "/of/the/caller");
    const auto lines = PrivilegedProgram::printedWithPrivileges();
    if (lines.empty()) GTEST_SKIP() << "a program gets no privileges by its file here";
    EXPECT_EQ(lines.at(0), configurationFolderOf(PrivilegedProgram::nobody));
}

TEST(SiteFolders, AreThoseOfTheListInItsOrder) {
    using Folders = std::vector<std::string>;
    EXPECT_EQ(UserFolders::siteFolders("/b:/a//:/b/"), (Folders{"/b", "/a"}));
    EXPECT_EQ(UserFolders::siteFolders("relative::./x:~:/a"), Folders{"/a"});
    EXPECT_EQ(UserFolders::siteFolders("/"), Folders{"/."});
    EXPECT_EQ(UserFolders::siteFolders("relative"), Folders{});
    for (const char* missing : {static_cast<const char*>(nullptr), ""})
        EXPECT_EQ(UserFolders::siteFolders(missing), Folders{"/etc/xdg"});
}

TEST(SiteFolders, FollowTheEnvironment) {
    setenv("XDG_CONFIG_DIRS", "/of/the/site", 1);
    EXPECT_EQ(UserFolders::siteFolders(), std::vector<std::string>{"/of/the/site"});
    unsetenv("XDG_CONFIG_DIRS");
    EXPECT_EQ(UserFolders::siteFolders(), std::vector<std::string>{"/etc/xdg"});
}

TEST(SiteFolders, OfAPrivilegedProgramAreNotChosenByItsCaller) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to give files away";
    EXPECT_EQ(PrivilegedProgram::printedWithoutPrivileges().at(2), "/of/the/caller");
    const auto lines = PrivilegedProgram::printedWithPrivileges();
    if (lines.empty()) GTEST_SKIP() << "a program gets no privileges by its file here";
    EXPECT_EQ(lines.at(2), "/etc/xdg");
}
