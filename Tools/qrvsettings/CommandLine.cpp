// SPDX-License-Identifier: MIT
#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include "CommandOptions.h"
#include "Commands.h"
#include "Output.h"

namespace Tool {
namespace {

void describe(CLI::App& program) {
    program.name("qrvsettings");
    program.set_version_flag("--version", "qrvsettings " QRV_VERSION);
    program.require_subcommand(1);
    program.footer(
        "Exit codes: 0 done; 1 not set; 2 wrong usage; 3 the settings file cannot be read or is\n"
        "damaged; 4 settings or output could not be written; 5 a value that is not what was\n"
        "asked for; 6 timed out.\n\n"
        "Example: qrvsettings set CPU.Menubar.Width 40");
}

void addCommands(CLI::App& program, Action& action) {
    addGetCommand(program, action);
    addSetCommand(program, action);
    addUnsetCommand(program, action);
    addListCommand(program, action);
    addExportCommand(program, action);
    addColorCommand(program, action);
    addAppearanceCommand(program, action);
    addProfilesCommand(program, action);
    addApplyCommand(program, action);
    addImportCommand(program, action);
    addWatchCommand(program, action);
    addPathCommand(program, action);
}

/// The parser wants the last argument first.
std::vector<std::string> forParser(const std::vector<std::string>& arguments) {
    std::vector<std::string> reversed;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        reversed.push_back(marked(*argument));
    return reversed;
}

Failure wrongUsage(const CLI::App& program, const CLI::ParseError& error) {
    std::string command = "qrvsettings";
    for (const CLI::App* chosen : program.get_subcommands()) command += " " + chosen->get_name();
    return {ExitCode::WrongUsage, withoutMarks(error.what()) + " (see " + command + " --help)"};
}

ExitCode printed(const std::string& text) {
    print(text);
    return ExitCode::Done;
}

}  // namespace

ExitCode runCommandLine(const std::vector<std::string>& arguments) {
    CLI::App program("Read and change the settings of the system monitor");
    Action action;
    describe(program);
    addCommands(program, action);
    try {
        program.parse(forParser(arguments));
    } catch (const CLI::CallForHelp&) {
        return printed(program.help());
    } catch (const CLI::CallForVersion& version) {
        return printed(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        throw wrongUsage(program, error);
    }
    return action();
}

}  // namespace Tool
