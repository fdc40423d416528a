// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>

#include "CommandOptions.h"
#include "Commands.h"
#include "Input.h"
#include "Interruption.h"
#include "JSON.h"
#include "KeyPaths.h"
#include "Output.h"
#include "Platform/Dispatch/Dispatch.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "ScalarText.h"
#include "SettingLines.h"
#include "SettingsFile.h"
#include "ShellCommands.h"
#include "StartUp.h"

namespace Tool {
namespace {

using NSDictionaryQRV::objectAtKeyPath;

struct Options {
    std::optional<std::string> prefix;
    Form form = Form::Lines;
    std::optional<std::size_t> count;
    std::string timeout;  ///< empty for none
};

std::string jsonLine(const std::string& keyPath, const PropertyListValue& value) {
    return R"({"keyPath":)" + jsonText(keyPath) + R"(,"value":)" + jsonText(value) + "}\n";
}

/// The file's changes, from the file as it was at the start.
///
/// What the store calls changed is not taken as it is: it begins with the tree that the start-up
/// has changed in memory, which no file holds.
class Watch {
  public:
    explicit Watch(const Options& options) : options_(options) {}

    /// Begins to watch as a host of the store does, but never saves what the start-up changes.
    void arm();
    /// Prints changes until there have been as many as wanted, or a signal comes.
    ExitCode run(const Interruption& interruption);

  private:
    void tellChanges();
    void tell(const std::string& keyPath);
    [[nodiscard]] std::string line(const std::string& keyPath) const;
    [[nodiscard]] bool isWanted(const std::string& keyPath) const;
    [[nodiscard]] std::set<std::string> keyPathsChangedSince(const NSDictionary& before) const;
    [[nodiscard]] bool isDone() const { return options_.count && lineCount_ >= *options_.count; }

    Options options_;
    NSDictionary file_;
    std::size_t lineCount_ = 0;
};

void Watch::arm() {
    QRVSettings& store = QRVSettings::sharedSettings();
    file_ = QRVSettingsStorage();
    store.setStorageCache(file_.mutableCopy());
    store.setMonitorFileChanges(true);
    store.setOnChange([this](const NSArray&) { tellChanges(); });
    startUp();
    store.setStorageCache(file_.isNull() ? NSMutableDictionary() : file_.mutableCopy());
    // Whatever was written between the reading above and the beginning of the watch.
    store.presenterQueue()->addOperation([&store] { store.presentedItemDidChange(); });
    remark("watching " + store.location());
}

ExitCode Watch::run(const Interruption& interruption) {
    using Clock = std::chrono::steady_clock;
    // Longer than anybody waits, and shorter than the clock can count.
    constexpr double longest = 1e9;
    std::optional<Clock::time_point> deadline;
    if (const auto seconds = realFromText(options_.timeout))
        deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                      std::chrono::duration<double>(std::min(*seconds, longest)));
    DispatchMainQueue& mainQueue = DispatchMainQueue::shared();
    while (!isDone()) {
        switch (interruption.waitFor(mainQueue.fd(), deadline)) {
            case Interruption::Reason::Interrupted:
                return ExitCode::Done;
            case Interruption::Reason::TimedOut:
                throw Failure(ExitCode::TimedOut, "timed out after " + options_.timeout +
                                                      " s, watching " +
                                                      QRVSettings::sharedSettings().location());
            case Interruption::Reason::Readable:
                mainQueue.drain();
        }
    }
    return ExitCode::Done;
}

void tellDamage() {
    try {
        requireReadableSettingsFile();
    } catch (const Failure& failure) {
        remark(failure.what());
    }
}

void Watch::tellChanges() {
    QRVSettings& store = QRVSettings::sharedSettings();
    if (store.storageCache().isNull()) {
        tellDamage();
        // Else a read would look into the file, and might see a change before it is told.
        store.setStorageCache(NSMutableDictionary());
    }
    const NSDictionary before = std::exchange(file_, store.storageCache().copy());
    for (const std::string& keyPath : keyPathsChangedSince(before)) tell(keyPath);
}

std::set<std::string> Watch::keyPathsChangedSince(const NSDictionary& before) const {
    std::set<std::string> keyPaths;
    for (const PropertyListValue& changed : NSDictionaryQRV::changedKeys(before, file_)) {
        const std::string keyPath = changed.stringValue();
        // A key that holds a "." is changed under a key path that does not reach it.
        const bool isReached =
            !objectAtKeyPath(before, keyPath).isNull() || !objectAtKeyPath(file_, keyPath).isNull();
        if (isReached && isWanted(keyPath)) keyPaths.insert(keyPath);
    }
    return keyPaths;
}

void Watch::tell(const std::string& keyPath) {
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
        // What has taken the place of a dictionary removes what was in it.
        const auto leaf = leafAbove(file_, keyPath);
        return leaf && isWanted(*leaf) ? "" : shellCommand(keyPath, file_);
    }
    const PropertyListValue value = QRVSettingsObjectForKeyPath(keyPath);
    return options_.form == Form::JSON ? jsonLine(keyPath, value) : settingLine(keyPath, value);
}

ExitCode watch(const Options& options) {
    if (options.prefix) requireUTF8(*options.prefix);
    if (QRVSettingsLocation().empty())
        throw Failure(ExitCode::NotSet, "there is no home folder, so no settings file");
    const Interruption interruption;
    requireReadableSettingsFile();
    Watch watch(options);
    watch.arm();
    return watch.run(interruption);
}

std::string whyNoTimeout(const std::string& text) {
    const auto seconds = realFromText(text);
    return seconds && *seconds > 0 ? "" : "not a number of seconds above 0: " + text;
}

}  // namespace

void addWatchCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "watch", "Print changes of the settings file as they happen, a line each");
    const auto options = std::make_shared<Options>();
    const auto prefix = std::make_shared<std::string>();
    const CLI::Option* prefixOption =
        addText(command, "PREFIX", *prefix, "Only this key path and those that lead through it");
    addForm(command, options->form,
            {"Print JSON objects of keyPath and value, one a line",
             "Print commands for a shell that change another file in the same way"});
    command.add_option("--count", options->count, "End after N lines")
        ->type_name("N")
        ->check([](const std::string& text) {
            const bool isCount = !text.empty() && text != std::string(text.size(), '0') &&
                                 text.find_first_not_of("0123456789") == text.npos;
            return isCount ? std::string() : "not a number of lines above 0: " + withoutMarks(text);
        });
    addText(command, "--timeout", options->timeout, "End with exit code 6 after this time")
        ->type_name("SECONDS")
        ->check(whyNoTimeout);
    command.footer(
        "A line is a key path, a tab, and the value that now holds there, as JSON: the default\n"
        "where the setting was removed, null where there is none. Lines of one change come in the\n"
        "order of their key paths. \"watching FILE\" on standard error tells when it has begun; "
        "an\n"
        "interrupt ends it with exit code 0.\n\n"
        "Example: qrvsettings watch CPU.Menubar --count 1 --timeout 60");
    command.callback([options, prefix, prefixOption, &action] {
        if (prefixOption->count() > 0) options->prefix = *prefix;
        action = [options] { return watch(*options); };
    });
}

}  // namespace Tool
