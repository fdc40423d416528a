// SPDX-License-Identifier: MIT
// How long a writer waits for other writers, and how it says so.

#include <gtest/gtest.h>

#include <thread>

#include "Coordination/KernelLocks.h"
#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Coordination/FileLock.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace {

using Clock = std::chrono::steady_clock;

struct Waited {
    std::error_code error{};
    int runs = 0;
    int notices = 0;
    std::thread::id thread{};
};

Waited write(
    std::optional<Clock::time_point> deadline, const std::function<void()>& onWaiting = [] {}) {
    Waited waited;
    LockWait wait;
    wait.deadline = deadline;
    wait.onWaiting = [&] {
        ++waited.notices;
        waited.thread = std::this_thread::get_id();
        onWaiting();
    };
    waited.error = coordinateWriting(
        NSFileCoordinator(), "file", NSFileCoordinator::WritingOptions::ForReplacing,
        [&](WriteAccess&) { ++waited.runs; }, wait);
    return waited;
}

/// A process that has the lock of the writers until it is released.
class Holder {
  public:
    Holder() { EXPECT_TRUE(holds_.wait()); }
    void release() const { end_.open(); }

  private:
    Gate holds_;
    Gate end_;
    ChildProcess process_{[this] {
        FileLock lock;
        if (FileLock::acquireExclusive(".file.lock", lock)) return false;
        holds_.open();
        return end_.wait();
    }};
};

}  // namespace

TEST(LockWait, AFreeLockIsHadWithoutANoticeEvenAfterTheDeadline) {
    for (const auto& deadline : {std::optional<Clock::time_point>(), std::optional(Clock::now())}) {
        const Waited waited = write(deadline);
        EXPECT_FALSE(waited.error);
        EXPECT_EQ(waited.runs, 1);
        EXPECT_EQ(waited.notices, 0);
    }
}

TEST(LockWait, TheAccessorDoesNotRunWhenTheDeadlineHasPassed) {
    const Holder holder;
    for (const auto timeout : {std::chrono::milliseconds(0), std::chrono::milliseconds(50)}) {
        const auto deadline = Clock::now() + timeout;
        const Waited waited = write(deadline);
        EXPECT_EQ(waited.error, std::errc::timed_out);
        EXPECT_GE(Clock::now(), deadline);
        EXPECT_EQ(waited.runs, 0);
        EXPECT_EQ(waited.notices, 1);
    }
}

TEST(LockWait, ALockThatIsReleasedBeforeTheDeadlineIsHad) {
    for (const auto& deadline :
         {std::optional<Clock::time_point>(), std::optional(Clock::now() + testDeadline)}) {
        const Holder holder;
        const Waited waited = write(deadline, [&] { holder.release(); });
        EXPECT_FALSE(waited.error);
        EXPECT_EQ(waited.runs, 1);
        EXPECT_EQ(waited.notices, 1);
        EXPECT_EQ(waited.thread, std::this_thread::get_id());
    }
}

TEST(LockWait, OneWaitIsNoticedOnceThoughTheLockFileIsReplaced) {
    std::optional<Holder> second;
    const Holder first;
    const Waited waited = write(Clock::now() + std::chrono::milliseconds(200), [&] {
        std::filesystem::remove(".file.lock");
        second.emplace();
        first.release();
    });
    EXPECT_EQ(waited.error, std::errc::timed_out);
    EXPECT_EQ(waited.runs, 0);
    EXPECT_EQ(waited.notices, 1);
}

TEST(LockWait, AnExceptionOfTheNoticeEndsTheWait) {
    const Holder holder;
    EXPECT_THROW(write({}, [] { throw std::runtime_error("no patience"); }), std::runtime_error);
}
