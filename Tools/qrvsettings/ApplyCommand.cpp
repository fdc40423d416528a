// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "ChangeList.h"
#include "CommandOptions.h"
#include "Commands.h"
#include "DryRun.h"
#include "Input.h"
#include "QRVSettings/QRVSettings.h"
#include "Saving.h"
#include "SettingsFile.h"
#include "StartUp.h"

namespace Tool {
namespace {

struct Options {
    std::string file;
    bool dryRun = false;
    DamagedFile damagedFile = DamagedFile::Refused;
};

void make(const Change& change) {
    // To remove what is not there would create what is above.
    if (change.value.isNull() && QRVSettingsStoredObjectForKeyPath(change.keyPath).isNull()) return;
    QRVSettingsSetObjectForKeyPath(change.value, change.keyPath);
}

/// Into the open batch: where one change is refused, those before it are not saved either.
void makeAll(const std::vector<Change>& changes, const std::string& name) {
    for (const Change& change : changes) {
        try {
            writeOrName({change.keyPath}, [&change] { make(change); });
        } catch (const Failure& failure) {
            throw Failure(failure.code(), atLine(name, change.line, failure.what()));
        }
    }
}

void preview(const std::vector<Change>& changes, const std::string& name) {
    const std::vector<std::string> notes = startUpNotingChanges();
    const NSDictionary before = leavesByKeyPath(QRVSettingsStoredValues());
    makeAll(changes, name);
    for (const std::string& note : notes) remark(note);
    printWhatWouldChange(before, leavesByKeyPath(QRVSettingsStoredValues()));
}

void saveAll(const std::vector<Change>& changes, const std::string& name) {
    std::vector<std::string> keyPaths;
    keyPaths.reserve(changes.size());
    for (const Change& change : changes) keyPaths.push_back(change.keyPath);
    save(keyPaths, [&] { makeAll(changes, name); });
    for (const Change& change : changes) tellWhatIsNotKept(change.value, change.keyPath);
}

ExitCode apply(const Options& options) {
    const std::string name = nameOfInput(options.file);
    const std::vector<Change> changes = changesFromText(contentsOfInput(options.file), name);
    requireWritableSettingsFile(options.damagedFile);
    if (changes.empty())
        remark("no changes, " + name);
    else if (options.dryRun)
        preview(changes, name);
    else
        saveAll(changes, name);
    return ExitCode::Done;
}

}  // namespace

void addApplyCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "apply", "Make many changes at once: all of them in one save, or none");
    const auto options = std::make_shared<Options>();
    addText(command, "FILE", options->file, "Lines of changes, see below; - reads standard input")
        ->required();
    addDryRun(command, options->dryRun);
    addReplaceDamaged(command, options->damagedFile);
    command.footer(R"(A line is one of these, blank, or a comment that begins with #:

  set KEYPATH VALUE
  unset KEYPATH

VALUE is the rest of the line, without the blanks at its end, and is read as that of "set" is:
text that begins with {, [ or " is JSON; only - is nothing but text here. A KEYPATH that holds blanks is written as a JSON string.
Lines are made in their order. What is not set need not be unset.

Example: printf 'set UpdateFrequency 3\nunset Menu.Theme.Dark\n' | qrvsettings apply -)");
    command.callback([options, &action] { action = [options] { return apply(*options); }; });
}

}  // namespace Tool
