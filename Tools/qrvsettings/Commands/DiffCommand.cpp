// SPDX-License-Identifier: MIT
// Compares what is stored with the defaults, or with a file.

#include <optional>

#include "Commands/CommandTable.h"
#include "Commands/WritingCommands.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "QRVSettings/QRVSettings.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/Differences.h"
#include "Text/KeyPaths.h"
#include "Text/ShellCommands.h"

namespace Tool {
namespace {

struct Options {
    std::optional<std::string> file;
    std::string profile;
    Form form = Form::Lines;
};

struct Comparison {
    std::vector<Difference> differences;
    NSDictionary oldTree;
    NSDictionary newTree;
};

/// The defaults of these key paths. Reads of stored settings must come before.
NSDictionary defaultsOf(const NSDictionary& leaves) {
    prepareWithoutStoredSettings();
    NSMutableDictionary defaults;
    for (const auto& [keyPath, value] : leaves)
        defaults.setObjectForKey(QRVSettingsDefaultForKeyPath(std::string(keyPath)), keyPath);
    return defaults;
}

Comparison comparisonWithDefaults(const std::string& profile) {
    const NSDictionary stored = ProfileScope(profile).storedTree().copy();
    const NSDictionary leaves = leavesByKeyPath(stored);
    const NSDictionary defaults = defaultsOf(leaves);
    return {differencesBetween(defaults, leaves), QRVSettings::sharedSettings().defaults(), stored};
}

Comparison comparisonWithStored(const NSDictionary& settings) {
    const NSDictionary stored = QRVSettingsStoredValues();
    return {differencesBetween(leavesByKeyPath(stored), leavesByKeyPath(settings)), stored,
            settings};
}

std::string textOf(const Comparison& comparison, const Options& options) {
    switch (options.form) {
        case Form::JSON:
            return differenceObjects(comparison.differences);
        case Form::Commands:
            return shellCommands(comparison.differences, comparison.oldTree, comparison.newTree,
                                 options.profile);
        case Form::Lines:
            break;
    }
    return differenceLines(comparison.differences);
}

ExitCode diff(const Options& options) {
    // Before the settings file is read: a fault of the argument is reported first.
    const NSDictionary settings =
        options.file ? settingsOfInput(*options.file, "compared") : NSDictionary(nullptr);
    openToRead();
    const Comparison comparison =
        options.file ? comparisonWithStored(settings) : comparisonWithDefaults(options.profile);
    print(textOf(comparison, options));
    return comparison.differences.empty() ? ExitCode::Done : ExitCode::NotSet;
}

OptionList declare(Options& options) {
    Option profile = profileOption(options.profile);
    profile.excludes = "FILE";
    return {{.name = "FILE",
             .description = "A property list in any format, or JSON as export prints it; - reads "
                            "standard input",
             .takes = Takes::File,
             .store = [&options](
                          const std::vector<std::string>& given) { options.file = given.front(); }},
            profile,
            jsonForm(options.form, "Print JSON objects of keyPath, before and after, one a line"),
            commandsForm(options.form,
                         "Print shell commands that lead from the old values to the new ones")};
}

}  // namespace

Configuration configureDiff() {
    return configured(declare, diff);
}

}  // namespace Tool
