// SPDX-License-Identifier: MIT
// Serial queues: order, barriers, exceptions, their end.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"

namespace {

std::set<std::string> threadNames() {
    std::set<std::string> names;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "comm");
        std::string name;
        std::getline(file, name);
        names.insert(name);
    }
    return names;
}

}  // namespace

TEST(DispatchQueue, RunsWorkInTheOrderAdded) {
    DispatchQueue queue("test.order");
    std::vector<int> seen;
    std::vector<int> expected;
    for (int number = 0; number < 1000; ++number) {
        queue.async([&seen, number] { seen.push_back(number); });
        expected.push_back(number);
    }
    queue.sync([] {});
    EXPECT_EQ(seen, expected);
}

TEST(DispatchQueue, RunsWorkOnOneThreadOfItsOwn) {
    DispatchQueue queue("test.thread");
    std::set<std::thread::id> threads;
    for (int count = 0; count < 10; ++count)
        queue.async([&] { threads.insert(std::this_thread::get_id()); });
    queue.sync([&] { threads.insert(std::this_thread::get_id()); });
    EXPECT_EQ(threads.size(), 1U);
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}

TEST(DispatchQueue, TheThreadStartsAtTheFirstUseAndBearsTheTailOfTheLabel) {
    DispatchQueue queue("org.example.a-rather-long-name");
    EXPECT_FALSE(threadNames().contains("a-rather-long-n"));
    queue.sync([] {});
    EXPECT_TRUE(threadNames().contains("a-rather-long-n"));
}

TEST(DispatchQueue, KeepsItsLabel) {
    EXPECT_EQ(DispatchQueue("a.b").label(), "a.b");
}

TEST(DispatchQueue, AsyncDoesNotWaitForTheWork) {
    DispatchQueue queue("test.async");
    std::promise<void> mayGoOn;
    bool hasRun = false;
    queue.async([&] {
        mayGoOn.get_future().wait();
        hasRun = true;
    });
    mayGoOn.set_value();
    queue.sync([] {});
    EXPECT_TRUE(hasRun);
}

TEST(DispatchQueue, SyncReturnsAfterEverythingQueuedBefore) {
    DispatchQueue queue("test.barrier");
    int count = 0;
    for (int number = 0; number < 100; ++number) queue.async([&] { ++count; });
    int countAtBarrier = 0;
    queue.sync([&] { countAtBarrier = count; });
    EXPECT_EQ(countAtBarrier, 100);
}

TEST(DispatchQueue, SyncIsWokenForItsOwnItemOnly) {
    constexpr int items = 100;
    DispatchQueue queue("test.sync");
    for (int number = 0; number < items; ++number)
        queue.async([] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); });
    rusage before{};
    rusage after{};
    ASSERT_EQ(getrusage(RUSAGE_THREAD, &before), 0);
    queue.sync([] {});
    ASSERT_EQ(getrusage(RUSAGE_THREAD, &after), 0);
    EXPECT_LT(after.ru_nvcsw - before.ru_nvcsw, items / 2);
}

TEST(DispatchQueue, ThreadsThatWaitForDifferentItemsAreAllWoken) {
    constexpr int threads = 8;
    constexpr int rounds = 200;
    DispatchQueue queue("test.sync");
    std::atomic<int> runs = 0;
    std::vector<std::thread> waiting;
    for (int number = 0; number < threads; ++number)
        waiting.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                queue.async([&runs] { ++runs; });
                queue.sync([&runs] { ++runs; });
            }
        });
    for (std::thread& thread : waiting) thread.join();
    EXPECT_EQ(runs, 2 * threads * rounds);
}

TEST(DispatchQueue, SyncOnTheOwnThreadThrowsInsteadOfWaitingForItself) {
    DispatchQueue queue("test.self");
    bool hasThrown = false;
    bool hasRun = false;
    queue.sync([&] {
        try {
            queue.sync([&] { hasRun = true; });
        } catch (const std::logic_error&) {
            hasThrown = true;
        }
    });
    queue.sync([] {});
    EXPECT_TRUE(hasThrown);
    EXPECT_FALSE(hasRun);
}

TEST(DispatchQueue, SyncThrowsWhatTheWorkThrowsAndTheQueueGoesOn) {
    DispatchQueue queue("test.exception");
    EXPECT_THROW(queue.sync([] { throw std::out_of_range("no"); }), std::out_of_range);
    bool hasRun = false;
    queue.sync([&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST(DispatchQueue, WorkMayAddWork) {
    DispatchQueue queue("test.nested");
    std::vector<int> seen;
    queue.sync([&] {
        queue.async([&] { seen.push_back(2); });
        seen.push_back(1);
    });
    queue.sync([&] { seen.push_back(3); });
    EXPECT_EQ(seen, (std::vector{1, 2, 3}));
}

TEST(DispatchQueue, TheDestructorRunsWhatIsQueuedAndWhatThatAdds) {
    int count = 0;
    {
        DispatchQueue queue("test.end");
        for (int number = 0; number < 100; ++number)
            queue.async([&] {
                ++count;
                queue.async([&] { ++count; });
            });
    }
    EXPECT_EQ(count, 200);
}

TEST(DispatchQueue, TwoQueuesRunAtTheSameTime) {
    DispatchQueue first("test.first");
    DispatchQueue second("test.second");
    std::promise<void> secondHasRun;
    first.async([&] { secondHasRun.get_future().wait(); });
    second.async([&] { secondHasRun.set_value(); });
    first.sync([] {});
    second.sync([] {});
}

TEST(DispatchQueue, ManyProducersLoseNothingAndKeepTheirOwnOrder) {
    constexpr std::size_t producers = 4;
    constexpr int items = 500;
    DispatchQueue queue("test.producers");
    std::vector<std::vector<int>> seen(producers);
    std::vector<std::thread> threads;
    for (std::size_t producer = 0; producer < producers; ++producer)
        threads.emplace_back([&, producer] {
            for (int number = 0; number < items; ++number)
                queue.async([&seen, producer, number] { seen[producer].push_back(number); });
        });
    for (auto& thread : threads) thread.join();
    queue.sync([] {});
    std::vector<int> expected;
    for (int number = 0; number < items; ++number) expected.push_back(number);
    for (const auto& numbers : seen) EXPECT_EQ(numbers, expected);
}

TEST(DispatchQueue, SyncFromManyThreadsExcludes) {
    DispatchQueue queue("test.syncs");
    int count = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int number = 0; number < 100; ++number) queue.sync([&] { ++count; });
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(count, 400);
}

TEST(DispatchQueue, MayBeDestroyedByWorkBeforeTheAsyncThatAddedItHasReturned) {
    for (int round = 0; round < 300; ++round) {
        std::promise<void> isDestroyed;
        auto queue = std::make_unique<DispatchQueue>("short.lived");
        queue->async([&] {
            queue.reset();
            isDestroyed.set_value();
        });
        ASSERT_EQ(isDestroyed.get_future().wait_for(std::chrono::seconds(20)),
                  std::future_status::ready);
    }
}
