// SPDX-License-Identifier: MIT
// Serial and operation queues across forks, and at the end of the process.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/NSOperationQueue.h"
#include "Platform/Dispatch/WorkQueue.h"
#include "Platform/Threads/ThreadAffinity.h"
#include "Support/ChildProcess.h"
#include "Support/Shortages.h"

TEST(DispatchQueueProcess, AnExceptionFromAsyncWorkEndsTheProgram) {
    ChildProcess child([] {
        DispatchQueue queue("test.exception");
        queue.async([] { throw std::runtime_error("not swallowed"); });
        queue.sync([] {});
        return true;
    });
    EXPECT_TRUE(child.diedOf(SIGABRT));
}

TEST(DispatchQueueProcess, AProcessMayExitWhileAQueueIsAtWork) {
    ChildProcess child([]() -> bool {
        const Gate isAtWork;
        auto& queue = *new DispatchQueue("test.exit");
        queue.async([&] {
            isAtWork.open();
            for (;;) pause();
        });
        if (!isAtWork.wait()) return false;
        std::exit(0);
    });
    EXPECT_TRUE(child.succeeded());
}

using QRVPlatform::WorkQueue;

namespace {

/// Work that stays under way until it is opened.
struct Hold {
    std::promise<void> promise;
    std::shared_future<void> opened{promise.get_future()};
    std::atomic<bool> isReached = false;
    void stay() {
        isReached = true;
        opened.wait();
    }
};

}  // namespace

TEST(DispatchQueueFork, AChildHasTheQueueEmptyAndWithAThreadOfItsOwn) {
    Hold hold;
    std::atomic<int> runs = 0;
    DispatchQueue queue("test.fork");
    queue.sync([] {});
    queue.async([&] { hold.stay(); });
    ASSERT_TRUE(waitUntil([&] { return hold.isReached.load(); }));
    queue.async([&] { ++runs; });
    ChildProcess child([&] {
        std::vector<int> seen;
        for (int number = 0; number < 100; ++number)
            queue.async([&seen, number] { seen.push_back(number); });
        queue.sync([] {});
        return seen.size() == 100 && seen.back() == 99 && runs == 0;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(runs, 0);
    hold.promise.set_value();
    queue.sync([] {});
    EXPECT_EQ(runs, 1);
}

TEST(DispatchQueueFork, AQueueThatFinishesItsWorkHoldsUpTheForkUntilThen) {
    DispatchQueue queue("test.fork", DispatchQueue::AtFork::FinishWork);
    std::atomic<int> runs = 0;
    for (int round = 1; round <= 20; ++round) {
        queue.async([&] { ++runs; });
        queue.async([&] { ++runs; });
        ChildProcess child([&, round] { return runs == 2 * round; });
        ASSERT_TRUE(child.succeeded());
    }
}

TEST(DispatchQueueFork, TheForkWaitsOnlySoLong) {
    Hold hold;
    DispatchQueue queue("test.fork", DispatchQueue::AtFork::FinishWork);
    queue.async([&] { hold.stay(); });
    const auto begin = std::chrono::steady_clock::now();
    ChildProcess child([&] {
        bool hasRun = false;
        queue.sync([&] { hasRun = true; });
        return hasRun;
    });
    EXPECT_GE(std::chrono::steady_clock::now() - begin, QRVPlatform::forkTimeout);
    EXPECT_TRUE(child.succeeded());
    hold.promise.set_value();
}

TEST(DispatchQueueFork, AnItemMayForkAndItsChildMayUseTheQueue) {
    DispatchQueue queue("test.fork", DispatchQueue::AtFork::FinishWork);
    std::atomic<bool> hasSucceeded = false;
    std::atomic<int> later = 0;
    const auto begin = std::chrono::steady_clock::now();
    queue.async([&] {
        ChildProcess child([&] {
            int runs = 0;
            queue.sync([&] { ++runs; });
            return runs == 1 && later == 0;
        });
        hasSucceeded = child.succeeded();
    });
    queue.async([&] { ++later; });
    queue.sync([] {});
    EXPECT_TRUE(hasSucceeded);
    EXPECT_EQ(later, 1);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, QRVPlatform::forkTimeout)
        << "it does not wait for itself";
}

TEST(DispatchQueueFork, AChildThatReturnsFromTheItemEndsWithItsThread) {
    if (isSanitized) GTEST_SKIP() << "what the child inherits counts as a leak";
    DispatchQueue queue("test.fork");
    const pid_t parent = getpid();
    std::atomic<pid_t> child = 0;
    std::atomic<int> later = 0;
    queue.async([&] {
        if (const pid_t pid = fork(); pid > 0) child = pid;
    });
    queue.async([&] {
        if (getpid() != parent) _exit(2);
        ++later;
    });
    queue.sync([] {});
    EXPECT_EQ(later, 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(DispatchQueueFork, AForkAmidCallsOfOtherThreadsLeavesUsableQueues) {
    if (isSanitized)
        GTEST_SKIP()
            << "a fork beside threads may leave the sanitizer's allocator locked in the child";
    DispatchQueue queue("test.fork");
    NSOperationQueue operations;
    std::atomic<bool> isOver = false;
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        while (!isOver) queue.sync([] {});
    });
    threads.emplace_back([&] {
        while (!isOver) operations.addOperation([] {});
    });
    threads.emplace_back([&] {
        while (!isOver) DispatchQueue("test.brief").async([] {});
    });
    for (int round = 0; round < 50; ++round) {
        ChildProcess child([&] {
            std::promise<void> hasRun;
            operations.addOperation([&] { hasRun.set_value(); });
            int runs = 0;
            queue.sync([&] { ++runs; });
            return runs == 1 &&
                   hasRun.get_future().wait_for(testDeadline) == std::future_status::ready;
        });
        ASSERT_TRUE(child.succeeded()) << round;
    }
    isOver = true;
    for (auto& thread : threads) thread.join();
}

TEST(DispatchQueueFork, AChildMayDestroyTheQueuesThatItInherited) {
    Hold hold;
    auto queue = std::make_unique<DispatchQueue>("test.fork");
    auto operations = std::make_unique<NSOperationQueue>();
    queue->async([&] { hold.stay(); });
    operations->addOperation([&] { hold.stay(); });
    ChildProcess child([&] {
        queue.reset();
        operations.reset();
        return true;
    });
    EXPECT_TRUE(child.succeeded());
    hold.promise.set_value();
}

TEST(DispatchQueueFork, AGrandchildHasQueuesToo) {
    DispatchQueue queue("test.fork");
    queue.sync([] {});
    ChildProcess child([&] {
        queue.sync([] {});
        ChildProcess grandchild([&] {
            int runs = 0;
            queue.sync([&] { ++runs; });
            return runs == 1;
        });
        return grandchild.succeeded();
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(NSOperationQueueFork, AChildHasItEmptyAndWithThreadsOfItsOwn) {
    Hold hold;
    std::atomic<int> runs = 0;
    std::atomic<std::size_t> staying = 0;
    NSOperationQueue queue;
    for (std::size_t number = 0; number < QRVPlatform::mostOperationThreads; ++number)
        queue.addOperation([&] {
            ++staying;
            hold.stay();
        });
    queue.addOperation([&] { ++runs; });
    // A fork beside a thread that starts may leave a lock of a sanitizer taken in the child.
    ASSERT_TRUE(waitUntil([&] { return staying == QRVPlatform::mostOperationThreads; }));
    ChildProcess child([&] {
        std::promise<void> hasRun;
        queue.addOperation([&] { hasRun.set_value(); });
        return hasRun.get_future().wait_for(testDeadline) == std::future_status::ready && runs == 0;
    });
    EXPECT_TRUE(child.succeeded());
    hold.promise.set_value();
}

TEST(ThreadAffinity, IsThatOfTheForkingThreadInAChild) {
    static QRVPlatform::ThreadAffinity affinity([](const char*) {});
    affinity.require("here");
    std::thread([] {
        ChildProcess child([] {
            affinity.require("there");
            return true;
        });
        EXPECT_TRUE(child.succeeded());
    }).join();
    affinity.require("here");
}

TEST(HandOverFork, AChildThatAnItemForksAddsWhatIsHandedOverAndItsThreadHasToEnd) {
    const WorkQueue::Limits limits{.threads = 1, .idleTime = {}, .holdsUpForks = false};
    const auto queue = WorkQueue::make("test.fork", limits);
    const auto other = WorkQueue::make("test.other", limits);
    pid_t child = -1;
    bool hasRun = false;
    const bool mayGoOn = queue->runHere([&] {
        child = fork();
        other->handOver([&] { hasRun = true; });
    });
    if (child == 0) {
        bool isThere = false;
        queue->sync([&] { isThere = true; });
        other->sync([&] { isThere = isThere && hasRun; });
        _exit(isThere && !mayGoOn ? 0 : 1);
    }
    EXPECT_TRUE(mayGoOn);
    EXPECT_TRUE(hasRun);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    queue->finish();
    other->finish();
}
