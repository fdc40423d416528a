// SPDX-License-Identifier: MIT
// Files that are read once, and whose bytes are given back meanwhile.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "Platform/Files/TransientContents.h"

using QRVPlatform::TransientContents;

namespace {

constexpr std::size_t maximumSize = 1'000'000;

void write(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string bytesOfSize(std::size_t size) {
    std::string bytes;
    while (bytes.size() < size) bytes += "line " + std::to_string(bytes.size()) + '\n';
    bytes.resize(size);
    return bytes;
}

}  // namespace

TEST(TransientContents, AreThoseOfTheFile) {
    constexpr std::size_t large = TransientContents::smallestLarge;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, large - 1, large, large + 1,
                                   std::size_t{300'000}, maximumSize}) {
        const std::string bytes = bytesOfSize(size);
        write("file", bytes);
        const auto contents = TransientContents::ofFile("file", maximumSize);
        EXPECT_FALSE(contents.file().error);
        EXPECT_EQ(contents.file().identity, QRVPlatform::identityOfFileAtPath("file"));
        EXPECT_TRUE(contents.bytes() == bytes) << size;
    }
}

TEST(TransientContents, HaveTheErrorsOfContentsOfFile) {
    write("large", bytesOfSize(maximumSize + 1));
    std::filesystem::create_directory("folder");
    for (const std::string path : {"missing", "large/below", "large", "folder"}) {
        const auto contents = TransientContents::ofFile(path, maximumSize);
        const auto expected = QRVPlatform::contentsOfFile(path, maximumSize);
        EXPECT_TRUE(expected.error);
        EXPECT_EQ(contents.file().error, expected.error) << path;
        EXPECT_EQ(contents.file().isMissing(), expected.isMissing()) << path;
        EXPECT_TRUE(contents.bytes().empty());
    }
}

TEST(TransientContents, WhatWasGivenBackIsGoneAndTheRestStays) {
    const std::string bytes = bytesOfSize(500'000);
    write("file", bytes);
    auto contents = TransientContents::ofFile("file", maximumSize);
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::size_t gone = 0;
    for (const std::size_t place : {std::size_t{10}, std::size_t{100'000}, std::size_t{50'000},
                                    std::size_t{300'001}, bytes.size()}) {
        contents.giveBackBefore(contents.bytes().data() + place);
        gone = std::max(gone, place / pageSize * pageSize);
        EXPECT_TRUE(contents.bytes().substr(gone) == bytes.substr(gone)) << place;
        EXPECT_EQ(contents.bytes().substr(0, gone).find_first_not_of('\0'), std::string::npos);
    }
    EXPECT_GT(gone, 400'000U);
}

TEST(TransientContents, ASmallFileIsKeptWhole) {
    const std::string bytes = bytesOfSize(20'000);
    write("file", bytes);
    auto contents = TransientContents::ofFile("file", maximumSize);
    contents.giveBackBefore(contents.bytes().data() + bytes.size());
    EXPECT_TRUE(contents.bytes() == bytes);
}

TEST(TransientContents, DoNotDependOnTheFileAfterwards) {
    const std::string bytes = bytesOfSize(500'000);
    write("file", bytes);
    const auto contents = TransientContents::ofFile("file", maximumSize);
    std::filesystem::resize_file("file", 0);
    EXPECT_TRUE(contents.bytes() == bytes);
}
