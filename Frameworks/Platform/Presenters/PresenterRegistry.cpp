// SPDX-License-Identifier: MIT
#include "Platform/Presenters/PresenterRegistry.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Dispatch/ProcessQueues.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Presenters/ChangeDetector.h"
#include "Platform/Presenters/FolderWatch.h"
#include "Platform/Threads/Mutex.h"
#include "Platform/Threads/PerProcess.h"
#include "Platform/Threads/Threads.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform {

namespace {

using Clock = std::chrono::steady_clock;

std::string absolutePath(const std::string& path) {
    if (path.empty()) throw NSInvalidArgumentException("a file presenter needs a path");
    return std::filesystem::absolute(path).string();
}

std::shared_ptr<NSOperationQueue> queueOf(const NSFilePresenter& presenter) {
    auto queue = presenter.presentedItemOperationQueue();
    if (!queue) throw NSInvalidArgumentException("a file presenter needs a queue");
    return queue;
}

/// What is found out under the lock, and sent when it is released: sending calls code of others.
class Outbox {
  public:
    void collect(ChangeDetector& detector) {
        if (detector.takeNews()) news_.push_back(detector.notifications());
        if (const auto error = detector.takeShortage())
            shortages_.push_back({"watch file", detector.path(), error});
    }
    [[nodiscard]] bool hasNews() const { return !news_.empty(); }
    void send() {
        for (const auto& notifications : news_) notifications->notify();
        report();
    }
    /// The same, on this thread as far as possible. False in a child that was forked meanwhile.
    bool sendHere() {
        report();
        for (const auto& notifications : news_)
            if (!notifications->notifyHere()) return false;
        return true;
    }

  private:
    void report() const {
        for (const FileFailure& shortage : shortages_)
            FileFailures::reported(shortage.operation, shortage.path, shortage.error);
    }

    std::vector<std::shared_ptr<PresenterNotifications>> news_;
    std::vector<FileFailure> shortages_;
};

/// The presenters with the files that they present, and the thread that watches those files as long
/// as the process runs.
///
/// The lock is never held while code of a presenter or of the failure handler runs, or while
/// somebody waits for the lock of a file. It is held while a file is put in place, so that the
/// event of that is handled when it is known whose it is.
class WatchedFiles {
  public:
    WatchedFiles() { ProcessQueues::current().addStart(startThreadOfThisProcess); }
    /// A forked child has the same presenters, and starts a thread for them at the next use of a
    /// queue. The parent's detectors are not ended, which could act on what is the parent's; only
    /// their descriptors are closed.
    explicit WatchedFiles(WatchedFiles& parent) QRV_REQUIRES(parent.mutex_);
    void lock() QRV_ACQUIRES(mutex_) { mutex_.lock(); }
    void unlock() QRV_RELEASES(mutex_) { mutex_.unlock(); }

    bool has(const NSFilePresenter& presenter);
    void add(NSFilePresenter& presenter, std::string path, std::shared_ptr<NSOperationQueue> queue);
    /// Null when it is not there.
    std::shared_ptr<PresenterNotifications> remove(const NSFilePresenter& presenter);
    std::error_code replaceFor(const NSFilePresenter* performer, const std::string& newFile,
                               const std::function<std::error_code()>& putInPlace);

  private:
    using Detectors = std::vector<std::unique_ptr<ChangeDetector>>;
    Detectors::iterator find(const NSFilePresenter* presenter) QRV_REQUIRES(mutex_);
    std::shared_ptr<PresenterNotifications> notificationsFor(
        NSFilePresenter& presenter, std::shared_ptr<NSOperationQueue> queue) QRV_REQUIRES(mutex_);
    static bool startThreadOfThisProcess();
    std::error_code startThread();
    void watch();
    std::optional<Clock::time_point> settleAll(Outbox& outbox) QRV_REQUIRES(mutex_);

    Mutex mutex_;
    FolderWatch folders_ QRV_GUARDED_BY(mutex_);
    Detectors detectors_ QRV_GUARDED_BY(mutex_);
    /// Of presenters that were removed, perhaps within a notification that is still under way.
    std::vector<std::weak_ptr<PresenterNotifications>> removed_ QRV_GUARDED_BY(mutex_);
    /// Some thread watches, or is about to.
    std::atomic<bool> hasThread_ = false;
    std::atomic<bool> isShortOfThreads_ = false;
};

WatchedFiles::WatchedFiles(WatchedFiles& parent) {
    parent.folders_.closeInChild();
    for (const auto& detector : parent.detectors_) detectors_.push_back(detector->moveToChild());
}

WatchedFiles& ofThisProcess() {
    return PerProcess<WatchedFiles>::current();
}

WatchedFiles::Detectors::iterator WatchedFiles::find(const NSFilePresenter* presenter) {
    return std::find_if(detectors_.begin(), detectors_.end(), [&](const auto& entry) {
        return entry->notifications()->presenter() == presenter;
    });
}

bool WatchedFiles::has(const NSFilePresenter& presenter) {
    const LockGuard lock(mutex_);
    return find(&presenter) != detectors_.end();
}

/// A presenter that is added again within its own notification keeps what notifies it, so that the
/// next notification waits for that one.
std::shared_ptr<PresenterNotifications> WatchedFiles::notificationsFor(
    NSFilePresenter& presenter, std::shared_ptr<NSOperationQueue> queue) {
    for (const auto& entry : removed_) {
        auto notifications = entry.lock();
        if (notifications && notifications->presenter() == &presenter &&
            notifications->resume(queue))
            return notifications;
    }
    return std::make_shared<PresenterNotifications>(presenter, std::move(queue));
}

void WatchedFiles::add(NSFilePresenter& presenter, std::string path,
                       std::shared_ptr<NSOperationQueue> queue) {
    Outbox outbox;
    {
        const LockGuard lock(mutex_);
        if (find(&presenter) != detectors_.end()) return;
        detectors_.push_back(std::make_unique<ChangeDetector>(
            std::move(path), notificationsFor(presenter, std::move(queue))));
        detectors_.back()->begin(folders_, Clock::now());
        outbox.collect(*detectors_.back());
        ProcessQueues::setMustStartInChild(true);
        // There may be another descriptor or another time to wait for.
        folders_.wake();
    }
    outbox.send();
    const std::error_code error = startThread();
    if (!error) return;
    ProcessQueues::noteMissingThread();
    if (!isShortOfThreads_.exchange(true))
        FileFailures::reported("start a thread to watch files", {}, error);
}

std::shared_ptr<PresenterNotifications> WatchedFiles::remove(const NSFilePresenter& presenter) {
    const LockGuard lock(mutex_);
    const auto entry = find(&presenter);
    if (entry == detectors_.end()) return nullptr;
    (*entry)->end(folders_);
    auto notifications = (*entry)->notifications();
    detectors_.erase(entry);
    ProcessQueues::setMustStartInChild(!detectors_.empty());
    std::erase_if(removed_, [](const auto& former) { return former.expired(); });
    removed_.push_back(notifications);
    return notifications;
}

std::error_code WatchedFiles::replaceFor(const NSFilePresenter* performer,
                                         const std::string& newFile,
                                         const std::function<std::error_code()>& putInPlace) {
    MutexLock lock(mutex_);
    const auto entry = find(performer);
    if (entry == detectors_.end()) {
        lock.unlock();
        return putInPlace();
    }
    Outbox outbox;
    const std::error_code error = (*entry)->replace(OwnFile(newFile), putInPlace);
    outbox.collect(**entry);
    lock.unlock();
    outbox.send();
    return error;
}

/// Whether it has one afterwards, if it needs one.
bool WatchedFiles::startThreadOfThisProcess() {
    return !ProcessQueues::mustStartInChild() || !ofThisProcess().startThread();
}

// Without the lock: this is called while a queue is used.
std::error_code WatchedFiles::startThread() {
    if (hasThread_.exchange(true)) return {};
    try {
        std::thread([this] { watch(); }).detach();
        isShortOfThreads_ = false;
        return {};
    } catch (const std::system_error& failure) {
        hasThread_ = false;
        return failure.code();
    } catch (const std::bad_alloc&) {
        hasThread_ = false;
        return make_error_code(std::errc::not_enough_memory);
    }
}

// While there is one presenter only, nobody needs the watch during its notification, and so this
// thread notifies it, which saves waking another one. When a presenter is added meanwhile, another
// thread takes over, and this one ends.
void WatchedFiles::watch() {
    Threads::nameCurrentThread("file-presenters");
    MutexLock lock(mutex_);
    for (;;) {
        Outbox outbox;
        const auto dueTime = settleAll(outbox);
        const FolderWatch::Descriptors descriptors = folders_.descriptors();
        const bool isFree = outbox.hasNews() && detectors_.size() == 1;
        if (isFree) hasThread_ = false;
        lock.unlock();
        if (!isFree) {
            outbox.send();
            FolderWatch::wait(descriptors, dueTime);
        } else if (!outbox.sendHere() || hasThread_.exchange(true)) {
            return;
        }
        lock.lock();
    }
}

/// Returns when to do so again at the latest.
std::optional<Clock::time_point> WatchedFiles::settleAll(Outbox& outbox) {
    const Clock::time_point now = Clock::now();
    const std::vector<FolderWatch::Event> events = folders_.takeEvents();
    std::optional<Clock::time_point> next;
    for (const auto& detector : detectors_) {
        for (const auto& event : events) detector->note(event);
        detector->settle(folders_, now);
        outbox.collect(*detector);
        const auto due = detector->dueTime();
        if (due) next = std::min(next.value_or(*due), *due);
    }
    return next;
}

}  // namespace

void PresenterRegistry::add(NSFilePresenter& presenter) {
    WatchedFiles& files = ofThisProcess();
    if (files.has(presenter)) return;
    // Their order is kept, because both are the presenter's code.
    std::string path = absolutePath(presenter.presentedItemURL());
    files.add(presenter, std::move(path), queueOf(presenter));
}

void PresenterRegistry::remove(NSFilePresenter& presenter) {
    if (const auto notifications = ofThisProcess().remove(presenter)) notifications->end();
}

std::error_code PresenterRegistry::replaceFor(const NSFilePresenter* performer,
                                              const std::string& newFile,
                                              const std::function<std::error_code()>& putInPlace) {
    if (performer == nullptr) return putInPlace();
    return ofThisProcess().replaceFor(performer, newFile, putInPlace);
}

}  // namespace QRVPlatform
