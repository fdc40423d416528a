// SPDX-License-Identifier: MIT
// The main queue on one thread.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"

using namespace std::chrono_literals;

namespace {

DispatchMainQueue& queue = DispatchMainQueue::shared();

bool becomesReadable(std::chrono::milliseconds timeout) {
    pollfd entry{queue.fd(), POLLIN, 0};
    return poll(&entry, 1, static_cast<int>(timeout.count())) == 1;
}

bool isReadable() {
    return becomesReadable(0ms);
}

/// Adds work that records `number`.
class Recorder {
  public:
    void add(int number) {
        queue.async([this, number] { seen.push_back(number); });
    }
    std::vector<int> seen;
};

}  // namespace

TEST(MainQueue, DrainRunsWorkInTheOrderAddedAndCountsIt) {
    Recorder recorder;
    for (const int number : {1, 2, 3}) recorder.add(number);
    EXPECT_TRUE(recorder.seen.empty());
    EXPECT_EQ(queue.drain(), 3U);
    EXPECT_EQ(recorder.seen, (std::vector{1, 2, 3}));
    EXPECT_EQ(queue.drain(), 0U);
}

TEST(MainQueue, WorkAddedWhileDrainingWaitsForTheNextDrain) {
    Recorder recorder;
    queue.async([&] {
        recorder.seen.push_back(1);
        recorder.add(3);
        queue.asyncAfter(0ns, [&] { recorder.seen.push_back(4); });
    });
    recorder.add(2);
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_EQ(recorder.seen, (std::vector{1, 2}));
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_EQ(recorder.seen, (std::vector{1, 2, 3, 4}));
}

TEST(MainQueue, ANestedDrainRunsWhatIsQueuedThenAndNothingRunsTwice) {
    Recorder recorder;
    std::size_t innerCount = 0;
    queue.async([&] {
        recorder.seen.push_back(1);
        recorder.add(4);
        innerCount = queue.drain();
        recorder.add(5);
    });
    recorder.add(2);
    recorder.add(3);
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_EQ(innerCount, 3U);
    EXPECT_EQ(recorder.seen, (std::vector{1, 2, 3, 4}));
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_EQ(recorder.seen, (std::vector{1, 2, 3, 4, 5}));
}

TEST(MainQueue, TheOuterDrainGoesOnAfterANestedOneThatLeftItems) {
    Recorder recorder;
    queue.async([&] {
        EXPECT_THROW(queue.drain(), std::runtime_error);
        recorder.seen.push_back(1);
    });
    queue.async([] { throw std::runtime_error("leaves the rest"); });
    recorder.add(2);
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_EQ(recorder.seen, (std::vector{1, 2}));
}

TEST(MainQueue, DrainsNestAtEveryDepth) {
    int depth = 0;
    int deepest = 0;
    for (int count = 0; count < 50; ++count)
        queue.async([&] {
            deepest = std::max(deepest, ++depth);
            queue.drain();
            --depth;
        });
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_EQ(deepest, 50);
    EXPECT_EQ(queue.drain(), 0U);
}

TEST(MainQueue, AnExceptionPassesOutOfDrainAndTheItemsBehindStayQueued) {
    Recorder recorder;
    recorder.add(1);
    queue.async([] { throw std::out_of_range("passes"); });
    recorder.add(2);
    EXPECT_THROW(queue.drain(), std::out_of_range);
    EXPECT_EQ(recorder.seen, std::vector{1});
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_EQ(recorder.seen, (std::vector{1, 2}));
}

TEST(MainQueue, TheDescriptorIsReadableExactlyWhileThereIsWork) {
    EXPECT_FALSE(isReadable());
    queue.async([] {});
    EXPECT_TRUE(isReadable());
    EXPECT_TRUE(isReadable()) << "level-triggered: looking changes nothing";
    queue.async([] { EXPECT_FALSE(isReadable()) << "the last item is at work, none is queued"; });
    queue.drain();
    EXPECT_FALSE(isReadable());
}

TEST(MainQueue, TheDescriptorCannotBeReadAndClosesOnExec) {
    queue.async([] {});
    char buffer[8];
    EXPECT_EQ(read(queue.fd(), buffer, sizeof buffer), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(queue.drain(), 1U);
    int inspected = 0;
    for (int number = 3; number < 256; ++number)
        if (const int flags = fcntl(number, F_GETFD); flags >= 0) {
            char target[64] = {};
            const std::string link = "/proc/self/fd/" + std::to_string(number);
            if (readlink(link.c_str(), target, sizeof target - 1) < 0) continue;
            if (std::string(target).find("anon_inode:[event") != 0 &&
                std::string(target).find("anon_inode:[timerfd]") != 0)
                continue;
            ++inspected;
            EXPECT_TRUE(flags & FD_CLOEXEC) << target;
        }
    EXPECT_EQ(inspected, 3);
}

TEST(MainQueue, TheDescriptorWorksInAnEpollSetToo) {
    const int outer = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLIN;
    ASSERT_EQ(epoll_ctl(outer, EPOLL_CTL_ADD, queue.fd(), &event), 0);
    EXPECT_EQ(epoll_wait(outer, &event, 1, 0), 0);
    queue.async([] {});
    EXPECT_EQ(epoll_wait(outer, &event, 1, 0), 1);
    EXPECT_EQ(epoll_wait(outer, &event, 1, 0), 1);
    queue.drain();
    EXPECT_EQ(epoll_wait(outer, &event, 1, 0), 0);
    close(outer);
}

TEST(MainQueue, ATimerRunsWhenItIsDueAndNotBefore) {
    const auto start = std::chrono::steady_clock::now();
    auto ranAt = start;
    queue.asyncAfter(30ms, [&] { ranAt = std::chrono::steady_clock::now(); });
    ASSERT_TRUE(queue.wait(20s));
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_GE(ranAt - start, 30ms);
    EXPECT_FALSE(isReadable());
}

TEST(MainQueue, TheDescriptorIsReadableWhileATimerIsDue) {
    queue.asyncAfter(20ms, [] {});
    ASSERT_TRUE(becomesReadable(20s));
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_FALSE(isReadable());
}

TEST(MainQueue, ATimerThatIsNotDueIsNeitherReadableNorRun) {
    queue.asyncAfter(1h, [] { FAIL(); });
    EXPECT_FALSE(isReadable());
    EXPECT_FALSE(queue.wait(1ms));
    EXPECT_EQ(queue.drain(), 0U);
}

TEST(MainQueue, AnEarlierTimerIsNotHiddenByALaterOne) {
    bool hasRun = false;
    queue.asyncAfter(1h, [] { FAIL(); });
    queue.asyncAfter(10ms, [&] { hasRun = true; });
    queue.asyncAfter(2h, [] { FAIL(); });
    ASSERT_TRUE(becomesReadable(20s));
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_TRUE(hasRun);
    EXPECT_FALSE(isReadable());
}

TEST(MainQueue, TimersRunInTheOrderOfTheirTimes) {
    Recorder recorder;
    queue.asyncAfter(40ms, [&] { recorder.seen.push_back(3); });
    queue.asyncAfter(20ms, [&] { recorder.seen.push_back(2); });
    queue.asyncAfter(-1h, [&] { recorder.seen.push_back(1); });
    while (recorder.seen.size() < 3) {
        ASSERT_TRUE(queue.wait(20s));
        queue.drain();
    }
    EXPECT_EQ(recorder.seen, (std::vector{1, 2, 3}));
}

TEST(MainQueue, ATimerWithoutDelayRunsAtTheNextDrainBehindQueuedWork) {
    Recorder recorder;
    queue.asyncAfter(0ns, [&] { recorder.seen.push_back(2); });
    queue.asyncAfter(std::chrono::nanoseconds::min(), [&] { recorder.seen.push_back(1); });
    recorder.add(0);
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(queue.drain(), 3U);
    EXPECT_EQ(recorder.seen, (std::vector{0, 1, 2}));
}

TEST(MainQueue, ATimerForTheEndOfTimeIsAccepted) {
    queue.asyncAfter(std::chrono::nanoseconds::max(), [] { FAIL(); });
    EXPECT_FALSE(isReadable());
    EXPECT_EQ(queue.drain(), 0U);
}

TEST(MainQueue, DueTimersBehindAnItemThatThrowsStayQueued) {
    Recorder recorder;
    queue.async([] { throw std::runtime_error("first"); });
    queue.asyncAfter(0ns, [&] { recorder.seen.push_back(1); });
    EXPECT_THROW(queue.drain(), std::runtime_error);
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_EQ(recorder.seen, std::vector{1});
}

TEST(MainQueue, WaitTellsWhetherThereIsWorkAndRunsNothing) {
    EXPECT_FALSE(queue.wait(0ns));
    EXPECT_FALSE(queue.wait(std::chrono::nanoseconds::min()));
    EXPECT_FALSE(queue.wait(1ms));
    bool hasRun = false;
    queue.async([&] { hasRun = true; });
    EXPECT_TRUE(queue.wait(0ns));
    EXPECT_TRUE(queue.wait(std::chrono::nanoseconds::max()));
    EXPECT_FALSE(hasRun);
    queue.drain();
    EXPECT_TRUE(hasRun);
}

TEST(MainQueue, RunReturnsAfterTheDrainInWhichAnItemStoppedIt) {
    Recorder recorder;
    recorder.add(1);
    queue.async([] { queue.stop(); });
    recorder.add(2);
    queue.async([&] { recorder.add(3); });
    queue.run();
    EXPECT_EQ(recorder.seen, (std::vector{1, 2}));
    EXPECT_EQ(queue.drain(), 1U);
}

TEST(MainQueue, RunRunsTimers) {
    int count = 0;
    queue.asyncAfter(5ms, [&] { ++count; });
    queue.asyncAfter(20ms, [&] {
        ++count;
        queue.stop();
    });
    queue.run();
    EXPECT_EQ(count, 2);
}

TEST(MainQueue, AStopAheadOfRunEndsTheNextOneAndOnlyThat) {
    bool hasRun = false;
    queue.async([&] {
        hasRun = true;
        queue.stop();
    });
    queue.stop();
    queue.stop();
    queue.run();
    EXPECT_FALSE(hasRun);
    queue.run();
    EXPECT_TRUE(hasRun);
}

TEST(MainQueue, NestedRunsEndOneByOne) {
    Recorder recorder;
    queue.async([&] {
        queue.async([] { queue.stop(); });
        queue.run();
        recorder.seen.push_back(1);
        queue.async([&] {
            recorder.seen.push_back(2);
            queue.stop();
        });
    });
    queue.run();
    EXPECT_EQ(recorder.seen, (std::vector{1, 2}));
}

TEST(MainQueue, AnExceptionPassesOutOfRun) {
    queue.async([] { throw std::runtime_error("passes"); });
    EXPECT_THROW(queue.run(), std::runtime_error);
}
