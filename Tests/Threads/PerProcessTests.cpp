// SPDX-License-Identifier: MIT
// Objects of which a process has one, across forks.
#include "Platform/Threads/PerProcess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "Platform/Threads/Mutex.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace {

/// Two numbers that are equal whenever the lock is free.
struct Pair {
    Pair() = default;
    explicit Pair(Pair& parent) QRV_REQUIRES(parent.mutex)
        : generation(parent.generation + 1), first(parent.first), second(parent.second) {}
    void lock() QRV_ACQUIRES(mutex) { mutex.lock(); }
    void unlock() QRV_RELEASES(mutex) { mutex.unlock(); }
    void increase() {
        const LockGuard guard(mutex);
        ++first;
        std::this_thread::yield();
        ++second;
    }
    int count() {
        const LockGuard guard(mutex);
        return first;
    }
    bool isWhole() {
        const LockGuard guard(mutex);
        return first == second;
    }

    Mutex mutex;
    int generation = 0;
    int first QRV_GUARDED_BY(mutex) = 0;
    int second QRV_GUARDED_BY(mutex) = 0;
};

struct FailsAtFirst {
    FailsAtFirst() {
        if (++attempts == 1) throw std::runtime_error("no means left");
    }
    explicit FailsAtFirst(FailsAtFirst&) {}
    void lock() {}
    void unlock() {}
    static inline int attempts = 0;
};

}  // namespace

TEST(PerProcess, HasOneObjectForAProcess) {
    EXPECT_EQ(&PerProcess<Pair>::current(), &PerProcess<Pair>::current());
    EXPECT_EQ(PerProcess<Pair>::current().generation, 0);
}

TEST(PerProcess, AChildHasOneOfItsOwnThatIsMadeOfItsParents) {
    Pair& parents = PerProcess<Pair>::current();
    parents.increase();
    ChildProcess child([&] {
        Pair& own = PerProcess<Pair>::current();
        own.increase();
        ChildProcess grandchild([&] { return PerProcess<Pair>::current().generation == 2; });
        return &own != &parents && own.generation == 1 && own.count() == 2 && own.isWhole() &&
               grandchild.succeeded();
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(&PerProcess<Pair>::current(), &parents);
    EXPECT_TRUE(parents.isWhole()) << "the lock is free again";
    EXPECT_EQ(parents.count(), 1);
}

TEST(PerProcess, NoForkHappensWhileAnotherThreadHoldsTheLock) {
    Pair& pair = PerProcess<Pair>::current();
    std::atomic<bool> isEnding = false;
    std::thread thread([&] {
        while (!isEnding) pair.increase();
    });
    for (int round = 0; round < 100; ++round) {
        ChildProcess child([] { return PerProcess<Pair>::current().isWhole(); });
        EXPECT_TRUE(child.succeeded()) << round;
    }
    isEnding = true;
    thread.join();
}

TEST(PerProcess, AFirstUseThatFailsIsTriedAgain) {
    EXPECT_THROW(PerProcess<FailsAtFirst>::current(), std::runtime_error);
    EXPECT_NO_THROW(PerProcess<FailsAtFirst>::current());
    EXPECT_EQ(FailsAtFirst::attempts, 2);
}
