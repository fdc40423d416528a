// SPDX-License-Identifier: MIT
#include "Settings/SaveWatch.h"

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Files/Files.h"
#include "Platform/System/System.h"
#include "QRVLogger/DDLog.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/Notices.h"
#include "Settings/SettingsLock.h"

namespace Tool {

struct SaveWatch::Observations {
    std::mutex mutex;
    std::vector<std::string> notes;
    std::vector<std::string> faults;

    void add(std::vector<std::string>& list, const std::string& text) {
        const std::lock_guard guard(mutex);
        list.push_back(text);
    }
};

SaveWatch::SaveWatch() : observations_(std::make_shared<Observations>()) {
    const auto observations = observations_;
    QRVPlatform::setFileFailureHandler([observations](const QRVPlatform::FileFailure& failure) {
        observations->add(observations->faults, failure.error.message() + ", " + failure.path);
    });
    DDLog::setSink([observations](const DDLogMessage& message) {
        observations->add(observations->faults, message.text());
    });
    // What is logged on this thread is about reads and writes in memory.
    setNSLogSink([observations, thread = std::this_thread::get_id()](const std::string& text) {
        if (std::this_thread::get_id() != thread) observations->add(observations->notes, text);
    });
}

SaveWatch::~SaveWatch() {
    setNSLogSink([](const std::string&) {});
    DDLog::setSink(nullptr);
    QRVPlatform::setFileFailureHandler(nullptr);
}

void SaveWatch::finish(const std::function<bool(const NSDictionary& file)>& isSaved) {
    QRVSettings& store = QRVSettings::sharedSettings();
    bool isDone = false;
    waitFor([] { return "the save, which waits for " + lockOfSettingsFile(); },
            [&] {
                store.queue().sync([] {});
                DDLog::flush();
                isDone = isSaved(QRVSettingsStorage());
            });
    const std::lock_guard guard(observations_->mutex);
    for (const std::string& note : observations_->notes) notice(note);
    if (isDone) return;
    throw Failure(
        Fault::NotWritten,
        "cannot save: " + (observations_->faults.empty()
                               ? "another process has written at the same time, " + store.location()
                               : observations_->faults.front()));
}

}  // namespace Tool
