// SPDX-License-Identifier: MIT
// What root makes in the folder of another user.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "Files/OtherUsers.h"
#include "Files/SystemCallFilter.h"
#include "Files/TestFiles.h"
#include "Platform/Files/FileRights.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/FolderOwner.h"
#include "Platform/Files/NSFileCoordinator.h"

using namespace QRVPlatform;

using OtherUsers::nobody;

namespace fs = std::filesystem;

namespace {

constexpr uid_t user = 12345;
constexpr gid_t usersGroup = 23456;
const std::string settings = "home/.config/Preferences/file";

/// A folder of the user within one that everybody may search.
void makeHome() {
    fs::create_directory("home");
    chmod(".", 0755);
    ASSERT_EQ(chown("home", user, usersGroup), 0);
}

bool belongsToUser(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && status.st_uid == user &&
           status.st_gid == usersGroup;
}

std::error_code save() {
    std::error_code error;
    const auto coordinated = NSFileCoordinator().coordinateWritingItemAtURL(
        settings, NSFileCoordinator::WritingOptions::None,
        [&](const std::string& path) { error = replaceFile(path, "new"); });
    return coordinated ? coordinated : error;
}

/// What root has open at `opened` is offered as if it had been made at `path`.
void offer(const std::string& opened, const std::string& path) {
    FolderOwner::give(FileDescriptor(open(opened.c_str(), O_RDONLY | O_CLOEXEC)), path);
}

class FolderOwnerTests : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "takes root to work in the folder of another user";
        makeHome();
    }
};

}  // namespace

TEST_F(FolderOwnerTests, HasWhatRootMakesThere) {
    EXPECT_FALSE(save());
    for (const char* path : {"home/.config", "home/.config/Preferences",
                             "home/.config/Preferences/.file.lock", settings.c_str()})
        EXPECT_TRUE(belongsToUser(path)) << path;
    EXPECT_EQ(modeOf("home/.config"), 0700U);
    EXPECT_EQ(modeOf(settings), 0600U);
}

TEST_F(FolderOwnerTests, CanSaveAfterRootHas) {
    EXPECT_FALSE(save());
    EXPECT_TRUE(OtherUsers::succeedsAs(user, usersGroup, [] {
        return !save() && backUpFile(settings).path == settings + ".damaged-1";
    }));
    EXPECT_FALSE(save());
    EXPECT_TRUE(belongsToUser(settings)) << "and after root has again";
}

TEST_F(FolderOwnerTests, HasABackupThatIsACopy) {
    EXPECT_FALSE(save());
    ChildProcess child([] {
        failCall(SystemCall::Link, EPERM);
        return backUpFile(settings).path == settings + ".damaged-1";
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(belongsToUser(settings + ".damaged-1"));
}

TEST_F(FolderOwnerTests, HasANewFileOnlyWhenItIsThere) {
    fs::create_directory("roots");
    writePlainly("roots/made", "");
    offer("roots/made", "home/made");
    EXPECT_FALSE(belongsToUser("roots/made")) << "the path names nothing";
    fs::create_symlink("../roots/made", "home/made");
    offer("roots/made", "home/made");
    EXPECT_FALSE(belongsToUser("roots/made")) << "the path is a link";
    fs::create_directory_symlink("../roots", "home/link");
    offer("roots/made", "home/link/made");
    EXPECT_FALSE(belongsToUser("roots/made")) << "the folder is another one";
    fs::create_hard_link("roots/made", "home/name");
    offer("roots/made", "home/name");
    EXPECT_FALSE(belongsToUser("roots/made")) << "it has two names";
    writePlainly("home/filled", "secret");
    offer("home/filled", "home/filled");
    EXPECT_FALSE(belongsToUser("home/filled")) << "it is not new";
    writePlainly("home/new", "");
    offer("home/new", "home/new");
    EXPECT_TRUE(belongsToUser("home/new"));
}

TEST_F(FolderOwnerTests, HasANewFolderOnlyWhenItIsEmpty) {
    fs::create_directories("home/filled/folder");
    offer("home/filled", "home/filled");
    EXPECT_FALSE(belongsToUser("home/filled"));
    fs::create_directory("home/new");
    offer("home/new", "home/new");
    EXPECT_TRUE(belongsToUser("home/new"));
}

TEST_F(FolderOwnerTests, HasAFileThatIsReplacedOnlyWhenTheNewOneIsThere) {
    writePlainly("home/file", "old");
    ASSERT_EQ(chown("home/file", user, usersGroup), 0);
    struct stat status {};
    ASSERT_EQ(stat("home/file", &status), 0);
    const std::string old = "home/file";
    const FileModel model{old, status};
    fs::create_directory("roots");
    for (const std::string& path : {std::string("roots/new"), std::string("home/new")}) {
        const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        EXPECT_FALSE(FileRights::copyFrom(model, file, path));
        EXPECT_EQ(belongsToUser(path), path.starts_with("home/")) << path;
        EXPECT_EQ(modeOf(path) & ~modeOf("home/file"), 0U) << path;
    }
}

TEST_F(FolderOwnerTests, DoesNotGetTheFilesOfAThirdUser) {
    writePlainly("home/made", "");
    ASSERT_EQ(chown("home/made", nobody, nobody), 0);
    offer("home/made", "home/made");
    EXPECT_FALSE(belongsToUser("home/made"));
}

TEST_F(FolderOwnerTests, DoesNotGetTheFilesOfAnOrdinaryUser) {
    chmod(".", 0777);
    EXPECT_TRUE(
        OtherUsers::succeedsAs(user, usersGroup, [] { return !replaceFile("file", "new"); }));
    EXPECT_TRUE(belongsToUser("file"));
}
