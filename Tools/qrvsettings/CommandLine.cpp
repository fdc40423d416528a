// SPDX-License-Identifier: MIT
#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <string_view>

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

struct Command {
    std::string_view name;
    void (*add)(CLI::App& program, Action& action);
};

/// In the order in which the help lists them.
constexpr std::array commands = {
    Command{"get", addGetCommand},
    Command{"set", addSetCommand},
    Command{"unset", addUnsetCommand},
    Command{"list", addListCommand},
    Command{"export", addExportCommand},
    Command{"color", addColorCommand},
    Command{"appearance", addAppearanceCommand},
    Command{"profiles", addProfilesCommand},
    Command{"apply", addApplyCommand},
    Command{"import", addImportCommand},
    Command{"watch", addWatchCommand},
    Command{"path", addPathCommand},
};

/// The one that is named first, else all: describing those that nobody asks for takes longer than
/// reading a file of a hundred settings.
void addCommands(CLI::App& program, Action& action, const std::vector<std::string>& arguments) {
    const std::string_view name = arguments.empty() ? "" : std::string_view(arguments.front());
    const auto* const named =
        std::find_if(commands.begin(), commands.end(),
                     [name](const Command& command) { return command.name == name; });
    if (named != commands.end()) return named->add(program, action);
    for (const Command& command : commands) command.add(program, action);
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
    addCommands(program, action, arguments);
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
