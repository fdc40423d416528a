// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <memory>
#include <thread>

#include "Platform/Files/NSFilePresenter.h"
#include "Platform/Threads/Mutex.h"

namespace QRVPlatform {

/// Notifies one presenter on its queue, one notification at a time. For any threads.
class PresenterNotifications : public std::enable_shared_from_this<PresenterNotifications> {
  public:
    PresenterNotifications(NSFilePresenter& presenter, std::shared_ptr<NSOperationQueue> queue);

    /// There will be a notification that begins after this call.
    void notify();
    /// After this no notification is under way or will come, unless it is called within one.
    void end();

    [[nodiscard]] const NSFilePresenter* presenter() const { return &presenter_; }

  private:
    enum class Stage { Idle, Queued, UnderWay, UnderWayAndOutdated };
    void queueOne() QRV_REQUIRES(mutex_);
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
