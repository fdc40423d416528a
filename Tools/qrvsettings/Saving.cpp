// SPDX-License-Identifier: MIT
#include "Saving.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "Failure.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "QRVLogger/DDLog.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "StartUp.h"
#include "ValueText.h"

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

    /// Waits for the saves and reads the file afresh.
    void finish(const std::vector<std::string>& keyPaths);

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

bool holds(const NSDictionary& file, const std::string& keyPath) {
    const PropertyListValue kept = NSDictionaryQRV::objectAtKeyPath(file, keyPath);
    const PropertyListValue stored = QRVSettingsStoredObjectForKeyPath(keyPath);
    return kept.isNull() == stored.isNull() && fileForm(kept) == fileForm(stored);
}

SaveWatch::SaveWatch() {
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

SaveWatch::~SaveWatch() {
    setNSLogSink([](const std::string&) {});
    DDLog::setSink(nullptr);
    setFileFailureHandler(nullptr);
}

void SaveWatch::finish(const std::vector<std::string>& keyPaths) {
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

/// The stored value that a key path leads through though it is no dictionary.
std::optional<std::string> obstacleOf(const std::string& keyPath) {
    const NSDictionary stored = QRVSettingsStoredValues();
    for (std::size_t end = keyPath.find('.'); end != keyPath.npos;
         end = keyPath.find('.', end + 1)) {
        const std::string above = keyPath.substr(0, end);
        const PropertyListValue value = NSDictionaryQRV::objectAtKeyPath(stored, above);
        if (!value.isNull() && !value.isDictionary()) return above + " is " + kindName(value);
    }
    return std::nullopt;
}

void writeOrName(const std::vector<std::string>& keyPaths, const std::function<void()>& write) {
    try {
        write();
    } catch (const NSInvalidArgumentException& exception) {
        for (const std::string& keyPath : keyPaths)
            if (const auto obstacle = obstacleOf(keyPath))
                throw Failure(ExitCode::WrongValue,
                              "a stored value is in the way: " + *obstacle + ", " + keyPath);
        throw Failure(ExitCode::WrongValue, exception.what());
    }
}

PropertyListValue storedIdentity() {
    return QRVSettingsStoredObjectForKeyPath("Device");
}

bool differs(const PropertyListValue& before, const PropertyListValue& after, const char* key) {
    const PropertyListValue recorded = before.dictionary().objectForKey(key);
    return !recorded.isNull() && recorded != after.dictionary().objectForKey(key);
}

/// Settings that nobody here asked to change.
void startUpAndTellWhatIsReset() {
    const PropertyListValue before = storedIdentity();
    startUp();
    const PropertyListValue after = storedIdentity();
    if (differs(before, after, "Device"))
        say("the settings come from another machine: Network.Menubar.Global.PrimaryInterface is "
            "reset");
    if (differs(before, after, "Model"))
        say("the settings come from another model: Sensors.Global.Fans and the profiles' "
            "Sensors.Menubar.Sensors are reset");
}

void startUpAs(StartUp demand) {
    try {
        startUpAndTellWhatIsReset();
    } catch (const Failure&) {
        if (demand == StartUp::MustSucceed) throw;
    }
}

}  // namespace

void save(const std::vector<std::string>& keyPaths, const std::function<void()>& write,
          StartUp startUp) {
    startUpAs(startUp);
    SaveWatch watch;
    writeOrName(keyPaths, write);
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(false);
    QRVSettingsSaveObject(store.storageCache());
    watch.finish(keyPaths);
}

}  // namespace Tool
