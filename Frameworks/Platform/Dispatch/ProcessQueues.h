// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <set>
#include <vector>

#include "Platform/Threads/Mutex.h"

namespace QRVPlatform {

class WorkQueue;

/// All queues of this process: what a fork and a lack of threads mean to them.
class ProcessQueues {
  public:
    static ProcessQueues& current();

    void add(WorkQueue& queue);
    void remove(WorkQueue& queue);

    /// @name Threads that the system did not give
    /// They are tried again at each use of a queue, the main queue included.
    /// @{
    static void noteMissingThread();
    /// To be called at each use of a queue, with no lock held.
    static void startMissingThreads();
    /// Whether one was missing when last tried: a wait for queued work might not end.
    static bool isThreadMissing();
    /// What also starts a thread when one is missing; returns whether none is missing afterwards.
    /// Never removed.
    void addStart(bool (*start)());
    /// Whether a forked child misses a thread from its start on. False at the start.
    static void setMustStartInChild(bool mustStart);
    static bool mustStartInChild();
    /// @}

    /// @name For PerProcess
    /// @{
    ProcessQueues();
    explicit ProcessQueues(ProcessQueues& parent) QRV_REQUIRES(parent.mutex_);
    void lock() QRV_NOT_CHECKED;
    void unlock() QRV_NOT_CHECKED;
    /// @}

  private:
    static void finishWorkBeforeFork();
    void startThreads();
    std::vector<std::shared_ptr<WorkQueue>> queuesThatAForkWaitsFor();

    Mutex mutex_;
    std::set<WorkQueue*> queues_ QRV_GUARDED_BY(mutex_);
    std::vector<bool (*)()> starts_ QRV_GUARDED_BY(mutex_);
};

}  // namespace QRVPlatform
