// SPDX-License-Identifier: MIT
// The serial queue of Dispatch.h.

#include <deque>
#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Threads/Mutex.h"
#include "Platform/Threads/Threads.h"

using namespace QRVPlatform;

/// Kept alive by its thread, which may outlive the queue.
struct DispatchQueue::Implementation : std::enable_shared_from_this<DispatchQueue::Implementation> {
    explicit Implementation(std::string ownLabel) : label(std::move(ownLabel)) {}

    void add(std::function<void()> item);
    void runItems();
    bool isOwnThread();
    void endThread() QRV_NOT_CHECKED;

    const std::string label;
    Mutex mutex;
    std::condition_variable itemsChanged;
    std::condition_variable itemFinished;
    std::deque<std::function<void()>> items QRV_GUARDED_BY(mutex);
    std::thread thread QRV_GUARDED_BY(mutex);
    bool isEnding QRV_GUARDED_BY(mutex) = false;
};

// A thread is notified after the mutex is unlocked, everywhere here: one that wakes while it is
// locked only waits again, for the mutex.

void DispatchQueue::Implementation::add(std::function<void()> item) {
    {
        const LockGuard lock(mutex);
        if (!thread.joinable())
            thread = std::thread([self = shared_from_this()] { self->runItems(); });
        items.push_back(std::move(item));
    }
    itemsChanged.notify_one();
}

void DispatchQueue::Implementation::runItems() {
    Threads::nameCurrentThread(label);
    MutexLock lock(mutex);
    for (;;) {
        while (!isEnding && items.empty()) lock.waitFor(itemsChanged);
        if (items.empty()) return;
        {
            const std::function<void()> item = std::move(items.front());
            items.pop_front();
            lock.unlock();
            item();
        }
        lock.lock();
    }
}

bool DispatchQueue::Implementation::isOwnThread() {
    const LockGuard lock(mutex);
    return thread.get_id() == std::this_thread::get_id();
}

// Not checked: joins without the mutex, when nobody can start another thread any more.
void DispatchQueue::Implementation::endThread() {
    {
        const LockGuard lock(mutex);
        isEnding = true;
    }
    itemsChanged.notify_one();
    if (isOwnThread())
        thread.detach();
    else if (thread.joinable())
        thread.join();
}

DispatchQueue::DispatchQueue(std::string label)
    : implementation_(std::make_shared<Implementation>(std::move(label))) {}

DispatchQueue::~DispatchQueue() {
    implementation_->endThread();
}

// Kept for the call: the work may run, and destroy this queue, before the call has returned.
void DispatchQueue::async(std::function<void()> work) {
    const std::shared_ptr<Implementation> queue = implementation_;
    queue->add(std::move(work));
}

void DispatchQueue::sync(const std::function<void()>& work) {
    Implementation& queue = *implementation_;
    if (queue.isOwnThread())
        throw std::logic_error("sync on the queue's own thread: " + queue.label);
    bool isFinished = false;
    std::exception_ptr failure;
    queue.add([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        {
            const LockGuard lock(queue.mutex);
            isFinished = true;
        }
        queue.itemFinished.notify_all();
    });
    MutexLock lock(queue.mutex);
    while (!isFinished) lock.waitFor(queue.itemFinished);
    lock.unlock();
    if (failure) std::rethrow_exception(failure);
}

const std::string& DispatchQueue::label() const noexcept {
    return implementation_->label;
}
