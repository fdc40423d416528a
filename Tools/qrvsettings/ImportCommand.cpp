// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "DryRun.h"
#include "Input.h"
#include "JSON.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/QRVSettings.h"
#include "Saving.h"
#include "SettingsFile.h"
#include "StartUp.h"
#include "ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string file;
    bool dryRun = false;
    DamagedFile damagedFile = DamagedFile::Refused;
};

PropertyListValue jsonOrFault(const std::string& bytes, const PropertyListError& fault) {
    try {
        return valueFromJSON(bytes);
    } catch (const Failure& failure) {
        throw Failure(failure.code(),
                      "not a property list: " + fault.description() + "; " + failure.what());
    }
}

PropertyListValue valueFromBytes(const std::string& bytes) {
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    if (!read.error) return read.value;
    // What is neither binary nor XML looks like old-style text.
    if (read.format == PropertyListFormat::OldStyle) return jsonOrFault(bytes, *read.error);
    throw Failure(ExitCode::WrongValue, read.error->description());
}

NSDictionary settingsFromBytes(const std::string& bytes) {
    // Read as a settings file, it would be one in which nothing is set.
    if (bytes.find_first_not_of(" \t\r\n") == bytes.npos)
        throw Failure(ExitCode::WrongValue, "empty");
    const PropertyListValue root = valueFromBytes(bytes);
    if (!root.isDictionary())
        throw Failure(ExitCode::WrongValue, "the root is " + kindName(root) + ", not a dictionary");
    requireStorable(root);
    return root.dictionary();
}

NSDictionary settingsOf(const std::string& file) {
    const std::string bytes = contentsOfInput(file);
    try {
        return settingsFromBytes(bytes);
    } catch (const Failure& failure) {
        throw Failure(failure.code(), std::string("cannot be imported: ") + failure.what() + ", " +
                                          nameOfInput(file));
    }
}

/// Of what is replaced nothing can be in the way.
void startUpOnNothing() {
    QRVSettings::sharedSettings().setStorageCache(NSMutableDictionary());
    startUp();
}

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
    const NSDictionary settings = settingsOf(options.file);
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
    if (isOfEarlierVersion(settings)) say(migrationNote);
    if (!isKeptWhole(settings)) say("fractions of seconds are not kept, " + name);
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
