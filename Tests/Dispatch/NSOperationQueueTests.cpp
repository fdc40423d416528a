// SPDX-License-Identifier: MIT
// Operation queues.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Dispatch/NSOperationQueue.h"
#include "Support/ChildProcess.h"

namespace {

/// Operations that stay under way until it is opened.
class Hold {
  public:
    void stay() {
        ++arrivals_;
        opened_.wait();
    }
    void open() { promise_.set_value(); }
    [[nodiscard]] bool has(int arrivals) const {
        return waitUntil([&] { return arrivals_ == arrivals; });
    }
    [[nodiscard]] int arrivals() const { return arrivals_; }

  private:
    std::promise<void> promise_;
    std::shared_future<void> opened_{promise_.get_future()};
    std::atomic<int> arrivals_ = 0;
};

/// Of the queues of this process: each has its name once it is running.
std::size_t countOfThreads() {
    std::size_t count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm") >> std::ws, name);
        count += name == "operations" ? 1U : 0U;
    }
    return count;
}

}  // namespace

TEST(NSOperationQueue, RunsEveryOperationOnceOnThreadsOfItsOwn) {
    std::vector<std::atomic<int>> runs(1000);
    std::atomic<int> ownRuns = 0;
    {
        const std::thread::id own = std::this_thread::get_id();
        NSOperationQueue queue;
        std::vector<std::thread> threads;
        for (std::size_t thread = 0; thread < 4; ++thread)
            threads.emplace_back([&, thread] {
                for (std::size_t count = 0; count < 250; ++count)
                    queue.addOperation([&, number = 250 * thread + count] {
                        ++runs[number];
                        if (std::this_thread::get_id() == own) ++ownRuns;
                    });
            });
        for (auto& thread : threads) thread.join();
    }
    for (const auto& run : runs) EXPECT_EQ(run, 1) << "the destructor has waited";
    EXPECT_EQ(ownRuns, 0);
}

TEST(NSOperationQueue, ASlowOperationHoldsNobodyUp) {
    Hold hold;
    NSOperationQueue queue;
    queue.addOperation([&] { hold.stay(); });
    ASSERT_TRUE(hold.has(1));
    std::promise<void> hasRun;
    queue.addOperation([&] { hasRun.set_value(); });
    EXPECT_EQ(hasRun.get_future().wait_for(testDeadline), std::future_status::ready);
    hold.open();
}

TEST(NSOperationQueue, RunsSoManyOperationsAtATimeAndTheOthersLater) {
    constexpr int most = static_cast<int>(QRVPlatform::mostOperationThreads);
    constexpr int all = most + 10;
    Hold hold;
    std::atomic<int> begun = 0;
    {
        NSOperationQueue queue;
        for (int number = 0; number < all; ++number)
            queue.addOperation([&] {
                ++begun;
                hold.stay();
            });
        EXPECT_TRUE(hold.has(most));
        EXPECT_EQ(countOfThreads(), QRVPlatform::mostOperationThreads);
        hold.open();
    }
    EXPECT_EQ(begun, all);
}

TEST(NSOperationQueue, UsesAThreadAgainWhileItIsIdle) {
    NSOperationQueue queue;
    std::set<std::thread::id> threads;
    for (int round = 0; round < 50; ++round) {
        std::promise<std::thread::id> ran;
        queue.addOperation([&] { ran.set_value(std::this_thread::get_id()); });
        threads.insert(ran.get_future().get());
        const auto deadline = std::chrono::steady_clock::now() + testDeadline;
        ASSERT_TRUE(queue.waitUntilAllOperationsAreFinished(deadline));
    }
    EXPECT_LT(threads.size(), 10U) << "a thread may have ended on a busy machine; each of them";
}

TEST(NSOperationQueue, AThreadThatIsIdleEnds) {
    NSOperationQueue queue;
    queue.addOperation([] {});
    EXPECT_TRUE(waitUntil([] { return countOfThreads() == 1; }));
    EXPECT_TRUE(waitUntil([] { return countOfThreads() == 0; }));
    std::promise<void> hasRun;
    queue.addOperation([&] { hasRun.set_value(); });
    EXPECT_EQ(hasRun.get_future().wait_for(testDeadline), std::future_status::ready);
}

TEST(NSOperationQueue, MayBeDestroyedByAnOperationOfItsOwn) {
    std::promise<void> otherHasRun;
    std::promise<void> isDestroyed;
    std::promise<void> mayGoOn;
    auto queue = std::make_shared<NSOperationQueue>();
    queue->addOperation([&] {
        mayGoOn.get_future().wait();
        queue.reset();
        isDestroyed.set_value();
    });
    queue->addOperation([&] { otherHasRun.set_value(); });
    mayGoOn.set_value();
    for (std::promise<void>* const promise : {&otherHasRun, &isDestroyed})
        EXPECT_EQ(promise->get_future().wait_for(std::chrono::seconds(20)),
                  std::future_status::ready);
}

TEST(NSOperationQueue, AnOperationMayAddOperations) {
    std::promise<int> result;
    int step = 0;
    NSOperationQueue queue;
    queue.addOperation([&] {
        step = 1;
        queue.addOperation([&] { result.set_value(step); });
    });
    EXPECT_EQ(result.get_future().get(), 1);
}
