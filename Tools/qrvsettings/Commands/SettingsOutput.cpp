// SPDX-License-Identifier: MIT
#include "Commands/SettingsOutput.h"

#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Text/SettingsText.h"

namespace Tool {
namespace {

std::string propertyListText(const NSDictionary& settings) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(settings);
    if (written.error) throw Failure(Fault::WrongValue, written.error->description());
    return written.bytes;
}

}  // namespace

void writeSettings(const NSDictionary& settings, SettingsForm form, const std::string& file) {
    const std::string text =
        form == SettingsForm::JSON ? jsonOfSettings(settings) + "\n" : propertyListText(settings);
    if (file == "-") return print(text);
    if (const auto error = QRVPlatform::replaceFile(file, text))
        throw Failure(Fault::NotWritten, "cannot write: " + error.message() + ", " + file);
}

}  // namespace Tool
