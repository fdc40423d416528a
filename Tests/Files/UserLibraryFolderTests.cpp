// SPDX-License-Identifier: MIT
// Where the user's library folder is.

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "Platform/Files/Files.h"
#include "Platform/Files/UserFolders.h"

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

}  // namespace

TEST(UserLibraryFolder, IsTheConfigurationHomeWhenThatIsAbsolute) {
    EXPECT_EQ(UserFolders::libraryFolder("/configuration", "/home", databaseHome),
              "/configuration");
    EXPECT_EQ(UserFolders::libraryFolder("/", "/home", databaseHome), "/");
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
    const passwd* entry = getpwuid(geteuid());
    EXPECT_EQ(userLibraryFolder(), entry == nullptr ? "" : std::string(entry->pw_dir) + "/.config");
}
