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
#include "Settings/Records.h"
#include "Settings/SettingObjections.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/ShellCommands.h"

namespace Tool {
namespace {

struct Options {
    std::optional<std::string> file;
    std::string profile;
    DottedKeys dottedKeys = DottedKeys::Refused;
    bool records = false;
    Form form = Form::Lines;
};

struct Comparison {
    std::vector<Difference> differences;
    NSDictionary newTree;
};

Comparison comparisonWithDefaults(const std::string& profile) {
    const NSDictionary stored = ProfileScope(profile).storedTree().copy();
    prepareWithoutStoredSettings();
    return {differencesFromDefaults(stored, QRVSettings::sharedSettings().defaults()), stored};
}

Comparison comparisonWithStored(const NSDictionary& settings) {
    const NSDictionary stored = QRVSettingsStoredValues();
    return {differencesBetween(stored, settings), settings};
}

std::string textOf(const Comparison& comparison, const Options& options) {
    switch (options.form) {
        case Form::JSON:
            return differenceObjects(comparison.differences);
        case Form::Commands:
            return shellCommands(comparison.differences, comparison.newTree, optionsThatTakeIt(),
                                 options.profile);
        case Form::Lines:
            break;
    }
    return differenceLines(comparison.differences);
}

ExitCode diff(const Options& options) {
    // Before the settings file is read: a fault of the argument is reported first.
    const NSDictionary settings =
        options.file ? settingsOfInput(*options.file, "compared", options.dottedKeys)
                     : NSDictionary(nullptr);
    openToRead();
    Comparison comparison =
        options.file ? comparisonWithStored(settings) : comparisonWithDefaults(options.profile);
    if (!options.records) removeRecords(comparison.differences, ProfileScope(options.profile));
    print(textOf(comparison, options));
    return comparison.differences.empty() ? ExitCode::Done : ExitCode::NotSet;
}

OptionList declare(Options& options) {
    Option profile = profileOption(options.profile);
    profile.excludes = "FILE";
    return {{.name = "FILE",
             .description = "A property list in any format, or JSON as export or list prints it; "
                            "- reads standard input",
             .takes = Takes::File,
             .store = [&options](
                          const std::vector<std::string>& given) { options.file = given.front(); }},
            keepDottedKeysFlag(options.dottedKeys),
            profile,
            recordsFlag(options.records),
            jsonForm(options.form, "Print JSON objects of keyPath, before and after, one a line"),
            commandsForm(options.form,
                         "Print shell commands that lead from the old values to the new ones")};
}

}  // namespace

Configuration configureDiff() {
    return configured(declare, diff);
}

}  // namespace Tool
