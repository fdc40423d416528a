// SPDX-License-Identifier: MIT
// The main queue of Dispatch.h.

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/MainQueueSignal.h"
#include "Platform/Dispatch/ProcessQueues.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Threads/Mutex.h"
#include "Platform/Threads/PerProcess.h"

using namespace QRVPlatform;

namespace {

using Clock = std::chrono::steady_clock;

/// The end of the clock when that is nearer.
Clock::time_point timeAfter(std::chrono::nanoseconds delay) {
    const Clock::time_point now = Clock::now();
    return delay < Clock::time_point::max() - now ? now + delay : Clock::time_point::max();
}

}  // namespace

struct DispatchMainQueue::State {
    struct Item {
        std::uint64_t number;
        std::function<void()> work;
    };

    State() = default;
    /// A forked child has nothing of what the parent had pending.
    explicit State(State& parent) QRV_REQUIRES(parent.mutex);
    void lock() QRV_ACQUIRES(mutex) { mutex.lock(); }
    void unlock() QRV_RELEASES(mutex) { mutex.unlock(); }

    void add(std::function<void()> work);
    void addTimer(Clock::time_point time, std::function<void()> work);
    void admit(std::function<void()> work) QRV_REQUIRES(mutex);
    std::uint64_t admitDueTimers();
    std::optional<std::function<void()>> takeItemBefore(std::uint64_t number);
    [[nodiscard]] std::optional<Clock::time_point> nextTime() const QRV_REQUIRES(mutex);
    [[nodiscard]] bool hasWorkAt(Clock::time_point time) const QRV_REQUIRES(mutex);
    int descriptor();
    void noteDrain();
    void requestStop();
    bool waitForWork(Clock::time_point deadline);
    bool waitForWorkOrStop();
    void sleepUntil(MutexLock& lock, Clock::time_point deadline) QRV_REQUIRES(mutex);

    Mutex mutex;
    std::condition_variable changed;
    std::deque<Item> items QRV_GUARDED_BY(mutex);
    std::multimap<Clock::time_point, std::function<void()>> timers QRV_GUARDED_BY(mutex);
    std::uint64_t nextNumber QRV_GUARDED_BY(mutex) = 0;
    bool isStopRequested QRV_GUARDED_BY(mutex) = false;
    MainQueueSignal signal QRV_GUARDED_BY(mutex);
    bool isShortOfDescriptors QRV_GUARDED_BY(mutex) = false;
    /// The signal is set, items or none, until the next drain.
    bool isWokenToDrain QRV_GUARDED_BY(mutex) = false;
};

// A thread is notified after the mutex is unlocked, everywhere here: one that wakes while it is
// locked only waits again, for the mutex.

void DispatchMainQueue::State::add(std::function<void()> work) {
    {
        const LockGuard lock(mutex);
        admit(std::move(work));
    }
    changed.notify_all();
}

void DispatchMainQueue::State::admit(std::function<void()> work) {
    items.push_back({nextNumber, std::move(work)});
    ++nextNumber;
    signal.setReady(true);
}

void DispatchMainQueue::State::addTimer(Clock::time_point time, std::function<void()> work) {
    {
        const LockGuard lock(mutex);
        timers.emplace(time, std::move(work));
        signal.setTime(nextTime());
    }
    changed.notify_all();
}

/// Returns the number that the next item will have.
std::uint64_t DispatchMainQueue::State::admitDueTimers() {
    const LockGuard lock(mutex);
    const auto firstNotDue = timers.upper_bound(Clock::now());
    if (firstNotDue == timers.begin()) return nextNumber;
    for (auto timer = timers.begin(); timer != firstNotDue; timer = timers.erase(timer))
        admit(std::move(timer->second));
    signal.setTime(nextTime());
    return nextNumber;
}

std::optional<std::function<void()>> DispatchMainQueue::State::takeItemBefore(
    std::uint64_t number) {
    const LockGuard lock(mutex);
    if (items.empty() || items.front().number >= number) return std::nullopt;
    std::optional<std::function<void()>> work(std::move(items.front().work));
    items.pop_front();
    if (items.empty()) signal.setReady(false);
    return work;
}

std::optional<Clock::time_point> DispatchMainQueue::State::nextTime() const {
    if (timers.empty()) return std::nullopt;
    return timers.begin()->first;
}

bool DispatchMainQueue::State::hasWorkAt(Clock::time_point time) const {
    return !items.empty() || (!timers.empty() && timers.begin()->first <= time);
}

/// Opened at the first call: a process without a loop of its own needs none.
int DispatchMainQueue::State::descriptor() {
    std::error_code error;
    {
        const LockGuard lock(mutex);
        if (signal.isOpen()) return signal.fd();
        error = signal.open();
        signal.setReady(!items.empty());
        signal.setTime(nextTime());
        const bool wasShort = std::exchange(isShortOfDescriptors, static_cast<bool>(error));
        if (!error || wasShort) return signal.fd();
    }
    FileFailures::reported("open the descriptor of the main queue", {}, error);
    return -1;
}

void DispatchMainQueue::State::noteDrain() {
    const LockGuard lock(mutex);
    if (std::exchange(isWokenToDrain, false)) signal.setReady(!items.empty());
}

void DispatchMainQueue::State::requestStop() {
    {
        const LockGuard lock(mutex);
        isStopRequested = true;
    }
    changed.notify_all();
}

bool DispatchMainQueue::State::waitForWork(Clock::time_point deadline) {
    MutexLock lock(mutex);
    for (;;) {
        const Clock::time_point now = Clock::now();
        if (hasWorkAt(now)) return true;
        if (now >= deadline) return false;
        sleepUntil(lock, deadline);
    }
}

/// False when it was a stop, which is thereby handled.
bool DispatchMainQueue::State::waitForWorkOrStop() {
    MutexLock lock(mutex);
    while (!isStopRequested) {
        if (hasWorkAt(Clock::now())) return true;
        sleepUntil(lock, Clock::time_point::max());
    }
    isStopRequested = false;
    return false;
}

/// May return early.
void DispatchMainQueue::State::sleepUntil(MutexLock& lock, Clock::time_point deadline) {
    const Clock::time_point wakeTime = std::min(deadline, nextTime().value_or(deadline));
    if (wakeTime == Clock::time_point::max())
        lock.waitFor(changed);
    else
        lock.waitFor(changed, wakeTime);
}

// The numbers go on, so that a drain that is under way at the fork keeps its end. A loop that only
// polls the descriptor is woken when its next drain has to start a thread.
DispatchMainQueue::State::State(State& parent)
    : nextNumber(parent.nextNumber), signal(std::move(parent.signal)) {
    signal.startInChild();
    isWokenToDrain = ProcessQueues::mustStartInChild();
    signal.setReady(isWokenToDrain);
}

DispatchMainQueue::State& DispatchMainQueue::state() {
    return PerProcess<State>::current();
}

// Every use of the main queue is an occasion on which threads that are missing are started.
DispatchMainQueue::State& DispatchMainQueue::stateInUse() {
    ProcessQueues::startMissingThreads();
    return state();
}

DispatchMainQueue::DispatchMainQueue() {
    state();
}

DispatchMainQueue& DispatchMainQueue::shared() {
    static DispatchMainQueue& queue = *new DispatchMainQueue;
    return queue;
}

void DispatchMainQueue::async(std::function<void()> work) {
    stateInUse().add(std::move(work));
}

void DispatchMainQueue::asyncAfter(std::chrono::nanoseconds delay, std::function<void()> work) {
    stateInUse().addTimer(timeAfter(delay), std::move(work));
}

int DispatchMainQueue::fd() const {
    return stateInUse().descriptor();
}

// Every step asks for the state again: an item may fork, and the child has another one.
std::size_t DispatchMainQueue::drain() {
    stateInUse().noteDrain();
    const std::uint64_t end = state().admitDueTimers();
    std::size_t count = 0;
    while (const auto work = state().takeItemBefore(end)) {
        ++count;
        (*work)();
    }
    return count;
}

void DispatchMainQueue::run() {
    while (stateInUse().waitForWorkOrStop()) drain();
}

void DispatchMainQueue::stop() {
    state().requestStop();
}

bool DispatchMainQueue::wait(std::chrono::nanoseconds timeout) {
    return stateInUse().waitForWork(timeAfter(timeout));
}
