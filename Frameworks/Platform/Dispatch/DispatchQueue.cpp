// SPDX-License-Identifier: MIT
// The serial queue of Dispatch.h.

#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Dispatch/WorkQueue.h"

using QRVPlatform::WorkQueue;

DispatchQueue::DispatchQueue(std::string label, AtFork atFork)
    : work_(WorkQueue::make(
          std::move(label),
          {.threads = 1, .idleTime = {}, .holdsUpForks = atFork == AtFork::FinishWork})) {}

DispatchQueue::~DispatchQueue() {
    work_->finish();
}

WorkQueue& WorkQueue::of(const DispatchQueue& queue) noexcept {
    return *queue.work_;
}

// Kept for the call, here and below: the work may run, and destroy this queue, before the call has
// returned.
void DispatchQueue::async(std::function<void()> work) {
    const std::shared_ptr<WorkQueue> queue = work_;
    queue->async(std::move(work));
}

void DispatchQueue::sync(const std::function<void()>& work) {
    const std::shared_ptr<WorkQueue> queue = work_;
    queue->sync(work);
}

const std::string& DispatchQueue::label() const noexcept {
    return work_->label();
}
