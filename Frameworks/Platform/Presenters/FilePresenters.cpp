// SPDX-License-Identifier: MIT
#include "Platform/Presenters/FilePresenters.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Presenters/FilePresentation.h"
#include "Platform/Presenters/FolderWatch.h"
#include "Platform/Threads/Mutex.h"
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

/// Never destroyed: its thread runs as long as the process.
///
/// The lock is never held while code of a presenter runs, or while somebody waits for the lock of a
/// file. It is held while a file is put in place, so that the event of that is looked at when it is
/// known whose it is.
class Registry {
  public:
    static Registry& ofThisProcess();

    bool has(const NSFilePresenter& presenter);
    void add(std::string path, std::shared_ptr<PresenterNotifications> notifications);
    /// Null when it is not there.
    std::shared_ptr<PresenterNotifications> remove(const NSFilePresenter& presenter);
    std::error_code replaceFor(const NSFilePresenter* performer, const std::string& newFile,
                               const std::function<std::error_code()>& putInPlace);

  private:
    using Presentations = std::vector<std::unique_ptr<FilePresentation>>;
    static Registry*& current();
    static Registry* made();
    static void beforeFork() QRV_NOT_CHECKED { current()->mutex_.lock(); }
    static void afterForkInParent() QRV_NOT_CHECKED { current()->mutex_.unlock(); }
    static void startAnewInChild() QRV_NOT_CHECKED;
    Presentations::iterator find(const NSFilePresenter* presenter) QRV_REQUIRES(mutex_);
    void startThread() QRV_REQUIRES(mutex_);
    [[noreturn]] void watch();
    std::optional<Clock::time_point> settleAll() QRV_REQUIRES(mutex_);

    Mutex mutex_;
    FolderWatch folders_ QRV_GUARDED_BY(mutex_);
    Presentations presentations_ QRV_GUARDED_BY(mutex_);
    bool hasThread_ QRV_GUARDED_BY(mutex_) = false;
};

Registry*& Registry::current() {
    static Registry* registry = nullptr;
    return registry;
}

Registry* Registry::made() {
    current() = new Registry;
    Threads::observeForks(beforeFork, afterForkInParent, startAnewInChild);
    return current();
}

Registry& Registry::ofThisProcess() {
    static const Registry* const first = made();
    static_cast<void>(first);
    return *current();
}

// The parent's presentations are left as they are: to end them could act on what is the parent's.
void Registry::startAnewInChild() {
    current()->folders_.closeInChild();
    for (const auto& presentation : current()->presentations_) presentation->closeInChild();
    current() = new Registry;
}

Registry::Presentations::iterator Registry::find(const NSFilePresenter* presenter) {
    return std::find_if(presentations_.begin(), presentations_.end(), [&](const auto& entry) {
        return entry->notifications().presenter() == presenter;
    });
}

bool Registry::has(const NSFilePresenter& presenter) {
    const LockGuard lock(mutex_);
    return find(&presenter) != presentations_.end();
}

void Registry::add(std::string path, std::shared_ptr<PresenterNotifications> notifications) {
    const LockGuard lock(mutex_);
    if (find(notifications->presenter()) != presentations_.end()) return;
    startThread();
    presentations_.push_back(
        std::make_unique<FilePresentation>(std::move(path), std::move(notifications)));
    presentations_.back()->begin(folders_, Clock::now());
    // There may be another descriptor or another time to wait for.
    folders_.wake();
}

std::shared_ptr<PresenterNotifications> Registry::remove(const NSFilePresenter& presenter) {
    const LockGuard lock(mutex_);
    const auto entry = find(&presenter);
    if (entry == presentations_.end()) return nullptr;
    (*entry)->end(folders_);
    auto notifications = (*entry)->notifications().shared_from_this();
    presentations_.erase(entry);
    return notifications;
}

std::error_code Registry::replaceFor(const NSFilePresenter* performer, const std::string& newFile,
                                     const std::function<std::error_code()>& putInPlace) {
    MutexLock lock(mutex_);
    const auto entry = find(performer);
    if (entry != presentations_.end()) return (*entry)->replace(OwnFile(newFile), putInPlace);
    lock.unlock();
    return putInPlace();
}

void Registry::startThread() {
    if (hasThread_) return;
    std::thread([this] { watch(); }).detach();
    hasThread_ = true;
}

void Registry::watch() {
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

/// When to do so again at the latest.
std::optional<Clock::time_point> Registry::settleAll() {
    const Clock::time_point now = Clock::now();
    const std::vector<FolderWatch::Event> events = folders_.takeEvents();
    std::optional<Clock::time_point> next;
    for (const auto& presentation : presentations_) {
        for (const auto& event : events) presentation->note(event, now);
        presentation->settle(folders_, now);
        const auto due = presentation->dueTime();
        if (due) next = std::min(next.value_or(*due), *due);
    }
    return next;
}

}  // namespace

void FilePresenters::add(NSFilePresenter& presenter) {
    Registry& registry = Registry::ofThisProcess();
    if (registry.has(presenter)) return;
    registry.add(absolutePath(presenter.presentedItemURL()), notificationsFor(presenter));
}

void FilePresenters::remove(NSFilePresenter& presenter) {
    if (const auto notifications = Registry::ofThisProcess().remove(presenter))
        notifications->end();
}

std::error_code FilePresenters::replaceFor(const NSFilePresenter* performer,
                                           const std::string& newFile,
                                           const std::function<std::error_code()>& putInPlace) {
    if (performer == nullptr) return putInPlace();
    return Registry::ofThisProcess().replaceFor(performer, newFile, putInPlace);
}

}  // namespace QRVPlatform
