// SPDX-License-Identifier: MIT
// The main queue across forks.

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <fcntl.h>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <thread>

#include "Platform/Dispatch/Dispatch.h"
#include "Support/ChildProcess.h"

using namespace std::chrono_literals;

namespace {

DispatchMainQueue& queue = DispatchMainQueue::shared();

bool isReadable() {
    pollfd entry{queue.fd(), POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

/// A child made past the C library, so that nothing in this process learns of it.
template <typename Body>
bool runInUnobservedChild(Body body) {
    const auto pid = static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
    if (pid == 0) {
        body();
        _exit(0);
    }
    int status = 0;
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void readEveryDescriptor() {
    for (int number = 3; number < 64; ++number) {
        std::uint64_t buffer = 0;
        fcntl(number, F_SETFL, O_NONBLOCK);
        const ssize_t ignored = read(number, &buffer, sizeof buffer);
        static_cast<void>(ignored);
    }
}

}  // namespace

TEST(MainQueueFork, AChildForgetsWhatTheParentHadPending) {
    queue.async([] { _exit(2); });
    queue.asyncAfter(0ns, [] { _exit(3); });
    ChildProcess child([] { return !isReadable() && !queue.wait(0ns) && queue.drain() == 0; });
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(isReadable());
}

TEST(MainQueueFork, AChildThatDrainsAndReadsDoesNotSilenceTheParent) {
    bool hasRun = false;
    queue.async([&] { hasRun = true; });
    ChildProcess child([] {
        readEveryDescriptor();
        return queue.drain() == 0;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(isReadable());
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_TRUE(hasRun);
}

TEST(MainQueueFork, ATimerOfTheParentSurvivesAChild) {
    queue.asyncAfter(50ms, [] {});
    ChildProcess child([] {
        queue.asyncAfter(1h, [] {});
        readEveryDescriptor();
        return queue.drain() == 0;
    });
    EXPECT_TRUE(child.succeeded());
    pollfd entry{queue.fd(), POLLIN, 0};
    EXPECT_EQ(poll(&entry, 1, 20000), 1);
    EXPECT_EQ(queue.drain(), 1U);
}

TEST(MainQueueFork, TheQueueWorksInAChildUnderTheSameNumber) {
    const int number = queue.fd();
    ChildProcess child([number] {
        int count = 0;
        queue.async([&] { ++count; });
        if (queue.fd() != number || !isReadable() || queue.drain() != 1 || isReadable())
            return false;
        queue.asyncAfter(10ms, [&] {
            ++count;
            queue.stop();
        });
        pollfd entry{queue.fd(), POLLIN, 0};
        if (poll(&entry, 1, 20000) != 1) return false;
        queue.run();
        return count == 2 && (fcntl(number, F_GETFD) & FD_CLOEXEC) != 0;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_FALSE(isReadable());
    EXPECT_EQ(queue.drain(), 0U);
}

TEST(MainQueueFork, AGrandchildHasAQueueOfItsOwnToo) {
    ChildProcess child([] {
        queue.async([] {});
        ChildProcess grandchild([] {
            queue.async([] {});
            queue.async([] {});
            return isReadable() && queue.drain() == 2 && !isReadable();
        });
        return grandchild.succeeded() && isReadable() && queue.drain() == 1;
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(MainQueueFork, AChildForkedByAnItemMayReturnFromIt) {
    const pid_t parent = getpid();
    pid_t child = 0;
    int later = 0;
    queue.async([&] {
        child = fork();
        if (child == 0) queue.async([&] { later += 10; });
    });
    queue.async([&] { ++later; });
    const std::size_t count = queue.drain();
    if (getpid() != parent) {
        const bool isRight = count == 1 && later == 0 && queue.drain() == 1 && later == 10;
        _exit(isRight ? 0 : 1);
    }
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(later, 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(MainQueueFork, TheStateDecidesWhereAnUnobservedChildReadTheDescriptors) {
    queue.async([] {});
    queue.asyncAfter(0ns, [] {});
    ASSERT_TRUE(runInUnobservedChild(readEveryDescriptor));
    EXPECT_TRUE(queue.wait(0ns));
    queue.async([] {});
    EXPECT_TRUE(isReadable()) << "each new item signals";
    EXPECT_EQ(queue.drain(), 3U);
    EXPECT_FALSE(isReadable());
}

TEST(MainQueueFork, AForkAmidCallsOfOtherThreadsLeavesAUsableQueue) {
    std::atomic<bool> isOver = false;
    std::thread other([&] {
        while (!isOver) queue.stop();
    });
    for (int round = 0; round < 50; ++round) {
        ChildProcess child([] {
            queue.async([] {});
            return queue.drain() == 1;
        });
        ASSERT_TRUE(child.succeeded()) << round;
    }
    isOver = true;
    other.join();
}

TEST(MainQueueFork, AProcessMayExitWithWorkPending) {
    ChildProcess child([]() -> bool {
        queue.async([] { _exit(2); });
        queue.asyncAfter(1h, [] {});
        std::exit(0);
    });
    EXPECT_TRUE(child.succeeded());
}
