// SPDX-License-Identifier: MIT
// Existence, attributes and identity of files.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace fs = std::filesystem;

TEST(FileExists, ForFilesOfAnyContentAndFolders) {
    writePlainly("full", "x");
    writePlainly("empty", "");
    fs::create_directory("folder");
    fs::create_symlink("full", "link");
    for (const char* path : {"full", "empty", "folder", "folder/", "link", "/dev/null"})
        EXPECT_TRUE(fileExistsAtPath(path)) << path;
}

TEST(FileExists, NotForWhatIsNotThere) {
    writePlainly("file", "x");
    fs::create_symlink("nowhere", "dangling");
    for (const char* path : {"missing", "", "file/below", "file/", "dangling"})
        EXPECT_FALSE(fileExistsAtPath(path)) << path;
}

TEST(FileExists, NotBelowAFolderThatMayNotBeSearched) {
    if (geteuid() != 0) {
        fs::create_directory("locked");
        writePlainly("locked/file", "x");
        chmod("locked", 0);
        EXPECT_FALSE(fileExistsAtPath("locked/file"));
        chmod("locked", 0700);
        return;
    }
    writePlainly("file", "x");
    const std::string path = fs::current_path() / "file";
    chmod(".", 0700);
    ChildProcess child([&] {
        constexpr uid_t nobody = 65534;
        return setuid(nobody) == 0 && !fileExistsAtPath(path) && !attributesOfItemAtPath(path) &&
               identityOfFileAtPath(path).isMissing();
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(FileAttributes, TellSizeDateModeAndKind) {
    writePlainly("file", "12345");
    chmod("file", 0640);
    const timespec times[2] = {{0, UTIME_OMIT}, {1'000'000'000, 500'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, "file", times, 0), 0);
    const auto attributes = attributesOfItemAtPath("file");
    ASSERT_TRUE(attributes);
    EXPECT_EQ(attributes->size, 5U);
    EXPECT_EQ(attributes->modificationDate, NSDate(21'692'800.5));
    EXPECT_EQ(attributes->mode, 0640U);
    EXPECT_TRUE(attributes->isRegularFile);
}

TEST(FileAttributes, OfAFolderALinkAndNothing) {
    fs::create_directory("folder");
    writePlainly("file", "123");
    fs::create_symlink("file", "link");
    ASSERT_TRUE(attributesOfItemAtPath("folder"));
    EXPECT_FALSE(attributesOfItemAtPath("folder")->isRegularFile);
    EXPECT_EQ(attributesOfItemAtPath("link")->size, 3U);
    EXPECT_FALSE(attributesOfItemAtPath("missing"));
}

TEST(FileIdentity, OfTheSameUnchangedFileIsEqual) {
    writePlainly("file", "x");
    fs::create_symlink("file", "link");
    const FileIdentity identity = identityOfFileAtPath("file");
    EXPECT_FALSE(identity.isMissing());
    EXPECT_EQ(identity, identityOfFileAtPath("file"));
    EXPECT_EQ(identity, identityOfFileAtPath("link"));
}

TEST(FileIdentity, TellsAFileChangedInPlaceAReplacedOneAndATouchedOne) {
    writePlainly("file", "x");
    const FileIdentity first = identityOfFileAtPath("file");
    writePlainly("file", "longer");
    const FileIdentity second = identityOfFileAtPath("file");
    EXPECT_NE(first, second);
    ASSERT_FALSE(replaceFile("file", "longer"));
    const FileIdentity third = identityOfFileAtPath("file");
    EXPECT_NE(second, third);
    const timespec times[2] = {{0, UTIME_OMIT}, {1'000'000'000, 1}};
    ASSERT_EQ(utimensat(AT_FDCWD, "file", times, 0), 0);
    EXPECT_NE(third, identityOfFileAtPath("file"));
    EXPECT_EQ(identityOfFileAtPath("file").modificationTime, 1'000'000'000'000'000'001);
}

TEST(FileIdentity, OfNoFileIsMissing) {
    EXPECT_TRUE(identityOfFileAtPath("missing").isMissing());
    EXPECT_EQ(identityOfFileAtPath("missing"), FileIdentity{});
}
