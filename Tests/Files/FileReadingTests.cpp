// SPDX-License-Identifier: MIT
// Reading files as a whole, and what cannot be read.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <thread>

#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"

using namespace QRVPlatform;

namespace fs = std::filesystem;

constexpr std::size_t plenty = 1 << 20;

TEST(ContentsOfFile, GivesAllBytes) {
    std::string bytes;
    for (int number = 0; number < 200'000; ++number) bytes += static_cast<char>(number % 251);
    writePlainly("file", bytes);
    const FileContents contents = contentsOfFile("file", plenty);
    EXPECT_FALSE(contents.error);
    EXPECT_EQ(contents.bytes, bytes);
    EXPECT_FALSE(contents.isMissing());
    EXPECT_EQ(contents.identity, identityOfFileAtPath("file"));
}

TEST(ContentsOfFile, AnEmptyFileIsNotMissing) {
    writePlainly("file", "");
    const FileContents contents = contentsOfFile("file", 0);
    EXPECT_FALSE(contents.error);
    EXPECT_TRUE(contents.bytes.empty());
    EXPECT_FALSE(contents.isMissing());
    EXPECT_FALSE(contents.identity.isMissing());
}

TEST(ContentsOfFile, TellsNotThereFromNotReadable) {
    writePlainly("file", "x");
    fs::create_symlink("nowhere", "dangling");
    fs::create_directory("folder");
    for (const char* path : {"missing", "missing/file", "file/below", "dangling"}) {
        const FileContents contents = contentsOfFile(path, plenty);
        EXPECT_TRUE(contents.error) << path;
        EXPECT_TRUE(contents.isMissing()) << path;
        EXPECT_TRUE(contents.identity.isMissing()) << path;
    }
    EXPECT_EQ(contentsOfFile("folder", plenty).error, std::errc::is_a_directory);
    EXPECT_FALSE(contentsOfFile("folder", plenty).isMissing());
    EXPECT_FALSE(contentsOfFile(std::string(300, 'n'), plenty).isMissing());
}

TEST(ContentsOfFile, RefusesAPipeAndADeviceWithoutWaiting) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_EQ(contentsOfFile("pipe", plenty).error, std::errc::invalid_argument);
    EXPECT_EQ(contentsOfFile("/dev/zero", plenty).error, std::errc::invalid_argument);
}

TEST(ContentsOfFile, RefusesASocket) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "socket");
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const FileContents contents = contentsOfFile("socket", plenty);
    EXPECT_TRUE(contents.error);
    EXPECT_FALSE(contents.isMissing());
    close(listener);
}

TEST(ContentsOfFile, TheCapIsTheLargestSizeAllowed) {
    writePlainly("file", "12345");
    EXPECT_EQ(contentsOfFile("file", 5).bytes, "12345");
    EXPECT_EQ(contentsOfFile("file", 4).error, std::errc::file_too_large);
    EXPECT_EQ(contentsOfFile("file", 4).bytes, "");
    EXPECT_EQ(contentsOfFile("file", 0).error, std::errc::file_too_large);
}

TEST(ContentsOfFile, ReadsFilesThatDoNotTellTheirSize) {
    const std::string expected = readPlainly("/proc/version");
    ASSERT_FALSE(expected.empty());
    ASSERT_EQ(fs::file_size("/proc/version"), 0U);
    EXPECT_EQ(contentsOfFile("/proc/version", plenty).bytes, expected);
    EXPECT_EQ(contentsOfFile("/proc/version", 3).error, std::errc::file_too_large);
}

TEST(ContentsOfFile, ASizeThatChangesMeanwhileDoesNoHarm) {
    writePlainly("file", std::string(1000, 'x'));
    std::atomic<bool> isOver = false;
    std::thread changer([&] {
        for (unsigned round = 0; !isOver; ++round) {
            const int ignored = truncate("file", static_cast<off_t>(round * 7919 % 100'000));
            static_cast<void>(ignored);
        }
    });
    for (int round = 0; round < 2000; ++round) {
        const FileContents contents = contentsOfFile("file", 50'000);
        if (contents.error)
            EXPECT_EQ(contents.error, std::errc::file_too_large);
        else
            EXPECT_LE(contents.bytes.size(), 50'000U);
    }
    isOver = true;
    changer.join();
}
