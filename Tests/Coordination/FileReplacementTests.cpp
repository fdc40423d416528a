// SPDX-License-Identifier: MIT
// Replacing files: contents, permissions, dates, what stays behind.

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>

#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace fs = std::filesystem;

TEST(FileReplacement, EachReplacementHasALaterDate) {
    NSDate last(0);
    for (int number = 0; number < 200; ++number) {
        ASSERT_FALSE(replaceFile("dated", std::to_string(number)));
        const NSDate date = attributesOfItemAtPath("dated")->modificationDate;
        ASSERT_GT(date, last) << number;
        last = date;
    }
}

TEST(ReplaceFile, MakesANewPrivateFileUnderAnyUmask) {
    for (const mode_t mask : {0000U, 0022U, 0077U, 0777U}) {
        const std::string path = "file-" + std::to_string(mask);
        const mode_t before = umask(mask);
        const std::error_code error = replaceFile(path, "new");
        umask(before);
        EXPECT_FALSE(error) << error.message();
        EXPECT_EQ(readPlainly(path), "new");
        EXPECT_EQ(modeOf(path), 0600U);
    }
}

TEST(ReplaceFile, KeepsTheModeOfTheOldFileUnderAnyUmask) {
    for (const mode_t mode : {0400U, 0600U, 0640U, 0664U, 0755U})
        for (const mode_t mask : {0000U, 0022U, 0077U}) {
            writePlainly("file", "old");
            chmod("file", mode);
            const mode_t before = umask(mask);
            const std::error_code error = replaceFile("file", "new");
            umask(before);
            EXPECT_FALSE(error) << error.message();
            EXPECT_EQ(readPlainly("file"), "new");
            EXPECT_EQ(modeOf("file"), mode) << mask;
            fs::remove("file");
        }
}

TEST(ReplaceFile, KeepsTheOwnerWhereAllowed) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to give files away";
    writePlainly("file", "old");
    chmod("file", 0640);
    ASSERT_EQ(chown("file", 12345, 23456), 0);
    EXPECT_FALSE(replaceFile("file", "new"));
    struct stat status {};
    ASSERT_EQ(stat("file", &status), 0);
    EXPECT_EQ(status.st_uid, 12345U);
    EXPECT_EQ(status.st_gid, 23456U);
    EXPECT_EQ(modeOf("file"), 0640U);
}

TEST(ReplaceFile, ReplacesAForeignFileWhoseOwnerCannotBeKept) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    writePlainly("file", "old");
    chmod("file", 0644);
    chmod(".", 0777);
    ChildProcess child([] {
        constexpr uid_t nobody = 65534;
        return setuid(nobody) == 0 && !replaceFile("file", "new");
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), "new");
    EXPECT_EQ(modeOf("file"), 0644U);
}

TEST(ReplaceFile, WhatTheOldGroupMightDoIsNotForAnotherGroup) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    writePlainly("file", "old");
    chmod("file", 0664);
    chmod(".", 0777);
    ChildProcess child([] {
        constexpr uid_t nobody = 65534;
        return setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0 &&
               !replaceFile("file", "new");
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), "new");
    EXPECT_EQ(modeOf("file"), 0604U);
}

TEST(ReplaceFile, TheOldFileStaysWholeForThoseWhoHaveItOpen) {
    writePlainly("file", "old");
    std::ifstream open("file");
    EXPECT_FALSE(replaceFile("file", "new"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(open), {}), "old");
}

TEST(ReplaceFile, WritesNothingAndMuch) {
    EXPECT_FALSE(replaceFile("file", ""));
    EXPECT_TRUE(fs::exists("file"));
    EXPECT_EQ(readPlainly("file"), "");
    const std::string much(5'000'000, 'x');
    EXPECT_FALSE(replaceFile("file", much));
    EXPECT_EQ(readPlainly("file"), much);
    EXPECT_FALSE(replaceFile("file", std::string("\0\n", 2)));
    EXPECT_EQ(readPlainly("file"), std::string("\0\n", 2));
}

TEST(ReplaceFile, RemovesWhatAnEarlierProcessLeftAndLeavesNothing) {
    writePlainly(".file.tmp", "left from a crash, and longer");
    chmod(".file.tmp", 0666);
    EXPECT_FALSE(replaceFile("file", "new"));
    EXPECT_EQ(everythingIn("."), std::set<std::string>{"file"});
    EXPECT_EQ(readPlainly("file"), "new");
    EXPECT_EQ(modeOf("file"), 0600U);
}

TEST(ReplaceFile, DoesNotWriteThroughALinkInTheTemporaryFilesPlace) {
    writePlainly("victim", "untouched");
    fs::create_symlink("victim", ".file.tmp");
    EXPECT_FALSE(replaceFile("file", "new"));
    EXPECT_EQ(readPlainly("victim"), "untouched");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status("file")));
}

TEST(ReplaceFile, AFolderInTheTemporaryFilesPlaceIsAnErrorThatLeavesTheOldFile) {
    writePlainly("file", "old");
    fs::create_directory(".file.tmp");
    EXPECT_EQ(replaceFile("file", "new"), std::errc::file_exists);
    EXPECT_EQ(readPlainly("file"), "old");
    EXPECT_EQ(everythingIn("."), (std::set<std::string>{".file.tmp", "file"}));
}

TEST(ReplaceFile, RefusesWhatIsNoRegularFile) {
    fs::create_directory("folder");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_EQ(replaceFile("folder", "x"), std::errc::is_a_directory);
    EXPECT_EQ(replaceFile("pipe", "x"), std::errc::invalid_argument);
    EXPECT_EQ(replaceFile("/dev/null", "x"), std::errc::invalid_argument);
    EXPECT_TRUE(fs::is_fifo("pipe"));
    EXPECT_EQ(everythingIn("."), (std::set<std::string>{"folder", "pipe"}));
}

TEST(ReplaceFile, SaysWhatIsWrongWithThePath) {
    writePlainly("file", "x");
    EXPECT_EQ(replaceFile("missing/file", "x"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(replaceFile("file/below", "x"), std::errc::not_a_directory);
    EXPECT_EQ(replaceFile("/proc/nothing", "x"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(replaceFile(std::string(254, 'n'), "x"), std::errc::filename_too_long);
    EXPECT_EQ(everythingIn("."), std::set<std::string>{"file"});
}

TEST(ReplaceFile, AWriteThatFailsMidwayLeavesTheOldFileAndNoTemporaryFile) {
    writePlainly("file", "old");
    ChildProcess child([] {
        static_cast<void>(signal(SIGXFSZ, SIG_IGN));
        const rlimit limit{100'000, 100'000};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
        return replaceFile("file", std::string(300'000, 'n')) == std::errc::file_too_large;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), "old");
    EXPECT_EQ(everythingIn("."), std::set<std::string>{"file"});
}

TEST(ReplaceFile, KeepsNothingOfTheOldFileOpen) {
    const auto isAReplacedFileOpen = [] {
        for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code ignored;
            const std::string name = std::filesystem::read_symlink(descriptor, ignored).string();
            if (name.ends_with("/file (deleted)")) return true;
        }
        return false;
    };
    writePlainly("file", "old");
    EXPECT_FALSE(replaceFile("file", "new"));
    EXPECT_FALSE(isAReplacedFileOpen());
    const auto replaceTwice = [](const std::string& path) {
        EXPECT_FALSE(replaceFile(path, "first"));
        EXPECT_FALSE(replaceFile(path, "second"));
    };
    NSFileCoordinator().coordinateWritingItemAtURL("file", NSFileCoordinator::WritingOptions::None,
                                                   replaceTwice);
    EXPECT_EQ(readPlainly("file"), "second");
    EXPECT_FALSE(isAReplacedFileOpen());
}
