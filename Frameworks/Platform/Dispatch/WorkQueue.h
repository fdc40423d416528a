// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "Platform/Dispatch/WorkItem.h"
#include "Platform/Threads/Mutex.h"

class DispatchQueue;
class NSOperationQueue;

namespace QRVPlatform {

/// Runs items in the order in which they are added, on as many threads as `Limits` allows. Kept
/// alive by its threads. For any threads.
///
/// Where the system gives no thread, items stay queued, the failure handler is called once, and the
/// start is tried again at each use of any queue. A forked child has the queue without items and
/// without threads.
///
/// To wake a thread takes longer than most items run. So an item that the queue could begin at once
/// may run on the thread that adds it (`runHere`, `handOver`). Otherwise it is an item like any
/// other: the order, the number at a time, `sync`, `waitUntilIdle`, `finish` and forks hold.
class WorkQueue : public std::enable_shared_from_this<WorkQueue> {
  public:
    struct Limits {
        std::size_t threads;
        /// After which a thread without work ends; empty for never.
        std::optional<std::chrono::steady_clock::duration> idleTime;
        /// A fork waits until the work is done, at most `forkTimeout`.
        bool holdsUpForks;
    };

    static std::shared_ptr<WorkQueue> make(std::string label, const Limits& limits);
    /// The one behind `queue`, which must outlive the use.
    static WorkQueue& of(const DispatchQueue& queue) noexcept;
    static WorkQueue& of(const NSOperationQueue& queue) noexcept;
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;
    ~WorkQueue();

    /// An exception from an item ends the program.
    void async(WorkItem&& item);
    /// Like `async`, for a thread that runs no item and may be blocked as long as this one runs: it
    /// runs it itself if the queue has nothing to do before. The same goes for what the item hands
    /// over. False in a child that was forked by an item: there the thread has to end.
    bool runHere(WorkItem item);
    /// Like `async`, to be called last by an item of another queue. When that item ends, this one
    /// is added, and the thread goes on with it if this queue has nothing to do before and the
    /// other queue does not need the thread.
    void handOver(WorkItem item);
    /// For a queue of one thread. Without a thread, runs on the calling one whatever is queued up
    /// to `work`. Throws what `work` throws, and std::logic_error from within an item.
    void sync(const std::function<void()>& work);
    /// Runs what is queued and ends the threads. From within an item it returns at once, and what
    /// is queued runs afterwards.
    void finish();

    [[nodiscard]] const std::string& label() const noexcept { return label_; }
    [[nodiscard]] const Limits& limits() const noexcept { return limits_; }

    /// Whether everything that was added has run before the deadline. Gives up at once when there
    /// is no thread for it, and within an item.
    bool waitUntilIdle(std::chrono::steady_clock::time_point deadline);

    /// @name For ProcessQueues
    /// @{
    void lock() QRV_NOT_CHECKED;
    void unlock() QRV_NOT_CHECKED;
    void startInChild();
    /// Whether all threads that are needed are there afterwards.
    bool startThreads();
    /// @}

  private:
    /// What the queue is in one process. A forked child leaves its parent's as it is: no thread
    /// there could end a wait or release a lock.
    struct Shift {
        static constexpr std::uint64_t nobody = std::numeric_limits<std::uint64_t>::max();
        Shift* ofParent = nullptr;  ///< never destroyed, and not used: nothing leaks
        Mutex mutex;
        std::condition_variable itemsChanged;
        std::condition_variable itemFinished;
        std::deque<WorkItem> items QRV_GUARDED_BY(mutex);
        std::uint64_t added QRV_GUARDED_BY(mutex) = 0;
        std::uint64_t finished QRV_GUARDED_BY(mutex) = 0;
        /// `itemFinished` is not notified before so many have finished, unless no thread is left.
        std::uint64_t awaited QRV_GUARDED_BY(mutex) = nobody;
        std::size_t threads QRV_GUARDED_BY(mutex) = 0;
        std::size_t idleThreads QRV_GUARDED_BY(mutex) = 0;
        std::size_t running QRV_GUARDED_BY(mutex) = 0;
        bool isShortOfThreads QRV_GUARDED_BY(mutex) = false;
        bool isEnding QRV_GUARDED_BY(mutex) = false;
    };

    /// An item that counts as running; none if the queue is null.
    struct Reserved {
        std::shared_ptr<WorkQueue> queue;
        WorkItem item;
    };

    WorkQueue(std::string label, const Limits& limits);
    std::uint64_t add(WorkItem&& item);
    std::error_code startThread(Shift& shift) QRV_REQUIRES(shift.mutex);
    bool noteShortage(Shift& shift, std::error_code error) QRV_REQUIRES(shift.mutex);
    void runThread(Shift& shift);
    bool goOnWith(Shift& shift, MutexLock& lock, Reserved next)
        QRV_REQUIRES(shift.mutex) QRV_NOT_CHECKED;
    bool waitForItem(Shift& shift, MutexLock& lock) const QRV_REQUIRES(shift.mutex);
    bool runItem(Shift& shift, MutexLock& lock, Reserved* next)
        QRV_REQUIRES(shift.mutex) QRV_NOT_CHECKED;
    void notifyAwaited(Shift& shift, MutexLock& lock) QRV_REQUIRES(shift.mutex) QRV_NOT_CHECKED;
    bool runAndDestroy(const Shift& shift, WorkItem item, Reserved* next) noexcept;
    static Reserved reserve(std::shared_ptr<WorkQueue> queue, WorkItem item);
    static bool runReserved(Reserved reserved);
    bool endReserved(Shift& shift);
    bool runUntil(Shift& shift, std::uint64_t number);
    static void awaitItems(Shift& shift, std::uint64_t number) QRV_REQUIRES(shift.mutex);
    static bool takeAwaited(Shift& shift) QRV_REQUIRES(shift.mutex);
    [[nodiscard]] bool isRunningHere() const;

    const std::string label_;
    const Limits limits_;
    std::unique_ptr<Shift> shift_ = std::make_unique<Shift>();
};

}  // namespace QRVPlatform
