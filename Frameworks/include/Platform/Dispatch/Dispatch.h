// SPDX-License-Identifier: MIT
#pragma once

/// Serial queues and the main queue.
///
/// Work is any `std::function<void()>`; an empty one throws std::bad_function_call where it is run.
/// Queues do not swallow exceptions: each function says what happens to one from a work item.
///
/// Make queues that live as long as the process with `new`, and never destroy them: then a process
/// may exit while they are at work.
///
/// Shortages: no function fails because the system has no thread or descriptor left. What needs one
/// waits, and the failure handler of `QRVPlatform::setFileFailureHandler` is called once, with
/// an empty path. The next use of any queue, the main queue included, tries again.
///
/// Forks: a forked child has the same queues, without the work that its parent had queued. That
/// work runs in the parent only. The queues start threads of their own at their first use in the
/// child. When an item of a queue forks and returns in the child, its thread ends there. A child
/// that is made without the fork handlers (vfork, clone) must not use any queue.

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Export.h"

namespace QRVPlatform {

class WorkQueue;

/// How long a fork waits at most, for all queues together.
inline constexpr std::chrono::seconds forkTimeout(2);

}  // namespace QRVPlatform

/// Runs work in the order in which it was added, one item at a time, on a thread of its own. The
/// thread starts with the first item and is named after the label's last dotted component.
///
/// Every function but the destructor may be called on any thread.
class QRV_EXPORT DispatchQueue {
  public:
    /// What a fork does about work that is queued or under way. FinishWork: it waits until that is
    /// done, at most `forkTimeout`, so that a parent that ends right after the fork loses nothing.
    /// It does not wait when an item of the queue itself forks.
    enum class AtFork { LeaveWork, FinishWork };

    explicit DispatchQueue(std::string label, AtFork atFork = AtFork::LeaveWork);
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;
    /// Runs what is queued, then ends the thread. On the queue's own thread it returns at once, and
    /// what is queued runs afterwards.
    ~DispatchQueue();

    /// An exception from `work` ends the program (std::terminate).
    void async(std::function<void()> work);
    /// Runs `work` on the queue's thread and returns when it is done: everything queued before has
    /// run by then. An exception from `work` is thrown here. On the queue's own thread, which
    /// would be a deadlock, it throws std::logic_error and runs nothing.
    ///
    /// While the system has no thread left, the calling thread runs everything queued before, and
    /// `work`.
    void sync(const std::function<void()>& work);

    [[nodiscard]] const std::string& label() const noexcept;

  private:
    friend class QRVPlatform::WorkQueue;
    std::shared_ptr<QRVPlatform::WorkQueue> work_;
};

/// The queue whose work runs on the host's main thread: the one thread that calls `drain()`,
/// `run()` and `wait()`. Every other function may be called on any thread.
///
/// In a host with a loop of its own: watch `fd()` for reading and call `drain()` when it is
/// readable. In a program without one: `run()`, or `wait()` and `drain()` in turn.
///
/// In a forked child `fd()` is the same number but another descriptor, so that neither process can
/// disturb the other. A loop that has the parent's in a set of the kernel (epoll) must add it
/// again.
class QRV_EXPORT DispatchMainQueue {
  public:
    /// The one main queue; it is never destroyed.
    static DispatchMainQueue& shared();

    DispatchMainQueue(const DispatchMainQueue&) = delete;
    DispatchMainQueue& operator=(const DispatchMainQueue&) = delete;

    /// Runs `work` at the next drain, behind what is queued already.
    void async(std::function<void()> work);
    /// Runs `work` at the first drain after `delay` (at the next one when it is 0 or less). Timers
    /// that are due run in the order of their due times, equal ones in the order added, behind the
    /// work queued by then. A timer never holds `fd()` or `wait()` awake before it is due.
    void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> work);

    /// One descriptor for select, poll or epoll, level-triggered and close-on-exec: readable
    /// exactly while there is work queued or a timer due. In a forked child whose presenters are
    /// not watched yet it is also readable until the first drain. It cannot be read, must not be
    /// closed, and stays the same as long as the process lives.
    ///
    /// Opened at the first call. -1 when the system has no descriptors left, also in a forked
    /// child; each call then tries again.
    [[nodiscard]] int fd() const;

    /// Runs the work that is queued at entry and the timers that are due, and returns the number of
    /// items that this call ran. Work added meanwhile waits for the next drain.
    ///
    /// An item may call `drain()` again: the inner call runs what is queued at that moment, the
    /// outer one goes on with what is left. Order is kept and nothing runs twice. An exception from
    /// an item is thrown here; the items behind it stay queued.
    std::size_t drain();

    /// Drains whenever there is work, until `stop()`; returns after the drain that is under way. An
    /// exception from an item is thrown here.
    void run();
    /// Ends one `run()`, from an item or from any thread: the one under way (the inner one when
    /// they are nested), else the next, which then returns at once. Several calls before that count
    /// as one. Not for signal handlers.
    void stop();
    /// Waits until there is work or a timer is due, at most `timeout`; true when there is, to be
    /// followed by `drain()`. Does not run anything. A timeout of 0 or less returns at once.
    [[nodiscard]] bool wait(std::chrono::nanoseconds timeout);

  private:
    struct QRV_HIDDEN State;
    QRV_HIDDEN DispatchMainQueue();
    ~DispatchMainQueue() = default;
    QRV_HIDDEN static State& state();
    QRV_HIDDEN static State& stateInUse();
};
