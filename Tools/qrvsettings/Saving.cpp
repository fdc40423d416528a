// SPDX-License-Identifier: MIT
#include "Saving.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <thread>

#include "Failure.h"
#include "KeyPaths.h"
#include "LockFile.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "QRVLogger/DDLog.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "StartUp.h"
#include "ValueText.h"
#include "Waiting.h"

namespace Tool {

namespace {

/// Watches over the saves during its life: nothing that goes wrong with them reaches the writer
/// otherwise. One at a time.
class SaveWatch {
  public:
    SaveWatch();
    SaveWatch(const SaveWatch&) = delete;
    SaveWatch& operator=(const SaveWatch&) = delete;
    ~SaveWatch();

    /// Waits for the saves and asks `isSaved` about the file, read afresh.
    void finish(const std::function<bool(const NSDictionary& file)>& isSaved);

  private:
    struct Observations {
        std::mutex mutex;
        std::vector<std::string> notes;
        std::vector<std::string> faults;

        void add(std::vector<std::string>& list, const std::string& text) {
            const std::lock_guard guard(mutex);
            list.push_back(text);
        }
    };
    // The sinks share them: a call under way may outlive this object.
    std::shared_ptr<Observations> observations_ = std::make_shared<Observations>();
};

/// The file's own form tells kinds apart, 1 from 1.0, and knows what the file cannot hold, such as
/// the fraction of a date.
std::string fileForm(const PropertyListValue& value) {
    return NSPropertyListSerialization::dataWithPropertyList(value).bytes;
}

bool isKeptAs(const PropertyListValue& stored, const PropertyListValue& kept) {
    return kept.isNull() == stored.isNull() && fileForm(kept) == fileForm(stored);
}

bool holds(const NSDictionary& file, const std::string& keyPath) {
    return isKeptAs(QRVSettingsStoredObjectForKeyPath(keyPath),
                    NSDictionaryQRV::objectAtKeyPath(file, keyPath));
}

SaveWatch::SaveWatch() {
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
    const Waiting waiting([] { return "the save, which waits for " + lockOfSettingsFile(); });
    QRVSettings::sharedSettings().queue().sync([] {});
    DDLog::flush();
    const bool isDone = isSaved(QRVSettingsStorage());
    const std::lock_guard guard(observations_->mutex);
    for (const std::string& note : observations_->notes) remark(note);
    if (isDone) return;
    const std::string reason = observations_->faults.empty()
                                   ? "another process has written at the same time, " +
                                         QRVSettings::sharedSettings().location()
                                   : observations_->faults.front();
    throw Failure(ExitCode::NotWritten, "cannot save: " + reason);
}

std::vector<std::string> startUpAs(StartUp demand) {
    try {
        return startUpNotingChanges();
    } catch (const Failure&) {
        if (demand == StartUp::MustSucceed) throw;
        return {};
    }
}

}  // namespace

void writeOrName(const std::vector<std::string>& keyPaths, const std::function<void()>& write) {
    try {
        write();
    } catch (const NSInvalidArgumentException& exception) {
        for (const std::string& keyPath : keyPaths)
            if (const auto obstacle = leafAbove(QRVSettingsStoredValues(), keyPath))
                throw Failure(ExitCode::WrongValue,
                              "a stored value is in the way: " + *obstacle + " is " +
                                  kindName(QRVSettingsStoredObjectForKeyPath(*obstacle)) + ", " +
                                  keyPath);
        throw Failure(ExitCode::WrongValue, exception.what());
    }
}

void save(const std::vector<std::string>& keyPaths, const std::function<void()>& write,
          StartUp startUp) {
    const std::vector<std::string> notes = startUpAs(startUp);
    SaveWatch watch;
    writeOrName(keyPaths, write);
    for (const std::string& note : notes) remark(note);
    QRVSettingsCommitBatchSave();
    watch.finish([&keyPaths](const NSDictionary& file) {
        return std::all_of(keyPaths.begin(), keyPaths.end(),
                           [&file](const auto& keyPath) { return holds(file, keyPath); });
    });
}

void saveWhole(const std::function<void()>& write) {
    SaveWatch watch;
    write();
    watch.finish(
        [](const NSDictionary& file) { return isKeptAs(QRVSettingsStoredValues(), file); });
}

bool isKeptWhole(const PropertyListValue& value) {
    return NSPropertyListSerialization::propertyListWithData(fileForm(value)).value == value;
}

void tellWhatIsNotKept(const PropertyListValue& value, const std::string& keyPath) {
    if (!QRVSettingsStoredObjectForKeyPath(keyPath).isNull() && !isKeptWhole(value))
        remark("fractions of seconds are not kept, " + keyPath);
}

}  // namespace Tool
