// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>
#include <set>

#include "CommandOptions.h"
#include "Commands.h"
#include "JSON.h"
#include "KeyPaths.h"
#include "Output.h"
#include "Scope.h"
#include "SettingsFile.h"
#include "StartUp.h"

namespace Tool {
namespace {

std::string jsonLine(const std::set<std::string>& names) {
    NSMutableArray array;
    for (const std::string& name : names) array.addObject(name);
    return jsonText(array) + "\n";
}

std::string lines(const std::set<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text.append(keyPathText(name)).append("\n");
    return text;
}

ExitCode profiles(bool json) {
    requireReadableSettingsFile();
    startUp();
    const std::set<std::string> names = profileNames();
    if (names.empty()) throw Failure(ExitCode::NotSet, "there are no profiles");
    print(json ? jsonLine(names) : lines(names));
    return ExitCode::Done;
}

}  // namespace

void addProfilesCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "profiles", "Print the names of the profiles that have settings, one a line");
    const auto json = std::make_shared<bool>(false);
    addJSON(command, *json, "Print one JSON array");
    command.footer(
        "In the order of their bytes. Of a name that holds dots only what stands before the first\n"
        "is printed.\n\n"
        "Example: qrvsettings profiles");
    command.callback([json, &action] { action = [json] { return profiles(*json); }; });
}

}  // namespace Tool
