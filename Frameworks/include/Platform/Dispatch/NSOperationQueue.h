// SPDX-License-Identifier: MIT
#pragma once

/// A queue of operations that somebody else adds, such as notifications.

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Export.h"

namespace QRVPlatform {

/// How many operations of one queue run at a time at most.
inline constexpr std::size_t mostOperationThreads = 64;

/// After which a thread of an operation queue ends when it has nothing to do.
inline constexpr std::chrono::seconds operationThreadIdleTime(1);

}  // namespace QRVPlatform

/// Runs operations side by side, each on one of the queue's own threads, never on the adding
/// thread. They begin in the order in which they were added. An operation waits for another one
/// only while `mostOperationThreads` are under way, or the system has no further thread; it then
/// begins when one of them ends. Threads start when they are needed.
///
/// Made with std::make_shared and shared by all that add operations. Operations may be added on any
/// thread, also from within an operation. An empty one throws std::bad_function_call where it is
/// run; an exception from an operation ends the program. Shortages and forks: see Dispatch.h.
class QRV_EXPORT NSOperationQueue {
  public:
    NSOperationQueue();
    NSOperationQueue(const NSOperationQueue&) = delete;
    NSOperationQueue& operator=(const NSOperationQueue&) = delete;
    /// Waits until what was added has run. From within an operation of its own it returns at once,
    /// and what was added runs afterwards. A queue that is never destroyed lets the process exit
    /// at any time.
    ~NSOperationQueue();

    void addOperation(std::function<void()> operation);

    /// Waits until what was added has run, at most until the deadline; true when it has. False at
    /// once from within an operation, and while the system has no thread left for the queue.
    [[nodiscard]] bool waitUntilAllOperationsAreFinished(
        std::chrono::steady_clock::time_point deadline);

  private:
    friend class QRVPlatform::WorkQueue;
    std::shared_ptr<QRVPlatform::WorkQueue> work_;
};
