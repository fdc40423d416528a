// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <memory>
#include <thread>

#include "Platform/Files/NSFilePresenter.h"
#include "Platform/Threads/Mutex.h"

namespace QRVPlatform {

/// Notifies one presenter on its queue, one notification at a time. For any threads. What adds an
/// operation may call the failure handler, and so must not be called with a lock held.
class PresenterNotifications : public std::enable_shared_from_this<PresenterNotifications> {
  public:
    PresenterNotifications(NSFilePresenter& presenter, std::shared_ptr<NSOperationQueue> queue);

    /// There will be a notification that begins after this call.
    void notify();
    /// The same, by `WorkQueue::runHere`: the calling thread may have notified the presenter, and
    /// done what follows from it, when this returns. False in a child that was forked meanwhile.
    bool notifyHere();
    /// After this no notification is under way or will come, unless it is called within one.
    void end();
    /// After `end`, when the presenter is added again within its own notification: goes on with
    /// that queue, after the notification. False when none is under way.
    bool resume(std::shared_ptr<NSOperationQueue> queue);
    /// In a forked child: those of the same presenter on the same queue.
    [[nodiscard]] std::shared_ptr<PresenterNotifications> copyForChild() const QRV_NOT_CHECKED;

    [[nodiscard]] const NSFilePresenter* presenter() const { return &presenter_; }
    /// Whether this thread notifies the presenter, and does nothing else afterwards. False when
    /// others call the same function of the presenter.
    static bool isNotifyingHere(const NSFilePresenter& presenter);

  private:
    enum class Stage { Idle, Queued, UnderWay, UnderWayAndOutdated };
    /// The queue for the next notification if none is to come yet; null otherwise.
    std::shared_ptr<NSOperationQueue> noteChange();
    void run();

    NSFilePresenter& presenter_;
    Mutex mutex_;
    std::condition_variable finished_;
    std::shared_ptr<NSOperationQueue> queue_ QRV_GUARDED_BY(mutex_);
    Stage stage_ QRV_GUARDED_BY(mutex_) = Stage::Idle;
    std::thread::id thread_ QRV_GUARDED_BY(mutex_);
    bool isEnded_ QRV_GUARDED_BY(mutex_) = false;
};

}  // namespace QRVPlatform
