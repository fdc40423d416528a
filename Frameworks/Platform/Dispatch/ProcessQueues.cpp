// SPDX-License-Identifier: MIT
#include "Platform/Dispatch/ProcessQueues.h"

#include <atomic>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/WorkQueue.h"
#include "Platform/Threads/PerProcess.h"
#include "Platform/Threads/Threads.h"

namespace QRVPlatform {

namespace {
std::atomic<bool> isAnyThreadMissing = false;
std::atomic<bool> isMissingInChild = false;
}  // namespace

ProcessQueues& ProcessQueues::current() {
    return PerProcess<ProcessQueues>::current();
}

ProcessQueues::ProcessQueues() {
    Threads::prepareForks(finishWorkBeforeFork);
}

ProcessQueues::ProcessQueues(ProcessQueues& parent)
    : queues_(parent.queues_), starts_(parent.starts_) {
    for (WorkQueue* const queue : queues_) queue->startInChild();
    if (mustStartInChild()) noteMissingThread();
}

void ProcessQueues::lock() {
    mutex_.lock();
    for (WorkQueue* const queue : queues_) queue->lock();
}

void ProcessQueues::unlock() {
    for (WorkQueue* const queue : queues_) queue->unlock();
    mutex_.unlock();
}

void ProcessQueues::add(WorkQueue& queue) {
    const LockGuard lock(mutex_);
    queues_.insert(&queue);
}

void ProcessQueues::remove(WorkQueue& queue) {
    const LockGuard lock(mutex_);
    queues_.erase(&queue);
}

void ProcessQueues::addStart(bool (*start)()) {
    const LockGuard lock(mutex_);
    starts_.push_back(start);
}

void ProcessQueues::noteMissingThread() {
    isAnyThreadMissing = true;
}

void ProcessQueues::setMustStartInChild(bool mustStart) {
    isMissingInChild = mustStart;
}

bool ProcessQueues::mustStartInChild() {
    return isMissingInChild;
}

void ProcessQueues::startMissingThreads() {
    if (!isAnyThreadMissing.load(std::memory_order_relaxed)) return;
    if (isAnyThreadMissing.exchange(false)) current().startThreads();
}

bool ProcessQueues::isThreadMissing() {
    return isAnyThreadMissing;
}

void ProcessQueues::startThreads() {
    const LockGuard lock(mutex_);
    bool isComplete = true;
    for (WorkQueue* const queue : queues_) isComplete = queue->startThreads() && isComplete;
    for (bool (*const start)() : starts_) isComplete = start() && isComplete;
    if (!isComplete) noteMissingThread();
}

std::vector<std::shared_ptr<WorkQueue>> ProcessQueues::queuesThatAForkWaitsFor() {
    std::vector<std::shared_ptr<WorkQueue>> queues;
    const LockGuard lock(mutex_);
    for (WorkQueue* const queue : queues_) {
        if (!queue->limits().holdsUpForks) continue;
        // Null for one that is being destroyed.
        if (auto shared = queue->weak_from_this().lock()) queues.push_back(std::move(shared));
    }
    return queues;
}

void ProcessQueues::finishWorkBeforeFork() {
    const auto deadline = std::chrono::steady_clock::now() + forkTimeout;
    for (const auto& queue : current().queuesThatAForkWaitsFor()) {
        queue->startThreads();
        queue->waitUntilIdle(deadline);
    }
}

}  // namespace QRVPlatform
