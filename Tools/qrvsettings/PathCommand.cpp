// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include "Commands.h"
#include "Output.h"
#include "QRVSettings/QRVSettings.h"

namespace Tool {
namespace {

ExitCode path() {
    const std::string location = QRVSettingsLocation();
    if (location.empty())
        throw Failure(ExitCode::NotSet, "there is no home folder, so no settings file");
    print(location + "\n");
    return ExitCode::Done;
}

}  // namespace

void addPathCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand("path", "Print the path of the settings file");
    command.footer("Example: ls -l \"$(qrvsettings path)\"");
    command.callback([&action] { action = path; });
}

}  // namespace Tool
