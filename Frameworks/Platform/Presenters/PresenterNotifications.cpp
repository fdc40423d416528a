// SPDX-License-Identifier: MIT
#include "Platform/Presenters/PresenterNotifications.h"

#include <utility>

namespace QRVPlatform {

PresenterNotifications::PresenterNotifications(NSFilePresenter& presenter,
                                               std::shared_ptr<NSOperationQueue> queue)
    : presenter_(presenter), queue_(std::move(queue)) {}

void PresenterNotifications::notify() {
    const LockGuard lock(mutex_);
    if (isEnded_) return;
    if (stage_ == Stage::Idle) queueOne();
    if (stage_ == Stage::UnderWay) stage_ = Stage::UnderWayAndOutdated;
}

void PresenterNotifications::queueOne() {
    stage_ = Stage::Queued;
    queue_->addOperation([self = shared_from_this()] { self->run(); });
}

void PresenterNotifications::run() {
    MutexLock lock(mutex_);
    if (isEnded_) return;
    stage_ = Stage::UnderWay;
    thread_ = std::this_thread::get_id();
    lock.unlock();
    presenter_.presentedItemDidChange();
    lock.lock();
    thread_ = {};
    const bool isOutdated = std::exchange(stage_, Stage::Idle) == Stage::UnderWayAndOutdated;
    if (isEnded_)
        finished_.notify_all();
    else if (isOutdated)
        queueOne();
}

void PresenterNotifications::end() {
    std::shared_ptr<NSOperationQueue> released;
    MutexLock lock(mutex_);
    isEnded_ = true;
    released.swap(queue_);
    if (thread_ == std::this_thread::get_id()) return;
    while (thread_ != std::thread::id()) lock.waitFor(finished_);
}

}  // namespace QRVPlatform
