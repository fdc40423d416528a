// SPDX-License-Identifier: MIT
// Where the user's library folder is.

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

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

constexpr uid_t nobody = 65534;

std::string configurationFolderOf(uid_t user) {
    const passwd* const entry = getpwuid(user);
    return entry == nullptr ? "" : std::string(entry->pw_dir) + "/.config";
}

std::string outputOf(const std::string& command) {
    std::string output;
    FILE* const stream = popen(command.c_str(), "r");
    std::array<char, 4096> buffer{};
    while (fgets(buffer.data(), buffer.size(), stream) != nullptr) output += buffer.data();
    return pclose(stream) == 0 ? output : "failed\n";
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
    EXPECT_EQ(UserFolders::libraryFolder(nullptr, nullptr, [] { return std::string("/root/"); }),
              "/root/.config");
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
    std::filesystem::copy_file(QRV_LIBRARY_FOLDER_PRINTER, "printer");
    // The search for leaks needs a process that may trace itself.
    const std::string command =
        "ASAN_OPTIONS=detect_leaks=0 XDG_CONFIG_HOME=/of/the/caller HOME=/of/the/caller ./printer";
    EXPECT_EQ(outputOf(command), "/of/the/caller\n");
    ASSERT_EQ(chown("printer", nobody, static_cast<gid_t>(-1)), 0);
    ASSERT_EQ(chmod("printer", 04755), 0);
    const std::string output = outputOf(command + " privileged");
    if (output.empty()) GTEST_SKIP() << "a program gets no privileges by its file here";
    EXPECT_EQ(output, configurationFolderOf(nobody) + "\n");
}
