// SPDX-License-Identifier: MIT
// The main queue fed by other threads.

#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"

using namespace std::chrono_literals;

namespace {

DispatchMainQueue& queue = DispatchMainQueue::shared();

bool becomesReadable() {
    pollfd entry{queue.fd(), POLLIN, 0};
    return poll(&entry, 1, 20000) == 1;
}

}  // namespace

TEST(MainQueueThreads, WorkFromAnotherThreadWakesWait) {
    std::thread producer([] {
        std::this_thread::sleep_for(20ms);
        queue.async([] {});
    });
    EXPECT_TRUE(queue.wait(20s));
    producer.join();
    EXPECT_EQ(queue.drain(), 1U);
}

TEST(MainQueueThreads, ATimerFromAnotherThreadWakesWait) {
    std::thread producer([] {
        std::this_thread::sleep_for(20ms);
        queue.asyncAfter(1ms, [] {});
    });
    EXPECT_TRUE(queue.wait(20s));
    producer.join();
    EXPECT_EQ(queue.drain(), 1U);
}

TEST(MainQueueThreads, WorkFromAnotherThreadWakesAPollOnTheDescriptor) {
    std::thread producer([] {
        std::this_thread::sleep_for(20ms);
        queue.async([] {});
    });
    EXPECT_TRUE(becomesReadable());
    producer.join();
    EXPECT_EQ(queue.drain(), 1U);
}

TEST(MainQueueThreads, WorkRunsOnTheThreadThatDrains) {
    std::thread::id ranOn;
    std::thread([&] { queue.async([&] { ranOn = std::this_thread::get_id(); }); }).join();
    queue.drain();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(MainQueueThreads, StopFromAnotherThreadEndsRun) {
    std::atomic<bool> isRunning = false;
    queue.async([&] { isRunning = true; });
    std::thread stopper([&] {
        while (!isRunning) std::this_thread::yield();
        queue.stop();
    });
    queue.run();
    stopper.join();
    EXPECT_TRUE(isRunning);
}

TEST(MainQueueThreads, ManyProducersLoseNothingAndKeepTheirOwnOrder) {
    constexpr std::size_t producers = 4;
    constexpr std::size_t items = 300;
    std::vector<std::vector<std::size_t>> seen(producers);
    std::vector<std::thread> threads;
    for (std::size_t producer = 0; producer < producers; ++producer)
        threads.emplace_back([&, producer] {
            for (std::size_t number = 0; number < items; ++number) {
                queue.async([&seen, producer, number] { seen[producer].push_back(number); });
                queue.asyncAfter(10us, [] {});
            }
        });
    std::size_t count = 0;
    while (count < producers * items * 2) {
        ASSERT_TRUE(becomesReadable());
        count += queue.drain();
    }
    for (auto& thread : threads) thread.join();
    for (const auto& numbers : seen) {
        ASSERT_EQ(numbers.size(), items);
        for (std::size_t number = 0; number < items; ++number) EXPECT_EQ(numbers[number], number);
    }
    EXPECT_FALSE(queue.wait(0ns));
}

TEST(MainQueueThreads, AQueueAndTheMainQueueHandWorkToAndFro) {
    DispatchQueue background("test.ping");
    int rounds = 0;
    std::function<void()> ping = [&] {
        if (++rounds == 200)
            queue.stop();
        else
            background.async([&] { queue.async(ping); });
    };
    queue.async(ping);
    queue.run();
    EXPECT_EQ(rounds, 200);
}
