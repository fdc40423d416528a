// SPDX-License-Identifier: MIT
// The bytes of a file that are left on the disk.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "Files/SystemCallFilter.h"
#include "Files/TestFiles.h"
#include "Platform/Files/HeldBytes.h"
#include "Support/ChildProcess.h"

using QRVPlatform::HeldBytes;

namespace {

// An odd number of them, so that no step of a checksum ends where they end.
std::string someBytes() {
    constexpr std::size_t count = 100'003;
    std::string bytes;
    while (bytes.size() < count) bytes += std::to_string(bytes.size());
    return bytes.substr(0, count);
}

// In place, and with the date of before.
void overwrite(const std::string& path, std::size_t position) {
    struct stat before {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(position)).put('x');
        ASSERT_TRUE(file.good());
    }
    const std::array<timespec, 2> dates{before.st_atim, before.st_mtim};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), dates.data(), 0), 0);
}

}  // namespace

TEST(HeldBytes, AreReadAgain) {
    writePlainly("file", someBytes());
    const auto held = HeldBytes::at("file", HeldBytes::markOf(someBytes()));
    ASSERT_TRUE(held);
    for (int time = 0; time < 2; ++time) {
        const auto bytes = held->read();
        ASSERT_TRUE(bytes);
        EXPECT_EQ(bytes->view(), someBytes());
    }
}

TEST(HeldBytes, MayGrowIntoTheRoomBehindThem) {
    writePlainly("file", someBytes());
    const auto held = HeldBytes::at("file", HeldBytes::markOf(someBytes()));
    ASSERT_TRUE(held);
    auto bytes = held->read(2);
    ASSERT_TRUE(bytes);
    ASSERT_EQ(bytes->room().size(), someBytes().size() + 2);
    bytes->room()[someBytes().size()] = 'x';
    bytes->setSize(someBytes().size() + 1);
    EXPECT_EQ(bytes->view(), someBytes() + "x");
}

TEST(HeldBytes, AreReadInAForkToo) {
    writePlainly("file", someBytes());
    const auto held = HeldBytes::at("file", HeldBytes::markOf(someBytes()));
    ASSERT_TRUE(held);
    const auto isRead = [&held] {
        const auto bytes = held->read();
        return bytes && bytes->view() == someBytes();
    };
    ChildProcess child(isRead);
    EXPECT_TRUE(isRead());
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(isRead());
}

TEST(HeldBytes, AreReadAfterAnotherFileHasReplacedTheirs) {
    writePlainly("file", someBytes());
    const auto held = HeldBytes::at("file", HeldBytes::markOf(someBytes()));
    ASSERT_TRUE(held);
    writePlainly("other", "other bytes");
    std::filesystem::rename("other", "file");
    const auto bytes = held->read();
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->view(), someBytes());
}

TEST(HeldBytes, AnOverwrittenByteIsNoticedWhateverTheDateSays) {
    for (const std::size_t position : {0UL, 8UL, 50'001UL, 100'000UL, 100'002UL}) {
        writePlainly("file", someBytes());
        const auto held = HeldBytes::at("file", HeldBytes::markOf(someBytes()));
        ASSERT_TRUE(held);
        overwrite("file", position);
        EXPECT_FALSE(held->read()) << position;
    }
}

TEST(HeldBytes, AFileOfAnotherLengthIsNoticed) {
    writePlainly("file", someBytes());
    const auto held = HeldBytes::at("file", HeldBytes::markOf(someBytes()));
    ASSERT_TRUE(held);
    std::filesystem::resize_file("file", 10);
    EXPECT_FALSE(held->read());
    writePlainly("file", someBytes() + "x");
    EXPECT_FALSE(held->read());
    EXPECT_FALSE(HeldBytes::at("file", HeldBytes::markOf(someBytes())));
}

TEST(HeldBytes, OtherBytesThanSaidAreNotRead) {
    std::string other = someBytes();
    other[5] = 'x';
    writePlainly("file", other);
    const auto held = HeldBytes::at("file", HeldBytes::markOf(someBytes()));
    ASSERT_TRUE(held);
    EXPECT_FALSE(held->read());
}

TEST(HeldBytes, AreNotThoseOfAMissingFileAFolderOrAPipe) {
    EXPECT_FALSE(HeldBytes::at("missing", HeldBytes::markOf("")));
    std::filesystem::create_directory("folder");
    EXPECT_FALSE(HeldBytes::at("folder", HeldBytes::markOf("")));
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_FALSE(HeldBytes::at("pipe", HeldBytes::markOf("")));
}

// There the replacement of a file that is open is refused, or leaves no file for a moment.
TEST(HeldBytes, AreNotHeldWhereOpenFilesCannotBeReplaced) {
    writePlainly("file", someBytes());
    ChildProcess child([] {
        failCall(SystemCall::FileSystem, EIO);  // So it might be such a file system.
        return !HeldBytes::at("file", HeldBytes::markOf(someBytes()));
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(HeldBytes, AreNotPassedToAProgramThatIsStarted) {
    writePlainly("file", someBytes());
    const auto held = HeldBytes::at("file", HeldBytes::markOf(someBytes()));
    ASSERT_TRUE(held);
    int open = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const auto target = std::filesystem::read_symlink(entry.path(), error);
        if (error || target.filename() != "file") continue;
        ++open;
        const int number = std::stoi(entry.path().filename().string());
        EXPECT_NE(fcntl(number, F_GETFD) & FD_CLOEXEC, 0);
    }
    EXPECT_EQ(open, 1);
}
