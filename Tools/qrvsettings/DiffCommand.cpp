// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

#include "CommandOptions.h"
#include "Commands.h"
#include "DryRun.h"
#include "Output.h"
#include "QRVSettings/QRVSettings.h"
#include "Scope.h"
#include "SettingLines.h"
#include "SettingsFile.h"
#include "SettingsInput.h"
#include "ShellCommands.h"
#include "StartUp.h"

namespace Tool {
namespace {

struct Options {
    std::optional<std::string> file;
    std::string profile;
    Form form = Form::Lines;
};

struct Difference {
    std::vector<SettingChange> changes;
    NSDictionary oldTree;
    NSDictionary newTree;
};

/// The defaults of these key paths. Asked for last: what is stored is what the file holds, and not
/// what the start-up makes of it.
NSDictionary defaultsOf(const NSDictionary& leaves) {
    startUpOnNothing();
    NSMutableDictionary defaults;
    for (const auto& [keyPath, value] : leaves)
        defaults.setObjectForKey(QRVSettingsDefaultForKeyPath(std::string(keyPath)), keyPath);
    return defaults;
}

Difference differenceFromDefaults(const std::string& profile) {
    const NSDictionary stored = Scope(profile).storedTree().copy();
    const NSDictionary leaves = leavesByKeyPath(stored);
    const NSDictionary defaults = defaultsOf(leaves);
    return {changesBetween(defaults, leaves), QRVSettings::sharedSettings().defaults(), stored};
}

Difference differenceFromStored(const NSDictionary& settings) {
    const NSDictionary stored = QRVSettingsStoredValues();
    return {changesBetween(leavesByKeyPath(stored), leavesByKeyPath(settings)), stored, settings};
}

std::string textOf(const Difference& difference, const Options& options) {
    switch (options.form) {
        case Form::JSON:
            return changeObjects(difference.changes);
        case Form::Commands:
            return shellCommands(difference.changes, difference.oldTree, difference.newTree,
                                 options.profile);
        case Form::Lines:
            break;
    }
    return changeLines(difference.changes);
}

ExitCode diff(const Options& options) {
    // Before the settings file is read: of two faults that of the argument is the nearer one.
    const NSDictionary settings =
        options.file ? settingsOfInput(*options.file, "compared") : NSDictionary(nullptr);
    requireReadableSettingsFile();
    const Difference difference =
        options.file ? differenceFromStored(settings) : differenceFromDefaults(options.profile);
    print(textOf(difference, options));
    return difference.changes.empty() ? ExitCode::Done : ExitCode::NotSet;
}

}  // namespace

void addDiffCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "diff", "Print what is stored and differs from the defaults, or how a file differs");
    const auto options = std::make_shared<Options>();
    const auto file = std::make_shared<std::string>();
    CLI::Option* const fileOption = addText(
        command, "FILE", *file,
        "A property list in any format, or JSON as export prints it; - reads standard input");
    addProfile(command, options->profile)->excludes(fileOption);
    addForm(command, options->form,
            {"Print JSON objects of keyPath, before and after, one a line",
             "Print commands for a shell that lead from the old values to the new ones"});
    command.footer(
        "A line is a key path, a tab, and old -> new as JSON, null for not set. Old are the\n"
        "defaults, and new is what is stored, in the file or in the profile. With FILE, old is\n"
        "what is stored and new what FILE holds. Nothing is brought to the present shape before.\n"
        "The exit code is 0 where nothing differs, and 1 where something does.\n\n"
        "Example: qrvsettings diff --as-commands");
    command.callback([options, file, fileOption, &action] {
        if (fileOption->count() > 0) options->file = *file;
        action = [options] { return diff(*options); };
    });
}

}  // namespace Tool
