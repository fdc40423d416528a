// SPDX-License-Identifier: MIT
#include "Commands/SettingsOutput.h"

#include "Platform/Files/Files.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"

namespace Tool {

void writeSettings(const NSDictionary& settings, SettingsForm form, const std::string& file) {
    const std::string text = fileOfSettings(settings, form);
    if (file == "-") return print(text);
    if (const auto error = QRVPlatform::replaceFile(file, text))
        throw Failure(Fault::NotWritten, "cannot write: " + error.message() + ", " + file);
}

}  // namespace Tool
