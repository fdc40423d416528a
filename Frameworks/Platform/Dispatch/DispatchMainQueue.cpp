// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/MainQueueSignal.h"
#include "Platform/Threads/Mutex.h"
#include "Platform/Threads/Threads.h"

using namespace QRVPlatform;

namespace {

using Clock = std::chrono::steady_clock;

/// The far end of the clock when there is nothing nearer.
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
    /// The state of a forked child.
    explicit State(State& parent) QRV_REQUIRES(parent.mutex);

    void add(std::function<void()> work);
    void addTimer(Clock::time_point time, std::function<void()> work);
    void admit(std::function<void()> work) QRV_REQUIRES(mutex);
    std::uint64_t admitDueTimers();
    std::optional<std::function<void()>> takeItemBefore(std::uint64_t number);
    [[nodiscard]] std::optional<Clock::time_point> nextTime() const QRV_REQUIRES(mutex);
    [[nodiscard]] bool hasWorkAt(Clock::time_point time) const QRV_REQUIRES(mutex);
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
    MainQueueSignal signal;
    /// In a child: what the parent had pending. Kept, not destroyed: destroying it could act on
    /// what belongs to the parent.
    State* inherited = nullptr;
};

void DispatchMainQueue::State::add(std::function<void()> work) {
    {
        const LockGuard lock(mutex);
        admit(std::move(work));
    }
    // Without the mutex, which the main thread would wake only to wait for.
    changed.notify_all();
}

void DispatchMainQueue::State::admit(std::function<void()> work) {
    items.push_back({nextNumber, std::move(work)});
    ++nextNumber;
    signal.setReady(true);
}

void DispatchMainQueue::State::addTimer(Clock::time_point time, std::function<void()> work) {
    const LockGuard lock(mutex);
    timers.emplace(time, std::move(work));
    signal.setTime(nextTime());
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

void DispatchMainQueue::State::requestStop() {
    const LockGuard lock(mutex);
    isStopRequested = true;
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

/// False when it was a stop, which then counts as done.
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

// Numbers go on, so that a drain that is under way across the fork keeps its end.
DispatchMainQueue::State::State(State& parent)
    : nextNumber(parent.nextNumber), signal(std::move(parent.signal)), inherited(&parent) {
    signal.startAnewInChild();
}

DispatchMainQueue::DispatchMainQueue() : state_(new State) {
    Threads::observeForks([]() QRV_NOT_CHECKED { shared().state_->mutex.lock(); },
                          []() QRV_NOT_CHECKED { shared().state_->mutex.unlock(); },
                          startAnewInChild);
}

DispatchMainQueue& DispatchMainQueue::shared() {
    static DispatchMainQueue& queue = *new DispatchMainQueue;
    return queue;
}

void DispatchMainQueue::startAnewInChild() QRV_NOT_CHECKED {
    shared().state_ = new State(*shared().state_);
}

void DispatchMainQueue::async(std::function<void()> work) {
    state_->add(std::move(work));
}

void DispatchMainQueue::asyncAfter(std::chrono::nanoseconds delay, std::function<void()> work) {
    state_->addTimer(timeAfter(delay), std::move(work));
}

int DispatchMainQueue::fd() const {
    return state_->signal.fd();
}

// The state is asked for anew at every step: an item may fork and return in the child too.
std::size_t DispatchMainQueue::drain() {
    const std::uint64_t end = state_->admitDueTimers();
    std::size_t count = 0;
    while (const auto work = state_->takeItemBefore(end)) {
        ++count;
        (*work)();
    }
    return count;
}

void DispatchMainQueue::run() {
    while (state_->waitForWorkOrStop()) drain();
}

void DispatchMainQueue::stop() {
    state_->requestStop();
}

bool DispatchMainQueue::wait(std::chrono::nanoseconds timeout) {
    return state_->waitForWork(timeAfter(timeout));
}
