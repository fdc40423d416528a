// SPDX-License-Identifier: MIT
#pragma once

/// A queue of operations that somebody else adds, such as notifications.

#include <functional>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Export.h"

/// Runs operations one at a time, in the order in which they were added, on a thread of its own,
/// never on the adding thread. The thread starts with the first operation. Made with
/// std::make_shared and shared by all that add operations.
///
/// Operations may be added on any thread, also from within an operation. An empty one throws
/// std::bad_function_call where it is run; an exception from an operation ends the program. A
/// forked child has no such thread: it must not use the queues that it inherited.
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

  private:
    DispatchQueue queue_;
};
