// SPDX-License-Identifier: MIT
// Replaces all stored settings by those of a file.

#include <algorithm>

#include "Commands/CommandTable.h"
#include "Commands/WritingCommands.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/InputFile.h"
#include "Process/StandardError.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/MachineSettings.h"
#include "Settings/PendingChanges.h"
#include "Settings/Preparation.h"
#include "Settings/Records.h"
#include "Settings/SettingObjections.h"
#include "Text/Differences.h"
#include "Text/FileForm.h"

namespace Tool {
namespace {

struct Options {
    std::string file;
    DottedKeys dottedKeys = DottedKeys::Refused;
    bool isPortable = false;
    WritingOptions writing;
    ChangeReport report;
};

/// What the file or the start-up has changed in the store's own records is nobody's setting.
void remarkCount(const Changes& changes) {
    const auto isSetting = [](const Difference& difference) {
        return !isOfStoreAlone(difference.keyPath, difference.oldValue, difference.newValue);
    };
    const auto count = std::count_if(changes.changed.begin(), changes.changed.end(), isSetting);
    if (count > 0) remark(std::to_string(count) + " changed");
}

ExitCode report(const Changes& changes, const Options& options, const std::string& name) {
    if (options.writing.dryRun) return previewOf(changes, options.report);
    if (options.report.json)
        printObject(changes);
    else if (changes.isEmpty())
        remarkIfUnchanged(changes, name);
    else
        remarkCount(changes);
    return ExitCode::Done;
}

ExitCode runImport(const Options& options) {
    NSDictionary settings = settingsOfInput(options.file, "imported", options.dottedKeys);
    const std::string name = nameOfInput(options.file);
    openToWrite(options.writing);
    if (options.isPortable) settings = withMachineSettingsOf(QRVSettingsStoredValues(), settings);
    Changes changes;
    try {
        changes = options.writing.dryRun ? importInMemory(settings) : importSettings(settings);
    } catch (const NSInvalidArgumentException& exception) {
        throw Failure(Fault::WrongValue,
                      std::string("cannot be migrated: ") + exception.what() + ", " + name);
    }
    if (!changes.isEmpty() && needMigration(settings)) remark(migrationNote);
    if (options.writing.dryRun)
        for (const std::string& text : remarksOnTree(settings)) remark(text);
    remarkWhatStrictXMLRefuses(settings);
    if (hasFractionsOfSeconds(settings)) remark("fractions of seconds are not kept, " + name);
    return report(changes, options, name);
}

OptionList declare(Options& options) {
    Option file =
        required(text("FILE", options.file,
                      "A property list in any format, or JSON as export or list prints it; - "
                      "reads standard input"));
    file.takes = Takes::File;
    OptionList list = previewFlags(options.writing, options.report);
    list.insert(list.begin(), file);
    list.push_back(keepDottedKeysFlag(options.dottedKeys));
    list.push_back(
        flag("--portable", options.isPortable,
             "Keep what belongs to this machine (see export --portable) as it is stored now"));
    list.push_back(changesAsJSONFlag(options.report));
    return withWritingOptions(list, options.writing);
}

}  // namespace

Configuration configureImport() {
    return configured(declare, runImport);
}

}  // namespace Tool
