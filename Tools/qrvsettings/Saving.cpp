// SPDX-License-Identifier: MIT
#include "Saving.h"

#include <algorithm>
#include <mutex>
#include <thread>

#include "Failure.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "QRVLogger/DDLog.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"

namespace Tool {

struct Saving::Observations {
    std::mutex mutex;
    std::vector<std::string> notes;
    std::vector<std::string> faults;

    void add(std::vector<std::string>& list, const std::string& text) {
        const std::lock_guard guard(mutex);
        list.push_back(text);
    }
};

namespace {

/// The file's own form tells kinds apart, 1 from 1.0, and knows what the file cannot hold, such as
/// the fraction of a date.
std::string fileForm(const PropertyListValue& value) {
    return NSPropertyListSerialization::dataWithPropertyList(value).bytes;
}

bool holds(const NSDictionary& file, const std::string& keyPath) {
    const PropertyListValue kept = NSDictionaryQRV::objectAtKeyPath(file, keyPath);
    const PropertyListValue stored = QRVSettingsStoredObjectForKeyPath(keyPath);
    return kept.isNull() == stored.isNull() && fileForm(kept) == fileForm(stored);
}

}  // namespace

// The sinks share the observations: a call under way may outlive this object.
Saving::Saving() : observations_(std::make_shared<Observations>()) {
    const auto observations = observations_;
    setFileFailureHandler([observations](const FileFailure& failure) {
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

Saving::~Saving() {
    setNSLogSink([](const std::string&) {});
    DDLog::setSink(nullptr);
    setFileFailureHandler(nullptr);
}

void Saving::finish(const std::vector<std::string>& keyPaths) {
    QRVSettings::sharedSettings().queue().sync([] {});
    DDLog::flush();
    const NSDictionary file = QRVSettingsStorage();
    const bool isSaved = std::all_of(keyPaths.begin(), keyPaths.end(),
                                     [&](const auto& keyPath) { return holds(file, keyPath); });
    const std::lock_guard guard(observations_->mutex);
    for (const std::string& note : observations_->notes) say(note);
    if (isSaved) return;
    const std::string reason = observations_->faults.empty()
                                   ? "another process has written at the same time, " +
                                         QRVSettings::sharedSettings().location()
                                   : observations_->faults.front();
    throw Failure(ExitCode::NotWritten, "cannot save: " + reason);
}

}  // namespace Tool
