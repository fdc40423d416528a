// SPDX-License-Identifier: MIT
#include "Platform/Dispatch/NSOperationQueue.h"

#include <utility>

NSOperationQueue::NSOperationQueue() : queue_("operations") {}

NSOperationQueue::~NSOperationQueue() = default;

void NSOperationQueue::addOperation(std::function<void()> operation) {
    queue_.async(std::move(operation));
}
