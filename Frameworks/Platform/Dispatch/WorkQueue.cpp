// SPDX-License-Identifier: MIT
#include "Platform/Dispatch/WorkQueue.h"

#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>

#include "Platform/Dispatch/ProcessQueues.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Threads/Threads.h"

namespace QRVPlatform {

namespace {

using Clock = std::chrono::steady_clock;

/// The shifts whose items this thread is running, the innermost first. In a child that an item has
/// forked, the queue has another shift.
struct Running {
    const void* shift;
    Running* outer;
    bool mayHandOver;
    /// What the item has handed over, and to whom.
    std::shared_ptr<WorkQueue> nextQueue;
    WorkItem next;
};
thread_local Running* innermost = nullptr;

}  // namespace

std::shared_ptr<WorkQueue> WorkQueue::make(std::string label, const Limits& limits) {
    std::shared_ptr<WorkQueue> queue(new WorkQueue(std::move(label), limits));
    ProcessQueues::current().add(*queue);
    return queue;
}

WorkQueue::WorkQueue(std::string label, const Limits& limits)
    : label_(std::move(label)), limits_(limits) {}

WorkQueue::~WorkQueue() {
    ProcessQueues::current().remove(*this);
}

bool WorkQueue::isRunningHere() const {
    for (const Running* running = innermost; running != nullptr; running = running->outer)
        if (running->shift == shift_.get()) return true;
    return false;
}

// A thread is notified after the mutex is unlocked, everywhere here: one that wakes while it is
// locked only waits again, for the mutex.

std::uint64_t WorkQueue::add(WorkItem&& item) {
    Shift& shift = *shift_;
    std::error_code error;
    bool isNewShortage = false;
    std::uint64_t number = 0;
    {
        const LockGuard lock(shift.mutex);
        shift.items.push_back(std::move(item));
        number = ++shift.added;
        error = startThread(shift);
        isNewShortage = noteShortage(shift, error);
    }
    shift.itemsChanged.notify_one();
    if (isNewShortage) FileFailures::reported("start a thread for " + label_, {}, error);
    return number;
}

/// Starts one if there is more to do than the idle ones will do.
std::error_code WorkQueue::startThread(Shift& shift) {
    if (shift.threads >= limits_.threads || shift.idleThreads >= shift.items.size()) return {};
    try {
        std::thread([self = shared_from_this(), &shift] { self->runThread(shift); }).detach();
        ++shift.threads;
        ++shift.idleThreads;
        shift.isShortOfThreads = false;
        return {};
    } catch (const std::system_error& failure) {
        return failure.code();
    } catch (const std::bad_alloc&) {
        return make_error_code(std::errc::not_enough_memory);
    }
}

/// Whether it is one that nobody was told of.
bool WorkQueue::noteShortage(Shift& shift, std::error_code error) {
    if (!error) return false;
    ProcessQueues::noteMissingThread();
    return !std::exchange(shift.isShortOfThreads, true);
}

bool WorkQueue::startThreads() {
    Shift& shift = *shift_;
    const LockGuard lock(shift.mutex);
    std::error_code error;
    std::size_t threads = 0;
    do {
        threads = shift.threads;
        error = startThread(shift);
    } while (shift.threads > threads && shift.threads < shift.items.size());
    noteShortage(shift, error);
    return !error;
}

void WorkQueue::runThread(Shift& shift) {
    Threads::nameCurrentThread(label_);
    MutexLock lock(shift.mutex);
    while (waitForItem(shift, lock)) {
        // The only thread of a queue goes on with nothing else, because the queue needs it.
        Reserved next;
        if (!runItem(shift, lock, limits_.threads > 1 ? &next : nullptr)) return;
        if (next.queue && !goOnWith(shift, lock, std::move(next))) return;
        ++shift.idleThreads;
        notifyAwaited(shift, lock);
    }
    --shift.threads;
    lock.unlock();
    shift.itemFinished.notify_all();
    // Another one may have waited because too many items were running, not because of the end.
    shift.itemsChanged.notify_all();
}

// Not checked, like `runItem`.
/// Runs what an item has handed over. The thread is not one of this queue's meanwhile, whose end
/// does not wait for other queues. False when the thread is to end.
bool WorkQueue::goOnWith(Shift& shift, MutexLock& lock, Reserved next) {
    --shift.threads;
    // What was queued meanwhile counts on this thread. Without another one it waits until this one
    // comes back.
    const bool isMoreQueued = !shift.items.empty();
    startThread(shift);
    lock.unlock();
    shift.itemFinished.notify_all();
    if (isMoreQueued) shift.itemsChanged.notify_one();
    if (!runReserved(std::move(next))) return false;
    lock.lock();
    if (shift.threads >= limits_.threads) return false;
    ++shift.threads;
    return true;
}

/// False when the thread is to end.
bool WorkQueue::waitForItem(Shift& shift, MutexLock& lock) const {
    const auto endOfIdleTime = [this] {
        return limits_.idleTime ? Clock::now() + *limits_.idleTime : Clock::time_point::max();
    };
    auto deadline = endOfIdleTime();
    for (;;) {
        const bool mayRun = shift.running < limits_.threads;
        if (mayRun && !shift.items.empty()) break;
        if (shift.items.empty() && (shift.isEnding || Clock::now() >= deadline)) break;
        // An item waits for those that run on other threads.
        if (!shift.items.empty()) deadline = endOfIdleTime();
        if (limits_.idleTime)
            lock.waitFor(shift.itemsChanged, deadline);
        else
            lock.waitFor(shift.itemsChanged);
    }
    --shift.idleThreads;
    return !shift.items.empty();
}

// Not checked: clang does not see that `lock` holds the mutex.
/// False in a child that was forked by the item: the lock is the parent's, and is not held.
bool WorkQueue::runItem(Shift& shift, MutexLock& lock, Reserved* next) {
    WorkItem item = std::move(shift.items.front());
    shift.items.pop_front();
    ++shift.running;
    lock.unlock();
    if (!runAndDestroy(shift, std::move(item), next)) return false;
    lock.lock();
    --shift.running;
    ++shift.finished;
    return true;
}

// Not checked, like `runItem`.
/// To be called after that. A thread that becomes idle counts as idle by then, so that a caller who
/// waits for the item and then adds another one starts no further thread.
void WorkQueue::notifyAwaited(Shift& shift, MutexLock& lock) {
    if (!takeAwaited(shift)) return;
    lock.unlock();
    shift.itemFinished.notify_all();
    lock.lock();
}

/// To be called before each wait for `itemFinished`.
void WorkQueue::awaitItems(Shift& shift, std::uint64_t number) {
    shift.awaited = std::min(shift.awaited, number);
}

/// Whether `itemFinished` is to be notified. Each waiter then checks again, and calls `awaitItems`
/// before it goes on waiting.
bool WorkQueue::takeAwaited(Shift& shift) {
    if (shift.finished < shift.awaited && shift.threads > 0) return false;
    shift.awaited = Shift::nobody;
    return true;
}

// The item is destroyed here as well: what it captures may be the host's, and use the queue. What
// it has handed over is added before it counts as finished, so that a caller who waits for both
// queues, one after the other, has waited for everything.
/// `next` becomes what was handed over and is to be run by this thread; null if it must not go on
/// with anything. False in a child that was forked by the item.
bool WorkQueue::runAndDestroy(const Shift& shift, WorkItem item, Reserved* next) noexcept {
    Running running{&shift, innermost, next != nullptr, nullptr, {}};
    innermost = &running;
    item();
    item = WorkItem();
    innermost = running.outer;
    const bool isInParent = &shift == shift_.get();
    if (!running.nextQueue) return isInParent;
    if (isInParent)
        *next = reserve(std::move(running.nextQueue), std::move(running.next));
    else
        running.nextQueue->async(std::move(running.next));
    return isInParent;
}

/// An item that counts as running, if the queue has nothing to do before it; else it is added.
WorkQueue::Reserved WorkQueue::reserve(std::shared_ptr<WorkQueue> queue, WorkItem item) {
    ProcessQueues::startMissingThreads();
    Shift& shift = *queue->shift_;
    {
        const LockGuard lock(shift.mutex);
        if (shift.items.empty() && shift.running < queue->limits_.threads) {
            ++shift.added;
            ++shift.running;
            return {std::move(queue), std::move(item)};
        }
    }
    queue->add(std::move(item));
    return {};
}

/// False in a child that was forked by an item.
bool WorkQueue::runReserved(Reserved reserved) {
    while (const auto queue = std::exchange(reserved.queue, nullptr)) {
        Shift& shift = *queue->shift_;
        if (!queue->runAndDestroy(shift, std::move(reserved.item), &reserved)) return false;
        if (!queue->endReserved(shift)) return false;
    }
    return true;
}

/// False in a child, like `runReserved`.
bool WorkQueue::endReserved(Shift& shift) {
    MutexLock lock(shift.mutex);
    --shift.running;
    ++shift.finished;
    // The item has destroyed the queue, and no other thread runs what is left.
    while (shift.isEnding && shift.threads == 0 && !shift.items.empty()) {
        if (!runItem(shift, lock, nullptr)) return false;
        notifyAwaited(shift, lock);
    }
    const bool isMoreQueued = !shift.items.empty();
    const bool isAwaited = takeAwaited(shift);
    lock.unlock();
    if (isAwaited) shift.itemFinished.notify_all();
    if (isMoreQueued) shift.itemsChanged.notify_one();
    return true;
}

bool WorkQueue::runHere(WorkItem item) {
    return runReserved(reserve(shared_from_this(), std::move(item)));
}

void WorkQueue::handOver(WorkItem item) {
    if (innermost == nullptr || !innermost->mayHandOver || innermost->nextQueue) {
        async(std::move(item));
        return;
    }
    innermost->nextQueue = shared_from_this();
    innermost->next = std::move(item);
}

void WorkQueue::async(WorkItem&& item) {
    ProcessQueues::startMissingThreads();
    add(std::move(item));
}

void WorkQueue::sync(const std::function<void()>& work) {
    if (isRunningHere()) throw std::logic_error("sync on the queue's own thread: " + label_);
    ProcessQueues::startMissingThreads();
    Shift& shift = *shift_;
    std::exception_ptr failure;
    const std::uint64_t number = add([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
    });
    if (runUntil(shift, number)) shift.itemsChanged.notify_one();
    if (failure) std::rethrow_exception(failure);
}

/// Waits until the item of that number is done, and does the work of the threads while there are
/// none. False in a child that was forked by an item.
bool WorkQueue::runUntil(Shift& shift, std::uint64_t number) {
    MutexLock lock(shift.mutex);
    const auto isOver = [&]() QRV_REQUIRES(shift.mutex) {
        const bool wasDestroyed = shift.isEnding && shift.threads == 0;
        return shift.finished >= number && (!wasDestroyed || shift.items.empty());
    };
    while (!isOver()) {
        if (shift.threads == 0 && shift.running == 0) {
            if (!runItem(shift, lock, nullptr)) return false;
            notifyAwaited(shift, lock);
            continue;
        }
        awaitItems(shift, shift.finished < number ? number : 0);
        lock.waitFor(shift.itemFinished);
    }
    return true;
}

void WorkQueue::finish() {
    Shift& shift = *shift_;
    {
        const LockGuard lock(shift.mutex);
        shift.isEnding = true;
    }
    shift.itemsChanged.notify_all();
    if (isRunningHere()) return;
    MutexLock lock(shift.mutex);
    while (shift.threads > 0 || shift.running > 0 || !shift.items.empty()) {
        if (shift.threads == 0 && shift.running == 0) {
            if (!runItem(shift, lock, nullptr)) return;
            notifyAwaited(shift, lock);
            continue;
        }
        awaitItems(shift, 0);
        lock.waitFor(shift.itemFinished);
    }
}

void WorkQueue::lock() {
    shift_->mutex.lock();
}

void WorkQueue::unlock() {
    shift_->mutex.unlock();
}

void WorkQueue::startInChild() {
    Shift* const ofParent = shift_.release();
    shift_ = std::make_unique<Shift>();
    shift_->ofParent = ofParent;
}

bool WorkQueue::waitUntilIdle(Clock::time_point deadline) {
    if (isRunningHere()) return false;
    Shift& shift = *shift_;
    MutexLock lock(shift.mutex);
    while (shift.running > 0 || !shift.items.empty()) {
        const bool isStuck = shift.threads == 0 && shift.running == 0;
        if (isStuck || Clock::now() >= deadline) return false;
        awaitItems(shift, 0);
        lock.waitFor(shift.itemFinished, deadline);
    }
    return true;
}

}  // namespace QRVPlatform
