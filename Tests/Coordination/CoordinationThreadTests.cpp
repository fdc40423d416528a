// SPDX-License-Identifier: MIT
// Coordinators on several threads of one process.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"

using namespace QRVPlatform;

TEST(CoordinationAmongThreads, WritersExcludeEachOther) {
    std::atomic<int> inside = 0;
    std::atomic<int> runs = 0;
    std::atomic<int> collisions = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            NSFileCoordinator coordinator;
            for (int count = 0; count < 100; ++count)
                coordinator.coordinateWritingItemAtURL(
                    "folder/file", NSFileCoordinator::WritingOptions::ForReplacing,
                    [&](const std::string&) {
                        if (++inside != 1) ++collisions;
                        std::this_thread::yield();
                        ++runs;
                        --inside;
                    });
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(collisions, 0);
    EXPECT_EQ(runs, 400);
}

TEST(CoordinationAmongThreads, ReadersAndWritersExcludeEachOther) {
    using Clock = std::chrono::steady_clock;
    ASSERT_FALSE(replaceFile("file", "x"));
    std::atomic<int> readers = 0;
    std::atomic<int> writers = 0;
    std::atomic<int> collisions = 0;
    const auto visit = [&](std::atomic<int>& own, Clock::time_point start) {
        // Who has waited so long goes on beside others.
        if (Clock::now() - start >= readerLockTimeout) return;
        ++own;
        std::this_thread::yield();
        if (writers > 1 || (writers == 1 && readers > 0)) ++collisions;
        --own;
    };
    const auto readOften = [&] {
        for (int count = 0; count < 100; ++count)
            NSFileCoordinator().coordinateReadingItemAtURL(
                "file", NSFileCoordinator::ReadingOptions::None,
                [&, start = Clock::now()](const std::string&) { visit(readers, start); });
    };
    const auto writeOften = [&] {
        for (int count = 0; count < 100; ++count)
            NSFileCoordinator().coordinateWritingItemAtURL(
                "file", NSFileCoordinator::WritingOptions::ForReplacing,
                [&, start = Clock::now()](const std::string& path) {
                    visit(writers, start);
                    EXPECT_FALSE(replaceFile(path, "y"));
                    visit(writers, start);
                });
    };
    std::vector<std::thread> threads;
    for (int pair = 0; pair < 2; ++pair) {
        threads.emplace_back(readOften);
        threads.emplace_back(writeOften);
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(collisions, 0);
}

TEST(CoordinationAmongThreads, ReplacingReadingAndReportingAtOnceIsSafe) {
    const std::string first(5000, 'a');
    const std::string second(9000, 'b');
    ASSERT_FALSE(replaceFile("file", first));
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        for (int count = 0; count < 100; ++count)
            NSFileCoordinator().coordinateWritingItemAtURL(
                "file", NSFileCoordinator::WritingOptions::ForReplacing,
                [&](const std::string& path) {
                    EXPECT_FALSE(replaceFile(path, count % 2 == 0 ? second : first));
                });
        isOver = true;
    });
    std::thread handlers([&] {
        while (!isOver) {
            setFileFailureHandler([](const FileFailure& failure) { EXPECT_TRUE(failure.error); });
            EXPECT_TRUE(replaceFile("nowhere/file", "x"));
            setFileFailureHandler(nullptr);
        }
    });
    while (!isOver)
        NSFileCoordinator().coordinateReadingItemAtURL(
            "file", NSFileCoordinator::ReadingOptions::None, [&](const std::string& path) {
                const FileContents contents = contentsOfFile(path, 10000);
                EXPECT_TRUE(contents.bytes == first || contents.bytes == second);
            });
    writer.join();
    handlers.join();
}
