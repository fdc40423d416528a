// SPDX-License-Identifier: MIT
#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "CommandOptions.h"
#include "Commands.h"
#include "Failure.h"
#include "Output.h"

namespace Tool {
namespace {

void describe(CLI::App& program) {
    program.name("qrvsettings");
    program.set_version_flag("--version", "qrvsettings " QRV_VERSION);
    program.require_subcommand(1);
    program.footer(
        "Exit codes: 0 done; 1 not set, not found, different (diff) or in need of a person "
        "(doctor);\n"
        "2 wrong usage; 3 the settings file cannot be read or is damaged; 4 settings or output\n"
        "could not be written; 5 a value that is not what was asked for; 6 timed out.\n\n"
        "Example: qrvsettings set CPU.Menubar.Mode.HistoryGraph.Width 40");
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
    Command{"search", addSearchCommand},
    Command{"explain", addExplainCommand},
    Command{"diff", addDiffCommand},
    Command{"export", addExportCommand},
    Command{"color", addColorCommand},
    Command{"appearance", addAppearanceCommand},
    Command{"profiles", addProfilesCommand},
    Command{"apply", addApplyCommand},
    Command{"import", addImportCommand},
    Command{"watch", addWatchCommand},
    Command{"path", addPathCommand},
    Command{"doctor", addDoctorCommand},
    Command{"completion", addCompletionCommand},
};

void addQuietBelow(CLI::App& program) {
    addQuiet(program);
    for (CLI::App* command : program.get_subcommands([](CLI::App*) { return true; }))
        addQuietBelow(*command);
}

void addAllCommands(CLI::App& program, Action& action) {
    for (const Command& command : commands) command.add(program, action);
}

/// The one that is named, else all: describing those that nobody asks for takes longer than
/// reading a file of a hundred settings.
void addCommands(CLI::App& program, Action& action, const std::vector<std::string>& arguments) {
    const auto name = std::find_if(arguments.begin(), arguments.end(),
                                   [](const std::string& word) { return !word.starts_with('-'); });
    const auto* const named = std::find_if(
        commands.begin(), commands.end(),
        [&](const Command& command) { return name != arguments.end() && command.name == *name; });
    if (named != commands.end())
        named->add(program, action);
    else
        addAllCommands(program, action);
}

/// The word in the place of a command, when there is no such command.
std::optional<std::string> unknownCommand(const std::vector<std::string>& arguments) {
    if (arguments.empty() || arguments.front().starts_with('-')) return std::nullopt;
    const bool isKnown = std::any_of(commands.begin(), commands.end(), [&](const Command& command) {
        return command.name == arguments.front();
    });
    return isKnown ? std::nullopt : std::optional(arguments.front());
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

void describeProgram(CLI::App& program, Action& action) {
    describe(program);
    addAllCommands(program, action);
    addQuietBelow(program);
}

ExitCode runCommandLine(const std::vector<std::string>& arguments) {
    CLI::App program("Read and change the settings of the system monitor");
    Action action;
    describe(program);
    addCommands(program, action, arguments);
    addQuietBelow(program);
    try {
        program.parse(forParser(arguments));
    } catch (const CLI::CallForHelp&) {
        return printed(program.help());
    } catch (const CLI::CallForVersion& version) {
        return printed(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        if (const auto word = unknownCommand(arguments))
            throw Failure(ExitCode::WrongUsage,
                          "there is no such command, " + *word + " (see qrvsettings --help)");
        throw wrongUsage(program, error);
    }
    return action();
}

}  // namespace Tool
