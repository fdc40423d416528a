// SPDX-License-Identifier: MIT
// Prints or saves all stored settings.

#include "Commands/CommandTable.h"
#include "Options/CommonOptions.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/SettingsText.h"

namespace Tool {
namespace {

struct Options {
    std::string file = "-";
    bool json = false;
};

std::string propertyListText(const NSDictionary& tree) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(tree);
    if (written.error) throw Failure(Fault::WrongValue, written.error->description());
    return written.bytes;
}

ExitCode exportSettings(const Options& options) {
    openToRead();
    const NSDictionary tree = QRVSettingsStoredValues();
    if (!NSDictionaryQRV::hasValues(tree)) throw Failure(Fault::NotSet, "nothing is set");
    const std::string text = options.json ? jsonOfSettings(tree) + "\n" : propertyListText(tree);
    if (options.file == "-") {
        print(text);
    } else if (const auto error = QRVPlatform::replaceFile(options.file, text)) {
        throw Failure(Fault::NotWritten, "cannot write: " + error.message() + ", " + options.file);
    }
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option file = text("FILE", options.file, "Replaced as a whole; standard output without it");
    file.takes = Takes::File;
    return {file, jsonFlag(options.json, "One line of JSON instead of an XML property list")};
}

}  // namespace

Configuration configureExport() {
    return configured(declare, exportSettings);
}

}  // namespace Tool
