// SPDX-License-Identifier: MIT
// How a thread finds its write access to a file.
#include "Platform/Coordination/WriteAccess.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

using namespace QRVPlatform;
namespace fs = std::filesystem;

TEST(WriteAccess, IsFoundOnItsThreadByEveryPathToItsFileThoughThatNeedNotExist) {
    fs::create_directory("a");
    fs::create_directory_symlink("a", "link");
    WriteAccess access(nullptr, "a/file");
    EXPECT_EQ(WriteAccess::onThisThreadTo("a/file"), nullptr);
    {
        const WriteAccess::OnThisThread current(access);
        for (const char* path : {"a/file", "a/./file", "a//file", "a/../a/file", "link/file"})
            EXPECT_EQ(WriteAccess::onThisThreadTo(path), &access) << path;
        EXPECT_EQ(WriteAccess::onThisThreadTo(fs::absolute("a/file")), &access);
        std::thread([] { EXPECT_EQ(WriteAccess::onThisThreadTo("a/file"), nullptr); }).join();
    }
    EXPECT_EQ(WriteAccess::onThisThreadTo("a/file"), nullptr);
}

TEST(WriteAccess, IsNotFoundForOtherFiles) {
    fs::create_directories("a/a");
    WriteAccess access(nullptr, "a/file");
    const WriteAccess::OnThisThread current(access);
    for (const char* path : {"a/other", "file", "a/a/file", "missing/file", "a/file/", "a", ""})
        EXPECT_EQ(WriteAccess::onThisThreadTo(path), nullptr) << path;
    fs::current_path("a");
    EXPECT_EQ(WriteAccess::onThisThreadTo("a/file"), nullptr) << "the same text, another folder";
    EXPECT_EQ(WriteAccess::onThisThreadTo("file"), &access);
}

TEST(WriteAccess, TheInnermostOneOfAFileIsFound) {
    WriteAccess outer(nullptr, "file");
    WriteAccess other(nullptr, "other");
    WriteAccess inner(nullptr, "./file");
    const WriteAccess::OnThisThread onOuter(outer);
    {
        const WriteAccess::OnThisThread onOther(other);
        EXPECT_EQ(WriteAccess::onThisThreadTo("file"), &outer);
        const WriteAccess::OnThisThread onInner(inner);
        EXPECT_EQ(WriteAccess::onThisThreadTo("file"), &inner);
        EXPECT_EQ(WriteAccess::onThisThreadTo("other"), &other);
    }
    EXPECT_EQ(WriteAccess::onThisThreadTo("file"), &outer);
}
