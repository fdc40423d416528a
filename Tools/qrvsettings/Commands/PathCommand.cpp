// SPDX-License-Identifier: MIT
// Prints where the settings file lies.

#include "Commands/CommandTable.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Process/StandardStreams.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/PrintableText.h"

namespace Tool {
namespace {

ExitCode path() {
    const std::string location = QRVSettingsLocation();
    if (location.empty())
        throw Failure(Fault::NotSet, "there is no home folder, so no settings file");
    print((standardOutputIsTerminal() ? printable(location) : location) + "\n");
    return ExitCode::Done;
}

}  // namespace

Configuration configurePath() {
    return {{}, path};
}

}  // namespace Tool
