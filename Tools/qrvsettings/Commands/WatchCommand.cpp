// SPDX-License-Identifier: MIT
// Prints the changes of the settings file as they happen.

#include <optional>
#include <set>

#include "Commands/CommandTable.h"
#include "Options/CommonOptions.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Process/ExitCode.h"
#include "Process/Interruption.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/PendingChanges.h"
#include "Settings/Records.h"
#include "Settings/SettingObjections.h"
#include "Settings/SettingsFileCondition.h"
#include "Settings/StoredTree.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/SettingLines.h"
#include "Text/ShellCommands.h"

namespace Tool {
namespace {

using NSDictionaryQRV::objectAtKeyPath;

struct Options {
    std::optional<std::string> prefix;
    bool records = false;
    Form form = Form::Lines;
    std::optional<std::size_t> count;
    std::optional<std::chrono::milliseconds> timeout;
};

std::string jsonLine(const std::string& keyPath, const PropertyListValue& value) {
    return R"({"keyPath":)" + jsonText(keyPath) + R"(,"value":)" + jsonText(value) + "}\n";
}

/// Prints the changes of the file, from the file as it was at the start.
class Watch {
  public:
    explicit Watch(const Options& options) : options_(options) {}

    /// Begins to watch as a host of the store does.
    void begin();
    /// Prints changes until there are as many as wanted, the time is over, or a signal comes.
    ExitCode run(const Interruption& interruption);

  private:
    void printChanges();
    void printChange(const std::string& keyPath);
    [[nodiscard]] std::string line(const std::string& keyPath) const;
    [[nodiscard]] bool isWanted(const std::string& keyPath) const;
    [[nodiscard]] bool areRecordsWanted() const {
        return options_.records || (options_.prefix && isRecord(*options_.prefix));
    }
    [[nodiscard]] std::set<std::string> keyPathsChangedSince(const NSDictionary& before) const;
    [[nodiscard]] bool isDone() const { return options_.count && lineCount_ >= *options_.count; }

    Options options_;
    const OptionsToSet optionsToSet_ = optionsThatTakeIt();
    NSDictionary file_;  ///< what it held when it was last compared
    std::size_t lineCount_ = 0;
};

void Watch::begin() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);
    store.setOnChange([this](const NSArray&) { printChanges(); });
    // The first read of this process: changes by others from here on are published.
    file_ = QRVSettingsStoredValues();
    prepareToRead();
    // The store compares the file with its tree. What the preparation changed there is in no file.
    replaceStoredTree(file_);
    remark("watching " + store.location());
}

ExitCode Watch::run(const Interruption& interruption) {
    using Clock = std::chrono::steady_clock;
    std::optional<Clock::time_point> deadline;
    if (options_.timeout) deadline = Clock::now() + *options_.timeout;
    DispatchMainQueue& mainQueue = DispatchMainQueue::shared();
    while (!isDone()) {
        switch (interruption.waitFor(mainQueue.fd(), deadline)) {
            case Interruption::Reason::Interrupted:
                return ExitCode::Done;
            case Interruption::Reason::TimedOut:
                say("timed out, watching " + QRVSettings::sharedSettings().location());
                return ExitCode::TimedOut;
            case Interruption::Reason::Readable:
                mainQueue.drain();
        }
    }
    return ExitCode::Done;
}

void remarkDamage() {
    const std::string fault = conditionOfSettingsFile().fault();
    if (!fault.empty()) remark(fault);
}

void Watch::printChanges() {
    const NSDictionary now = QRVSettings::sharedSettings().storageCache();
    if (now.isNull()) remarkDamage();
    const NSDictionary before = std::exchange(file_, now.copy());
    for (const std::string& keyPath : keyPathsChangedSince(before)) printChange(keyPath);
}

std::set<std::string> Watch::keyPathsChangedSince(const NSDictionary& before) const {
    std::set<std::string> keyPaths;
    for (const PropertyListValue& changed : NSDictionaryQRV::changedKeys(before, file_)) {
        const std::string keyPath = changed.stringValue();
        const PropertyListValue oldValue = objectAtKeyPath(before, keyPath);
        const PropertyListValue newValue = objectAtKeyPath(file_, keyPath);
        // The key path of a key that holds a "." does not reach it.
        const bool isReached = !oldValue.isNull() || !newValue.isNull();
        if (isReached && isWanted(keyPath) &&
            (areRecordsWanted() || !isOfStoreAlone(keyPath, oldValue, newValue)))
            keyPaths.insert(keyPath);
    }
    return keyPaths;
}

void Watch::printChange(const std::string& keyPath) {
    const std::string text = isDone() ? "" : line(keyPath);
    if (text.empty()) return;
    print(text);
    ++lineCount_;
}

bool Watch::isWanted(const std::string& keyPath) const {
    return !options_.prefix || isAtOrBelow(keyPath, *options_.prefix);
}

std::string Watch::line(const std::string& keyPath) const {
    if (options_.form == Form::Commands) {
        // A value that replaces a dictionary removes what was in it.
        const auto leaf = leafAbove(file_, keyPath);
        return leaf && isWanted(*leaf)
                   ? ""
                   : shellCommand(keyPath, objectAtKeyPath(file_, keyPath), optionsToSet_);
    }
    const PropertyListValue stored = objectAtKeyPath(file_, keyPath);
    // A read of the store would read the file again where it was missing.
    const PropertyListValue value =
        stored.isNull() ? QRVSettingsDefaultForKeyPath(keyPath) : stored;
    return options_.form == Form::JSON ? jsonLine(keyPath, value) : settingLine(keyPath, value);
}

ExitCode watch(const Options& options) {
    if (options.prefix) requireUTF8(*options.prefix);
    if (QRVSettingsLocation().empty())
        throw Failure(Fault::NotSet, "there is no home folder, so no settings file");
    const Interruption interruption;
    requireReadable(conditionOfSettingsFile());
    Watch watch(options);
    watch.begin();
    return watch.run(interruption);
}

OptionList declare(Options& options) {
    return {
        prefixArgument(options.prefix),
        recordsFlag(options.records),
        jsonForm(options.form, "Print JSON objects of keyPath and value, one a line"),
        commandsForm(options.form, "Print shell commands that change another file in the same way"),
        countOption("--count", options.count, "End after N lines"),
        timeoutOption(options.timeout, "End with exit code 6 after this time")};
}

}  // namespace

Configuration configureWatch() {
    return configured(declare, watch);
}

}  // namespace Tool
