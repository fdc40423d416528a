// SPDX-License-Identifier: MIT
// Queues of a process that gets no threads or descriptors.

#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/NSOperationQueue.h"
#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/Shortages.h"

using namespace QRVPlatform;

namespace {

std::vector<std::string> reported;  // on the thread that uses the queues

/// Runs `body` in a child that can start no thread while `shortage` holds something.
bool holdsWithoutThreads(const std::function<bool(std::optional<NoThreads>& shortage)>& body) {
    letNobodyIn();
    ChildProcess child([&] {
        setFileFailureHandler([](const FileFailure& failure) {
            reported.push_back(failure.operation + failure.path);
        });
        std::optional<NoThreads> shortage(std::in_place);
        return body(shortage);
    });
    return child.succeeded();
}

}  // namespace

TEST(QueueShortage, SyncRunsEverythingQueuedOnTheCallingThreadInOrder) {
    EXPECT_TRUE(holdsWithoutThreads([](auto&) {
        std::vector<int> seen;
        std::vector<std::thread::id> threads;
        DispatchQueue queue("test.short");
        for (int number = 0; number < 10; ++number)
            queue.async([&, number] {
                seen.push_back(number);
                threads.push_back(std::this_thread::get_id());
            });
        const bool wasEmpty = seen.empty();
        queue.sync([&] { seen.push_back(10); });
        queue.async([&] { seen.push_back(11); });
        const std::vector<std::thread::id> own(10, std::this_thread::get_id());
        return wasEmpty && seen == std::vector<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}) &&
               threads == own &&
               reported == std::vector<std::string>({"start a thread for test.short"});
    }));
}

TEST(QueueShortage, SyncThrowsWhatTheWorkThrowsAndFromWithinAnItem) {
    EXPECT_TRUE(holdsWithoutThreads([](auto&) {
        bool wasRefused = false;
        DispatchQueue queue("test.short");
        queue.async([&] {
            try {
                queue.sync([] {});
            } catch (const std::logic_error&) {
                wasRefused = true;
            }
        });
        try {
            queue.sync([] { throw std::runtime_error("passed on"); });
        } catch (const std::runtime_error&) {
            return wasRefused;
        }
        return false;
    }));
}

TEST(QueueShortage, TheNextUseOfAnyQueueStartsTheThread) {
    EXPECT_TRUE(holdsWithoutThreads([](auto& shortage) {
        std::promise<std::thread::id> ran;
        std::promise<std::thread::id> operationRan;
        DispatchQueue queue("test.short");
        NSOperationQueue operations;
        queue.async([&] { ran.set_value(std::this_thread::get_id()); });
        operations.addOperation([&] { operationRan.set_value(std::this_thread::get_id()); });
        DispatchMainQueue::shared().drain();
        shortage.reset();
        DispatchMainQueue::shared().drain();
        auto thread = ran.get_future();
        auto operationThread = operationRan.get_future();
        return thread.wait_for(testDeadline) == std::future_status::ready &&
               operationThread.wait_for(testDeadline) == std::future_status::ready &&
               thread.get() != std::this_thread::get_id() &&
               operationThread.get() != std::this_thread::get_id() && reported.size() == 2;
    }));
}

TEST(QueueShortage, SyncFromManyThreadsExcludesWithAndWithoutAThreadOfTheQueue) {
    letNobodyIn();
    ChildProcess child([] {
        setFileFailureHandler([](const FileFailure&) {});
        std::promise<void> begin;
        const std::shared_future<void> begun(begin.get_future());
        std::atomic<int> count = 0;
        std::atomic<int> inside = 0;
        std::atomic<int> collisions = 0;
        DispatchQueue queue("test.short");
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([&] {
                begun.wait();
                const auto item = [&] {
                    if (++inside != 1) ++collisions;
                    ++count;
                    --inside;
                };
                for (int round = 0; round < 500; ++round) {
                    queue.async(item);
                    queue.sync(item);
                }
            });
        std::optional<NoThreads> shortage(std::in_place);
        begin.set_value();
        while (count < 2000) std::this_thread::yield();
        shortage.reset();
        for (auto& thread : threads) thread.join();
        queue.sync([] {});
        return count == 4000 && collisions == 0;
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(QueueShortage, TheDestructorRunsWhatIsQueued) {
    EXPECT_TRUE(holdsWithoutThreads([](auto&) {
        int runs = 0;
        {
            DispatchQueue queue("test.short");
            queue.async([&] { ++runs; });
            queue.async([&] { ++runs; });
        }
        return runs == 2;
    }));
}

TEST(QueueShortage, AnItemMayDestroyTheQueueAndTheRestRunsAfterwards) {
    EXPECT_TRUE(holdsWithoutThreads([](auto&) {
        int runs = 0;
        auto queue = std::make_unique<DispatchQueue>("test.short");
        DispatchQueue& same = *queue;
        same.async([&] { ++runs; });
        same.sync([&] {
            same.async([&] { ++runs; });
            queue.reset();
        });
        return runs == 2;
    }));
}

TEST(QueueShortage, OperationsWithoutAFurtherThreadRunWhenOneEnds) {
    letNobodyIn();
    ChildProcess child([] {
        setFileFailureHandler([](const FileFailure&) {});
        std::promise<void> end;
        std::atomic<bool> isUnderWay = false;
        std::atomic<int> runs = 0;
        NSOperationQueue queue;
        queue.addOperation([&, ended = end.get_future().share()] {
            isUnderWay = true;
            ended.wait();
        });
        if (!waitUntil([&] { return isUnderWay.load(); })) return false;
        const NoThreads shortage;
        for (int number = 0; number < 3; ++number) queue.addOperation([&] { ++runs; });
        const bool haveWaited = runs == 0;
        end.set_value();
        return haveWaited && waitUntil([&] { return runs == 3; });
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(MainQueueShortage, WithoutADescriptorEverythingButTheDescriptorWorks) {
    if (isSanitized) GTEST_SKIP() << "a sanitizer needs descriptors of its own";
    ChildProcess child([] {
        int reports = 0;
        setFileFailureHandler([&](const FileFailure&) { ++reports; });
        DispatchMainQueue& queue = DispatchMainQueue::shared();
        int runs = 0;
        for (int count = 0; count < 3; ++count) {
            const FreeDescriptors shortage(count);
            if (queue.fd() != -1 || queue.fd() != -1) return false;
            queue.async([&] { ++runs; });
            queue.asyncAfter(std::chrono::nanoseconds(0), [&] { ++runs; });
            if (!queue.wait(testDeadline) || queue.drain() != 2) return false;
            if (countOfOpenDescriptorsUpTo(100) != 100 - count) return false;
        }
        queue.async([&] { ++runs; });
        const int number = queue.fd();
        pollfd entry{number, POLLIN, 0};
        return number >= 0 && poll(&entry, 1, 0) == 1 && queue.drain() == 1 &&
               poll(&entry, 1, 0) == 0 && queue.fd() == number && runs == 7 && reports == 1;
    });
    EXPECT_TRUE(child.succeeded());
}
