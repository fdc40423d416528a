// SPDX-License-Identifier: MIT
// Merges three settings files by key path.

#include <optional>

#include "Commands/CommandTable.h"
#include "Commands/SettingsOutput.h"
#include "Options/CommonOptions.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Process/ExitCode.h"
#include "Process/InputFile.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Settings/MachineSettings.h"
#include "Text/Merge.h"
#include "Text/SettingsText.h"

namespace Tool {
namespace {

struct Options {
    std::string base;
    std::string ours;
    std::string theirs;
    std::string output;
    std::optional<MergeSide> atConflicts;
    bool json = false;
};

struct Version {
    NSDictionary settings;
    SettingsForm form = SettingsForm::PropertyList;
};

/// An empty file is one without settings, as a settings file may be.
Version versionFromBytes(const std::string& bytes) {
    if (bytes.empty()) return {};
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    if (read.mayBeCutOff)
        throw Failure(Fault::WrongValue, "text without outer braces, which may have been cut off");
    // Keys that no key path reaches are merged like others.
    if (!read.error) return {settingsFromText(bytes, DottedKeys::Kept)};
    return {settingsFromText(bytes), SettingsForm::JSON};
}

Version versionOf(const std::string& file) {
    const std::string bytes = contentsOfInput(file);
    try {
        return versionFromBytes(bytes);
    } catch (const Failure& failure) {
        throw Failure(failure.fault(), std::string("cannot be merged: ") + failure.what() + ", " +
                                           nameOfInput(file));
    }
}

Version baseOf(const std::string& file) {
    if (file == "-" || (file != "/dev/null" && QRVPlatform::fileExistsAtPath(file)))
        return versionOf(file);
    if (file != "/dev/null") remark("there is no base, " + file);
    return {};
}

/// That of OURS; where it has no settings, and so no form, that of THEIRS.
SettingsForm formOfResult(const Version& ours, const Version& theirs) {
    return ours.settings.count() == 0 ? theirs.form : ours.form;
}

void nameConflicts(const std::vector<MergeConflict>& conflicts, const Options& options) {
    for (const MergeConflict& conflict : conflicts) {
        const std::string text = "conflict, " + conflictText(conflict);
        options.atConflicts ? remark(text) : say(text);
    }
    if (options.json) print(conflictObjects(conflicts));
}

ExitCode merge(const Options& options) {
    const Version base = baseOf(options.base);
    const Version ours = versionOf(options.ours);
    const Version theirs = versionOf(options.theirs);
    const auto [tree, conflicts] = mergedSettings(
        withoutMachineSettings(base.settings), withoutMachineSettings(ours.settings),
        withoutMachineSettings(theirs.settings), options.atConflicts.value_or(MergeSide::Ours));
    const bool isPrinted = options.output.empty() && !options.json;
    if (isPrinted || !options.output.empty())
        writeSettings(withMachineSettingsOf(ours.settings, tree), formOfResult(ours, theirs),
                      isPrinted ? "-" : options.output);
    nameConflicts(conflicts, options);
    return conflicts.empty() || options.atConflicts ? ExitCode::Done : ExitCode::NotSet;
}

Option versionArgument(const std::string& name, std::string& file, const std::string& description) {
    Option option = required(text(name, file, description));
    option.takes = Takes::File;
    return option;
}

Option sideFlag(const std::string& name, std::optional<MergeSide>& atConflicts, MergeSide side,
                const std::string& description) {
    return {.name = name, .description = description, .store = [&atConflicts, side](const auto&) {
                atConflicts = side;
            }};
}

OptionList declare(Options& options) {
    Option output =
        text("--output", options.output, "Replace this file by the result, instead of printing it");
    output.takes = Takes::File;
    output.valueName = "FILE";
    Option theirs = sideFlag("--theirs", options.atConflicts, MergeSide::Theirs,
                             "Take the value of THEIRS at conflicts, and exit with 0");
    theirs.excludes = "--ours";
    return {versionArgument("BASE", options.base,
                            "What both were changed from; empty, missing or /dev/null for nothing"),
            versionArgument("OURS", options.ours, "One of the changed files"),
            versionArgument("THEIRS", options.theirs, "The other one"),
            output,
            sideFlag("--ours", options.atConflicts, MergeSide::Ours,
                     "Take the value of OURS at conflicts, and exit with 0"),
            theirs,
            jsonFlag(options.json,
                     "Print the conflicts as JSON objects of keyPath, base, ours and theirs, one a "
                     "line; the result goes to --output alone")};
}

}  // namespace

Configuration configureMerge() {
    return configured(declare, merge);
}

}  // namespace Tool
