// SPDX-License-Identifier: MIT
// Items that run on the thread that brings them.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Platform/Dispatch/WorkQueue.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace {

std::shared_ptr<WorkQueue> serialQueue() {
    return WorkQueue::make("test.serial", {.threads = 1, .idleTime = {}, .holdsUpForks = false});
}

std::shared_ptr<WorkQueue> operationQueue() {
    return WorkQueue::make(
        "test.operations",
        {.threads = 8, .idleTime = std::chrono::seconds(1), .holdsUpForks = false});
}

std::chrono::steady_clock::time_point deadline() {
    return std::chrono::steady_clock::now() + testDeadline;
}

/// Ends the queues, which are destroyed by those who use them last.
class Queues {
  public:
    Queues() = default;
    Queues(const Queues&) = delete;
    Queues& operator=(const Queues&) = delete;
    ~Queues() {
        operations->finish();
        serial->finish();
    }
    const std::shared_ptr<WorkQueue> operations = operationQueue();
    const std::shared_ptr<WorkQueue> serial = serialQueue();
};

}  // namespace

TEST(RunHere, RunsOnTheCallingThreadAsAnItemOfTheQueue) {
    const Queues queues;
    const std::thread::id here = std::this_thread::get_id();
    bool wasHere = false;
    bool wasRefused = false;
    EXPECT_TRUE(queues.serial->runHere([&] {
        wasHere = std::this_thread::get_id() == here;
        try {
            queues.serial->sync([] {});
        } catch (const std::logic_error&) {
            wasRefused = true;
        }
    }));
    EXPECT_TRUE(wasHere);
    EXPECT_TRUE(wasRefused);
}

TEST(RunHere, OnlyAddsWhenTheQueueIsBusy) {
    const Queues queues;
    std::promise<void> mayGoOn;
    std::promise<void> isUnderWay;
    std::vector<int> seen;
    queues.serial->async([&] {
        isUnderWay.set_value();
        mayGoOn.get_future().wait();
        seen.push_back(1);
    });
    isUnderWay.get_future().wait();
    const std::thread::id here = std::this_thread::get_id();
    bool wasHere = true;
    EXPECT_TRUE(queues.serial->runHere([&] {
        wasHere = std::this_thread::get_id() == here;
        seen.push_back(2);
    }));
    mayGoOn.set_value();
    queues.serial->sync([&] { seen.push_back(3); });
    EXPECT_FALSE(wasHere);
    EXPECT_EQ(seen, (std::vector{1, 2, 3}));
}

TEST(RunHere, WhatIsAddedMeanwhileRunsAfterwards) {
    const Queues queues;
    std::vector<int> seen;
    queues.serial->sync([] {});
    EXPECT_TRUE(queues.serial->runHere([&] {
        for (int number = 2; number < 5; ++number)
            queues.serial->async([&seen, number] { seen.push_back(number); });
        seen.push_back(1);
    }));
    queues.serial->sync([&] { seen.push_back(5); });
    EXPECT_EQ(seen, (std::vector{1, 2, 3, 4, 5}));
}

TEST(RunHere, TheEndOfTheQueueWaitsForIt) {
    bool hasRun = false;
    auto queue = serialQueue();
    std::promise<void> isUnderWay;
    std::promise<void> mayGoOn;
    std::thread thread([&] {
        queue->runHere([&] {
            isUnderWay.set_value();
            mayGoOn.get_future().wait();
            hasRun = true;
        });
    });
    isUnderWay.get_future().wait();
    EXPECT_FALSE(queue->waitUntilIdle(std::chrono::steady_clock::now()));
    mayGoOn.set_value();
    queue->finish();
    EXPECT_TRUE(hasRun);
    thread.join();
}

// Who waits for an item elsewhere takes no processor time, however short the idle time is.
TEST(RunHere, AThreadThatMustWaitForItDoesNotSpin) {
    const auto queue = WorkQueue::make(
        "test.serial",
        {.threads = 1, .idleTime = std::chrono::milliseconds(10), .holdsUpForks = false});
    std::promise<void> hasRun;
    EXPECT_TRUE(queue->runHere([&] {
        queue->async([&] { hasRun.set_value(); });
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(400);
        const std::clock_t start = std::clock();
        while (std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 10);
    }));
    EXPECT_EQ(hasRun.get_future().wait_for(testDeadline), std::future_status::ready);
    queue->finish();
}

TEST(RunHere, AllThreadsEndThatWaitedForItems) {
    constexpr std::size_t most = 2;
    const auto queue = WorkQueue::make("test.operations",
                                       {.threads = most, .idleTime = {}, .holdsUpForks = false});
    std::promise<void> firstMayEnd;
    std::promise<void> secondMayEnd;
    std::promise<void> firstIsUnderWay;
    std::promise<void> secondIsUnderWay;
    const auto runHere = [&queue](std::promise<void>& isUnderWay, std::promise<void>& mayEnd) {
        return std::thread([&] {
            queue->runHere([&] {
                isUnderWay.set_value();
                mayEnd.get_future().wait();
            });
        });
    };
    std::thread first = runHere(firstIsUnderWay, firstMayEnd);
    firstIsUnderWay.get_future().wait();
    std::thread second = runHere(secondIsUnderWay, secondMayEnd);
    secondIsUnderWay.get_future().wait();
    std::promise<void> haveRun;
    queue->async([] {});
    queue->async([&] { haveRun.set_value(); });
    auto hasEnded = std::async(std::launch::async, [&] { queue->finish(); });
    EXPECT_EQ(hasEnded.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    firstMayEnd.set_value();
    haveRun.get_future().wait();
    secondMayEnd.set_value();
    EXPECT_EQ(hasEnded.wait_for(testDeadline), std::future_status::ready);
    first.join();
    second.join();
}

TEST(HandOver, RunsOnTheThreadOfTheItemWhenThatHasEnded) {
    const Queues queues;
    std::thread::id first;
    std::promise<std::thread::id> second;
    bool hadEnded = false;
    queues.operations->async([&] {
        first = std::this_thread::get_id();
        queues.serial->handOver([&] {
            hadEnded = queues.operations->waitUntilIdle(deadline());
            second.set_value(std::this_thread::get_id());
        });
    });
    EXPECT_EQ(second.get_future().get(), first);
    EXPECT_TRUE(hadEnded);
}

TEST(HandOver, OutsideOfItemsOnlyAdds) {
    const Queues queues;
    const std::thread::id here = std::this_thread::get_id();
    std::promise<std::thread::id> ran;
    queues.serial->handOver([&] { ran.set_value(std::this_thread::get_id()); });
    EXPECT_NE(ran.get_future().get(), here);
}

TEST(HandOver, WhoWaitsForOneQueueAndThenTheOtherHasWaitedForEverything) {
    const Queues queues;
    int count = 0;
    for (int round = 1; round <= 1000; ++round) {
        queues.operations->async([&] { queues.serial->handOver([&count] { ++count; }); });
        ASSERT_TRUE(queues.operations->waitUntilIdle(deadline()));
        int seen = 0;
        queues.serial->sync([&] { seen = count; });
        ASSERT_EQ(seen, round);
    }
}

TEST(HandOver, TheOnlyThreadOfAQueueStaysThere) {
    const Queues queues;
    const auto other = serialQueue();
    std::promise<void> othersTurn;
    std::promise<bool> hasSeenIt;
    queues.serial->async([&] {
        other->handOver([&] {
            hasSeenIt.set_value(othersTurn.get_future().wait_for(testDeadline) ==
                                std::future_status::ready);
        });
    });
    queues.serial->async([&] { othersTurn.set_value(); });
    EXPECT_TRUE(hasSeenIt.get_future().get());
    other->finish();
}

TEST(HandOver, ASlowItemHoldsUpNobodyInTheQueueItCameFrom) {
    const Queues queues;
    std::promise<void> othersTurn;
    std::promise<bool> hasSeenIt;
    std::promise<void> isUnderWay;
    queues.operations->async([&] {
        queues.serial->handOver([&] {
            isUnderWay.set_value();
            hasSeenIt.set_value(othersTurn.get_future().wait_for(testDeadline) ==
                                std::future_status::ready);
        });
    });
    isUnderWay.get_future().wait();
    queues.operations->async([&] { othersTurn.set_value(); });
    EXPECT_TRUE(hasSeenIt.get_future().get());
}

TEST(HandOver, WhatWasQueuedMeanwhileNeedNotWaitForASlowItem) {
    const auto operations =
        WorkQueue::make("test.operations",
                        {.threads = 2, .idleTime = std::chrono::seconds(1), .holdsUpForks = false});
    const auto serial = serialQueue();
    std::promise<void> isAllQueued;
    std::promise<void> othersTurn;
    std::promise<bool> hasSeenIt;
    std::promise<void> isOver;
    operations->async([&] {
        isAllQueued.get_future().wait();
        serial->handOver([&] {
            hasSeenIt.set_value(othersTurn.get_future().wait_for(testDeadline) ==
                                std::future_status::ready);
        });
    });
    operations->async([&] { isOver.get_future().wait(); });
    operations->async([&] { othersTurn.set_value(); });
    isAllQueued.set_value();
    EXPECT_TRUE(hasSeenIt.get_future().get());
    isOver.set_value();
    operations->finish();
    serial->finish();
}

TEST(HandOver, AnItemMayEndTheQueueThatHandedItOver) {
    auto operations = operationQueue();
    const auto serial = serialQueue();
    std::promise<void> isEnded;
    operations->async([&] {
        serial->handOver([&] {
            operations->finish();
            isEnded.set_value();
        });
    });
    ASSERT_EQ(isEnded.get_future().wait_for(testDeadline), std::future_status::ready);
    serial->finish();
}

TEST(HandOver, ItemsMayGoOnHandingOverForEver) {
    const Queues queues;
    constexpr int most = 100'000;
    int count = 0;
    std::promise<void> isOver;
    std::function<void()> next = [&] {
        if (++count == most) return isOver.set_value();
        (count % 2 == 0 ? queues.serial : queues.operations)->handOver(next);
    };
    queues.operations->async(next);
    EXPECT_EQ(isOver.get_future().wait_for(testDeadline), std::future_status::ready);
}

TEST(HandOver, AnItemMayDestroyTheQueueThatItWasHandedOverTo) {
    for (int round = 0; round < 300; ++round) {
        const auto operations = operationQueue();
        auto queue = serialQueue();
        std::promise<void> isDestroyed;
        operations->async([&] {
            WorkQueue& target = *queue;
            target.handOver([&] {
                queue->finish();
                queue.reset();
                isDestroyed.set_value();
            });
        });
        ASSERT_EQ(isDestroyed.get_future().wait_for(testDeadline), std::future_status::ready);
        operations->finish();
    }
}

// `count` and `last` are plain variables: two items at a time would be a data race.
TEST(HandOver, ItemsOfAllKindsFromManyThreadsExcludeEachOtherAndKeepTheOrderOfEachThread) {
    constexpr std::size_t threads = 4;
    constexpr int rounds = 400;
    int count = 0;
    int disorders = 0;
    std::vector<int> last(threads, -1);
    {
        const Queues queues;
        std::vector<std::thread> producers;
        for (std::size_t thread = 0; thread < threads; ++thread)
            producers.emplace_back([&, thread] {
                for (int number = 0; number < rounds; ++number) {
                    const auto item = [&, thread, number] {
                        ++count;
                        if (last[thread] >= number) ++disorders;
                        last[thread] = number;
                    };
                    switch (number % 4) {
                        case 0:
                            queues.serial->async(item);
                            break;
                        case 1:
                            queues.serial->runHere(item);
                            break;
                        case 2:
                            queues.serial->sync(item);
                            break;
                        default:
                            queues.operations->runHere([&] {
                                queues.serial->handOver([&] { ++count; });
                                queues.operations->async(
                                    [&] { queues.serial->handOver([&] { ++count; }); });
                            });
                    }
                }
            });
        for (auto& thread : producers) thread.join();
        EXPECT_TRUE(queues.operations->waitUntilIdle(deadline()));
    }
    EXPECT_EQ(disorders, 0);
    EXPECT_EQ(count, static_cast<int>(threads) * rounds * 5 / 4);
}
