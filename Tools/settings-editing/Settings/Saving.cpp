// SPDX-License-Identifier: MIT
#include "Settings/Saving.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Files/Files.h"
#include "Platform/System/System.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/Notices.h"
#include "Settings/SettingsLock.h"

namespace Tool {
namespace {

/// Hears during its life what the store says of a save to nobody but its log and the handler of
/// failures. Only one may exist at a time.
class SaveObserver {
  public:
    SaveObserver();
    SaveObserver(const SaveObserver&) = delete;
    SaveObserver& operator=(const SaveObserver&) = delete;
    ~SaveObserver();

    [[nodiscard]] std::vector<std::string> takeNotes();
    [[nodiscard]] bool hasTimedOut() const { return heard_->hasTimedOut; }

  private:
    struct Heard {
        std::mutex mutex;
        std::vector<std::string> notes;
        std::atomic<bool> hasTimedOut = false;
    };
    // The handlers share it: a call under way may outlive this object.
    std::shared_ptr<Heard> heard_ = std::make_shared<Heard>();
};

SaveObserver::SaveObserver() {
    QRVPlatform::setFileFailureHandler([heard = heard_](const QRVPlatform::FileFailure& failure) {
        if (failure.error == std::errc::timed_out) heard->hasTimedOut = true;
    });
    // What is logged on this thread is about reads and writes in memory.
    setNSLogSink([heard = heard_, thread = std::this_thread::get_id()](const std::string& text) {
        if (std::this_thread::get_id() == thread) return;
        const std::lock_guard guard(heard->mutex);
        heard->notes.push_back(text);
    });
}

SaveObserver::~SaveObserver() {
    setNSLogSink([](const std::string&) {});
    QRVPlatform::setFileFailureHandler(nullptr);
}

std::vector<std::string> SaveObserver::takeNotes() {
    const std::lock_guard guard(heard_->mutex);
    return std::exchange(heard_->notes, {});
}

/// " a, b and 3 more" of those that are in both; empty when there are none.
std::string namesOf(const std::set<std::string>& keyPaths, const NSArray& unsaved) {
    constexpr std::size_t mostNamed = 3;
    std::string text;
    std::size_t count = 0;
    for (const PropertyListValue& keyPath : unsaved)
        if (keyPaths.contains(keyPath.stringValue()) && ++count <= mostNamed)
            text += (count == 1 ? " " : ", ") + shortened(keyPath.stringValue());
    if (count > mostNamed) text += " and " + std::to_string(count - mostNamed) + " more";
    return text;
}

}  // namespace

void saveAndWait(const std::function<void()>& queueSave, const std::set<std::string>& keyPaths) {
    SaveObserver observer;
    queueSave();
    QRVSaveStatus status;
    waitFor(lockOfSettingsFile,
            [&] { status = QRVSettingsWaitForSaves(std::chrono::milliseconds::max()); });
    for (const std::string& note : observer.takeNotes()) notice(note);
    if (status.state == QRVSaveStatus::State::Saved) return;
    if (observer.hasTimedOut())
        throw Failure(Fault::TimedOut,
                      "nothing is saved: timed out waiting for " + lockOfSettingsFile());
    throw Failure(Fault::NotWritten, "cannot save" + namesOf(keyPaths, status.keyPaths) + ": " +
                                         status.reason + ", " +
                                         QRVSettings::sharedSettings().location());
}

}  // namespace Tool
