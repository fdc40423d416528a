// SPDX-License-Identifier: MIT
// Backups of a file beside it.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace fs = std::filesystem;

TEST(FileBackup, GivesTheBytesASecondNameAndLeavesTheFile) {
    writePlainly("file", "damaged");
    const FileBackup kept = backUpFile("file");
    EXPECT_FALSE(kept.error);
    EXPECT_EQ(kept.path, "file.damaged-1");
    EXPECT_EQ(readPlainly("file"), "damaged");
    EXPECT_EQ(readPlainly("file.damaged-1"), "damaged");
    EXPECT_FALSE(replaceFile("file", "repaired"));
    EXPECT_EQ(readPlainly("file.damaged-1"), "damaged");
}

TEST(FileBackup, TakesTheFirstFreeNumberAndOverwritesNothing) {
    writePlainly("file", "damaged");
    writePlainly("file.damaged-1", "one");
    fs::create_directory("file.damaged-2");
    fs::create_symlink("nowhere", "file.damaged-3");
    writePlainly("file.damaged-5", "five");
    EXPECT_EQ(backUpFile("file").path, "file.damaged-4");
    EXPECT_EQ(backUpFile("file").path, "file.damaged-6");
    EXPECT_EQ(readPlainly("file.damaged-1"), "one");
    EXPECT_TRUE(fs::is_symlink("file.damaged-3"));
    EXPECT_EQ(readPlainly("file.damaged-5"), "five");
    EXPECT_FALSE(fs::exists("nowhere"));
}

TEST(FileBackup, IsBesideTheFile) {
    fs::create_directory("folder");
    writePlainly("folder/file", "damaged");
    EXPECT_EQ(backUpFile("folder/file").path, "folder/file.damaged-1");
    EXPECT_EQ(everythingIn("."),
              (std::set<std::string>{"folder", "folder/file", "folder/file.damaged-1"}));
}

TEST(FileBackup, OfWhatIsNoRegularFileIsAnErrorThatMakesNothing) {
    fs::create_directory("folder");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_EQ(backUpFile("missing").error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(backUpFile("folder").error, std::errc::is_a_directory);
    EXPECT_EQ(backUpFile("pipe").error, std::errc::invalid_argument);
    EXPECT_EQ(backUpFile("missing").path, "");
    EXPECT_EQ(everythingIn("."), (std::set<std::string>{"folder", "pipe"}));
}

TEST(FileBackup, ANameThatIsTooLongIsAnError) {
    const std::string name(250, 'n');
    writePlainly(name, "damaged");
    EXPECT_EQ(backUpFile(name).error, std::errc::filename_too_long);
    EXPECT_EQ(everythingIn("."), std::set<std::string>{name});
}

TEST(FileBackup, ProcessesAtItTogetherOverwriteNothing) {
    writePlainly("file", "damaged");
    const auto keepTen = [] {
        for (int count = 0; count < 10; ++count)
            if (backUpFile("file").error) return false;
        return true;
    };
    ChildProcess other(keepTen);
    EXPECT_TRUE(keepTen());
    EXPECT_TRUE(other.succeeded());
    for (int number = 1; number <= 20; ++number)
        EXPECT_EQ(readPlainly("file.damaged-" + std::to_string(number)), "damaged") << number;
}
