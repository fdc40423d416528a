// SPDX-License-Identifier: MIT
// Prints or saves all stored settings.

#include "Commands/CommandTable.h"
#include "Commands/SettingsOutput.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/MachineSettings.h"
#include "Settings/SettingsFileCondition.h"

namespace Tool {
namespace {

struct Options {
    std::string file = "-";
    bool isPortable = false;
    bool json = false;
};

ExitCode exportSettings(const Options& options) {
    openToRead();
    const NSDictionary stored = QRVSettingsStoredValues();
    const NSDictionary tree = options.isPortable ? withoutMachineSettings(stored) : stored;
    if (!NSDictionaryQRV::hasValues(tree)) throw Failure(Fault::NotSet, "nothing is set");
    writeSettings(tree, options.json ? SettingsForm::JSON : SettingsForm::PropertyList,
                  options.file);
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option file = text("FILE", options.file, "Replaced as a whole; standard output without it");
    file.takes = Takes::File;
    return {file,
            flag("--portable", options.isPortable,
                 "Leave out what belongs to this machine: the records of the machine and the "
                 "appearance, and the settings that are reset on another one"),
            jsonFlag(options.json, "One line of JSON instead of an XML property list")};
}

}  // namespace

Configuration configureExport() {
    return configured(declare, exportSettings);
}

}  // namespace Tool
