// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "JSON.h"
#include "Output.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "SettingsFile.h"

namespace Tool {
namespace {

struct Options {
    std::string file = "-";
    bool json = false;
};

std::string propertyListText(const NSDictionary& tree) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(tree);
    if (written.error) throw Failure(ExitCode::WrongValue, written.error->description());
    return written.bytes;
}

ExitCode exportSettings(const Options& options) {
    requireReadableSettingsFile();
    const NSDictionary tree = QRVSettingsStoredValues();
    if (!NSDictionaryQRV::hasValues(tree)) throw Failure(ExitCode::NotSet, "nothing is set");
    const std::string text = options.json ? jsonText(tree) + "\n" : propertyListText(tree);
    if (options.file == "-") {
        print(text);
    } else if (const auto error = QRVPlatform::replaceFile(options.file, text)) {
        throw Failure(ExitCode::NotWritten,
                      "cannot write: " + error.message() + ", " + options.file);
    }
    return ExitCode::Done;
}

}  // namespace

void addExportCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand("export", "Print or save all stored settings");
    const auto options = std::make_shared<Options>();
    addText(command, "FILE", options->file, "Replaced as a whole; standard output without it");
    addJSON(command, options->json, "One line of JSON instead of an XML property list");
    command.footer(
        "Where nothing is set nothing is written, and the exit code is 1.\n\n"
        "Example: qrvsettings export settings.plist");
    command.callback(
        [options, &action] { action = [options] { return exportSettings(*options); }; });
}

}  // namespace Tool
