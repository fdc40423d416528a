// SPDX-License-Identifier: MIT
#include "Platform/Presenters/PresenterRegistry.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

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

std::shared_ptr<PresenterNotifications> notificationsFor(NSFilePresenter& presenter) {
    auto queue = presenter.presentedItemOperationQueue();
    if (!queue) throw NSInvalidArgumentException("a file presenter needs a queue");
    return std::make_shared<PresenterNotifications>(presenter, std::move(queue));
}

/// The presenters with the files that they present, and the thread that watches those files as long
/// as the process runs.
///
/// The lock is never held while code of a presenter runs, or while somebody waits for the lock of a
/// file. It is held while a file is put in place, so that the event of that is handled when it is
/// known whose it is.
class WatchedFiles {
  public:
    WatchedFiles() = default;
    /// A forked child has no presenters. The parent's are not ended, which could act on what is the
    /// parent's; only their descriptors are closed.
    explicit WatchedFiles(WatchedFiles& parent) QRV_REQUIRES(parent.mutex_);
    void lock() QRV_ACQUIRES(mutex_) { mutex_.lock(); }
    void unlock() QRV_RELEASES(mutex_) { mutex_.unlock(); }

    bool has(const NSFilePresenter& presenter);
    void add(std::string path, std::shared_ptr<PresenterNotifications> notifications);
    /// Null when it is not there.
    std::shared_ptr<PresenterNotifications> remove(const NSFilePresenter& presenter);
    std::error_code replaceFor(const NSFilePresenter* performer, const std::string& newFile,
                               const std::function<std::error_code()>& putInPlace);

  private:
    using Detectors = std::vector<std::unique_ptr<ChangeDetector>>;
    Detectors::iterator find(const NSFilePresenter* presenter) QRV_REQUIRES(mutex_);
    void startThread() QRV_REQUIRES(mutex_);
    [[noreturn]] void watch();
    std::optional<Clock::time_point> settleAll() QRV_REQUIRES(mutex_);

    Mutex mutex_;
    FolderWatch folders_ QRV_GUARDED_BY(mutex_);
    Detectors detectors_ QRV_GUARDED_BY(mutex_);
    bool hasThread_ QRV_GUARDED_BY(mutex_) = false;
};

WatchedFiles::WatchedFiles(WatchedFiles& parent) {
    parent.folders_.closeInChild();
    for (const auto& detector : parent.detectors_) detector->closeInChild();
}

WatchedFiles& ofThisProcess() {
    return PerProcess<WatchedFiles>::current();
}

WatchedFiles::Detectors::iterator WatchedFiles::find(const NSFilePresenter* presenter) {
    return std::find_if(detectors_.begin(), detectors_.end(), [&](const auto& entry) {
        return entry->notifications().presenter() == presenter;
    });
}

bool WatchedFiles::has(const NSFilePresenter& presenter) {
    const LockGuard lock(mutex_);
    return find(&presenter) != detectors_.end();
}

void WatchedFiles::add(std::string path, std::shared_ptr<PresenterNotifications> notifications) {
    const LockGuard lock(mutex_);
    if (find(notifications->presenter()) != detectors_.end()) return;
    startThread();
    detectors_.push_back(
        std::make_unique<ChangeDetector>(std::move(path), std::move(notifications)));
    detectors_.back()->begin(folders_, Clock::now());
    // There may be another descriptor or another time to wait for.
    folders_.wake();
}

std::shared_ptr<PresenterNotifications> WatchedFiles::remove(const NSFilePresenter& presenter) {
    const LockGuard lock(mutex_);
    const auto entry = find(&presenter);
    if (entry == detectors_.end()) return nullptr;
    (*entry)->end(folders_);
    auto notifications = (*entry)->notifications().shared_from_this();
    detectors_.erase(entry);
    return notifications;
}

std::error_code WatchedFiles::replaceFor(const NSFilePresenter* performer,
                                         const std::string& newFile,
                                         const std::function<std::error_code()>& putInPlace) {
    MutexLock lock(mutex_);
    const auto entry = find(performer);
    if (entry != detectors_.end()) return (*entry)->replace(OwnFile(newFile), putInPlace);
    lock.unlock();
    return putInPlace();
}

void WatchedFiles::startThread() {
    if (hasThread_) return;
    std::thread([this] { watch(); }).detach();
    hasThread_ = true;
}

void WatchedFiles::watch() {
    Threads::nameCurrentThread("file-presenters");
    MutexLock lock(mutex_);
    for (;;) {
        const auto dueTime = settleAll();
        const FolderWatch::Descriptors descriptors = folders_.descriptors();
        lock.unlock();
        FolderWatch::wait(descriptors, dueTime);
        lock.lock();
    }
}

/// Returns when to do so again at the latest.
std::optional<Clock::time_point> WatchedFiles::settleAll() {
    const Clock::time_point now = Clock::now();
    const std::vector<FolderWatch::Event> events = folders_.takeEvents();
    std::optional<Clock::time_point> next;
    for (const auto& detector : detectors_) {
        for (const auto& event : events) detector->note(event, now);
        detector->settle(folders_, now);
        const auto due = detector->dueTime();
        if (due) next = std::min(next.value_or(*due), *due);
    }
    return next;
}

}  // namespace

void PresenterRegistry::add(NSFilePresenter& presenter) {
    WatchedFiles& files = ofThisProcess();
    if (files.has(presenter)) return;
    files.add(absolutePath(presenter.presentedItemURL()), notificationsFor(presenter));
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
