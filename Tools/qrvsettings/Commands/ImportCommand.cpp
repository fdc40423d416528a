// SPDX-License-Identifier: MIT
// Replaces all stored settings by those of a file.

#include "Commands/CommandTable.h"
#include "Commands/Leniency.h"
#include "Commands/WritingCommands.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/InputFile.h"
#include "Process/StandardError.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/PendingChanges.h"
#include "Settings/Preparation.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/FileForm.h"

namespace Tool {
namespace {

struct Options {
    std::string file;
    DottedKeys dottedKeys = DottedKeys::Refused;
    WritingOptions writing;
};

void preview(const NSDictionary& settings) {
    const NSDictionary before = QRVSettingsStorage();
    importInMemory(settings);
    printWhatWouldChange(before, QRVSettingsStoredValues());
}

ExitCode runImport(const Options& options) {
    const NSDictionary settings = settingsOfInput(options.file, "imported", options.dottedKeys);
    const std::string name = nameOfInput(options.file);
    openToWrite(options.writing);
    prepareWithoutStoredSettings();
    try {
        options.writing.dryRun ? preview(settings) : importSettings(settings);
    } catch (const NSInvalidArgumentException& exception) {
        throw Failure(Fault::WrongValue,
                      std::string("cannot be migrated: ") + exception.what() + ", " + name);
    }
    if (needMigration(settings)) remark(migrationNote);
    if (options.writing.dryRun) remarkObjections(settings);
    remarkWhatStrictXMLRefuses(settings);
    if (hasFractionsOfSeconds(settings)) remark("fractions of seconds are not kept, " + name);
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option file =
        required(text("FILE", options.file,
                      "A property list in any format, or JSON as export or list prints it; - "
                      "reads standard input"));
    file.takes = Takes::File;
    return withWritingOptions(
        {file, dryRunFlag(options.writing.dryRun), keepDottedKeysFlag(options.dottedKeys)},
        options.writing);
}

}  // namespace

Configuration configureImport() {
    return configured(declare, runImport);
}

}  // namespace Tool
