// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "DryRun.h"
#include "Input.h"
#include "QRVSettings/QRVSettings.h"
#include "Saving.h"
#include "SettingsFile.h"
#include "SettingsInput.h"
#include "StartUp.h"

namespace Tool {
namespace {

struct Options {
    std::string file;
    bool dryRun = false;
    DamagedFile damagedFile = DamagedFile::Refused;
};

/// As an import does, without the save.
void replaceInMemory(const NSDictionary& settings) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setStorageCache(settings.mutableCopy());
    store.migrate();
}

void importOrPreview(const NSDictionary& settings, bool dryRun) {
    if (!dryRun) return saveWhole([&settings] { QRVSettingsImport(settings); });
    const NSDictionary before = leavesByKeyPath(QRVSettingsStorage());
    replaceInMemory(settings);
    printWhatWouldChange(before, leavesByKeyPath(QRVSettingsStoredValues()));
}

ExitCode importSettings(const Options& options) {
    const NSDictionary settings = settingsOfInput(options.file, "imported");
    const std::string name = nameOfInput(options.file);
    requireWritableSettingsFile(options.damagedFile);
    startUpOnNothing();
    try {
        importOrPreview(settings, options.dryRun);
    } catch (const NSInvalidArgumentException& exception) {
        throw Failure(ExitCode::WrongValue,
                      std::string("cannot be brought to the present shape: ") + exception.what() +
                          ", " + name);
    }
    if (isOfEarlierVersion(settings)) remark(migrationNote);
    if (!isKeptWhole(settings)) remark("fractions of seconds are not kept, " + name);
    return ExitCode::Done;
}

}  // namespace

void addImportCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "import", "Replace all stored settings by those of a file, in one save");
    const auto options = std::make_shared<Options>();
    addText(command, "FILE", options->file,
            "A property list in any format, or JSON as export prints it; - reads standard input")
        ->required();
    addDryRun(command, options->dryRun);
    addReplaceDamaged(command, options->damagedFile);
    command.footer(
        "Settings of an earlier version are brought to the present shape.\n\n"
        "Example: qrvsettings import settings.plist --dry-run");
    command.callback(
        [options, &action] { action = [options] { return importSettings(*options); }; });
}

}  // namespace Tool
