// SPDX-License-Identifier: MIT
// Operation queues.

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "Platform/Dispatch/NSOperationQueue.h"

TEST(NSOperationQueue, RunsOperationsInOrderOnAThreadOfItsOwn) {
    std::vector<int> seen;
    std::set<std::thread::id> threads;
    {
        const auto queue = std::make_shared<NSOperationQueue>();
        for (int number = 0; number < 100; ++number)
            queue->addOperation([&, number] {
                seen.push_back(number);
                threads.insert(std::this_thread::get_id());
            });
    }
    ASSERT_EQ(seen.size(), 100U) << "the destructor has waited";
    for (int number = 0; number < 100; ++number)
        EXPECT_EQ(seen[static_cast<std::size_t>(number)], number);
    EXPECT_EQ(threads.size(), 1U);
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}

TEST(NSOperationQueue, RunsOneOperationAtATimeWhoeverAddsThem) {
    std::atomic<int> inside = 0;
    std::atomic<int> collisions = 0;
    std::atomic<int> runs = 0;
    {
        NSOperationQueue queue;
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([&] {
                for (int count = 0; count < 100; ++count)
                    queue.addOperation([&] {
                        if (++inside != 1) ++collisions;
                        ++runs;
                        --inside;
                    });
            });
        for (auto& thread : threads) thread.join();
    }
    EXPECT_EQ(collisions, 0);
    EXPECT_EQ(runs, 400);
}

TEST(NSOperationQueue, MayBeDestroyedByAnOperationOfItsOwn) {
    std::promise<void> lastHasRun;
    std::promise<void> mayGoOn;
    auto queue = std::make_shared<NSOperationQueue>();
    queue->addOperation([&] {
        mayGoOn.get_future().wait();
        queue.reset();
    });
    queue->addOperation([&] { lastHasRun.set_value(); });
    mayGoOn.set_value();
    EXPECT_EQ(lastHasRun.get_future().wait_for(std::chrono::seconds(20)),
              std::future_status::ready);
}

TEST(NSOperationQueue, AddsFromWithinAnOperationRunAfterIt) {
    std::promise<int> result;
    int step = 0;
    NSOperationQueue queue;
    queue.addOperation([&] {
        queue.addOperation([&] { result.set_value(step); });
        step = 1;
    });
    EXPECT_EQ(result.get_future().get(), 1);
}
