// SPDX-License-Identifier: MIT
#include "Platform/Dispatch/NSOperationQueue.h"

#include <utility>

#include "Platform/Dispatch/WorkQueue.h"

using QRVPlatform::WorkQueue;

NSOperationQueue::NSOperationQueue()
    : work_(WorkQueue::make("operations", {.threads = QRVPlatform::mostOperationThreads,
                                           .idleTime = QRVPlatform::operationThreadIdleTime,
                                           .holdsUpForks = false})) {}

WorkQueue& WorkQueue::of(const NSOperationQueue& queue) noexcept {
    return *queue.work_;
}

NSOperationQueue::~NSOperationQueue() {
    work_->finish();
}

// Kept for the call: the operation may run, and release this queue, before the call has returned.
void NSOperationQueue::addOperation(std::function<void()> operation) {
    const std::shared_ptr<WorkQueue> queue = work_;
    queue->async(std::move(operation));
}

bool NSOperationQueue::waitUntilAllOperationsAreFinished(
    std::chrono::steady_clock::time_point deadline) {
    return work_->waitUntilIdle(deadline);
}
