// SPDX-License-Identifier: MIT
// What the failure handler receives.

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"

using namespace QRVPlatform;

namespace {

/// Collects failures as long as it lives.
struct FailureCollector {
    FailureCollector() {
        setFileFailureHandler([this](const FileFailure& failure) {
            failures.push_back(failure);
            thread = std::this_thread::get_id();
        });
    }
    ~FailureCollector() { setFileFailureHandler(nullptr); }
    std::vector<FileFailure> failures;
    std::thread::id thread;
};

void expectOneFailure(const FailureCollector& collector, const std::string& operation,
                      const std::string& path, std::errc error) {
    ASSERT_EQ(collector.failures.size(), 1U);
    EXPECT_EQ(collector.failures[0].operation, operation);
    EXPECT_EQ(collector.failures[0].path, path);
    EXPECT_EQ(collector.failures[0].error, error);
    EXPECT_EQ(collector.thread, std::this_thread::get_id());
}

}  // namespace

TEST(FailureHandler, HearsOfAFailedReplacement) {
    const FailureCollector collector;
    EXPECT_TRUE(replaceFile("missing/file", "x"));
    expectOneFailure(collector, "replace file", "missing/file",
                     std::errc::no_such_file_or_directory);
}

TEST(FailureHandler, HearsOfAFileThatCouldNotBeBackedUp) {
    const FailureCollector collector;
    EXPECT_TRUE(backUpFile("missing").error);
    expectOneFailure(collector, "back up file", "missing", std::errc::no_such_file_or_directory);
}

TEST(FailureHandler, HearsOfFailedCoordinationOfAWriter) {
    std::filesystem::create_directory(".file.lock");
    const FailureCollector collector;
    NSFileCoordinator().coordinateWritingItemAtURL("file",
                                                   NSFileCoordinator::WritingOptions::ForReplacing,
                                                   [](const std::string&) { FAIL(); });
    expectOneFailure(collector, "coordinate writing", "file", std::errc::is_a_directory);
}

TEST(FailureHandler, HearsOfFailedCoordinationOfAReader) {
    std::filesystem::create_symlink("loop", "loop");
    const FailureCollector collector;
    NSFileCoordinator().coordinateReadingItemAtURL("loop", NSFileCoordinator::ReadingOptions::None,
                                                   [](const std::string&) { FAIL(); });
    expectOneFailure(collector, "coordinate reading", "loop",
                     std::errc::too_many_symbolic_link_levels);
}

TEST(FailureHandler, HearsNothingOfWhatSucceeds) {
    const FailureCollector collector;
    EXPECT_FALSE(replaceFile("file", "x"));
    EXPECT_FALSE(backUpFile("file").error);
    NSFileCoordinator().coordinateReadingItemAtURL(
        "missing/file", NSFileCoordinator::ReadingOptions::None, [](const std::string&) {});
    EXPECT_TRUE(contentsOfFile("missing", 1).isMissing());
    EXPECT_TRUE(collector.failures.empty());
}

TEST(FailureHandler, CanBeReplacedAndTakenAway) {
    int first = 0;
    int second = 0;
    setFileFailureHandler([&](const FileFailure&) { ++first; });
    replaceFile("missing/file", "x");
    setFileFailureHandler([&](const FileFailure&) { ++second; });
    replaceFile("missing/file", "x");
    setFileFailureHandler(nullptr);
    EXPECT_TRUE(replaceFile("missing/file", "x"));
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(FailureHandler, MayReplaceItself) {
    int calls = 0;
    setFileFailureHandler([&](const FileFailure&) {
        ++calls;
        setFileFailureHandler(nullptr);
    });
    replaceFile("missing/file", "x");
    replaceFile("missing/file", "x");
    EXPECT_EQ(calls, 1);
}
