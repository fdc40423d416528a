// SPDX-License-Identifier: MIT
#include "Platform/Presenters/PresenterNotifications.h"

#include <utility>

#include "Platform/Dispatch/WorkQueue.h"

namespace QRVPlatform {

namespace {
thread_local const NSFilePresenter* notifiedHere = nullptr;
}  // namespace

PresenterNotifications::PresenterNotifications(NSFilePresenter& presenter,
                                               std::shared_ptr<NSOperationQueue> queue)
    : presenter_(presenter), queue_(std::move(queue)) {}

void PresenterNotifications::notify() {
    if (const auto queue = noteChange())
        queue->addOperation([self = shared_from_this()] { self->run(); });
}

bool PresenterNotifications::notifyHere() {
    const auto queue = noteChange();
    return !queue || WorkQueue::of(*queue).runHere([self = shared_from_this()] { self->run(); });
}

std::shared_ptr<NSOperationQueue> PresenterNotifications::noteChange() {
    const LockGuard lock(mutex_);
    if (isEnded_) return nullptr;
    if (stage_ == Stage::UnderWay) stage_ = Stage::UnderWayAndOutdated;
    if (stage_ != Stage::Idle) return nullptr;
    stage_ = Stage::Queued;
    return queue_;
}

void PresenterNotifications::run() {
    MutexLock lock(mutex_);
    if (isEnded_) return;
    stage_ = Stage::UnderWay;
    thread_ = std::this_thread::get_id();
    lock.unlock();
    const NSFilePresenter* const outer = std::exchange(notifiedHere, &presenter_);
    presenter_.presentedItemDidChange();
    notifiedHere = outer;
    lock.lock();
    thread_ = {};
    const bool isOutdated = std::exchange(stage_, Stage::Idle) == Stage::UnderWayAndOutdated;
    if (isEnded_) finished_.notify_all();
    lock.unlock();
    if (isOutdated) notify();
}

bool PresenterNotifications::isNotifyingHere(const NSFilePresenter& presenter) {
    return notifiedHere == &presenter;
}

void PresenterNotifications::end() {
    std::shared_ptr<NSOperationQueue> released;
    MutexLock lock(mutex_);
    isEnded_ = true;
    released.swap(queue_);
    if (thread_ == std::this_thread::get_id()) return;
    while (thread_ != std::thread::id()) lock.waitFor(finished_);
}

bool PresenterNotifications::resume(std::shared_ptr<NSOperationQueue> queue) {
    const LockGuard lock(mutex_);
    if (thread_ == std::thread::id()) return false;
    isEnded_ = false;
    stage_ = Stage::UnderWay;
    queue_ = std::move(queue);
    return true;
}

// Nobody changes the queue at the time of a fork: that is done only after the removal from the
// presenters of the process, or before the entry there.
std::shared_ptr<PresenterNotifications> PresenterNotifications::copyForChild() const {
    return std::make_shared<PresenterNotifications>(presenter_, queue_);
}

}  // namespace QRVPlatform
