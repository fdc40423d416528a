// SPDX-License-Identifier: MIT
// The one source that includes the parser, which takes longer to compile than all commands.

#include "Parser/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include "Commands/CommandTable.h"
#include "Options/Command.h"
#include "Process/ExitCode.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"

namespace Tool {
namespace {

/// The parser has its own meaning for `-.5`, `-inf`, `++` and `[1,2]`. Such arguments pass through
/// it with a mark in front that no argument can hold.
constexpr char mark = '\0';

bool wantsMark(std::string_view argument) {
    constexpr std::array<std::string_view, 5> starts = {"-.", "-inf", "-nan", "+", "["};
    return std::any_of(starts.begin(), starts.end(),
                       [argument](std::string_view start) { return argument.starts_with(start); });
}

std::string withoutMarks(std::string text) {
    std::erase(text, mark);
    return text;
}

/// Marked, and in reverse order, as the parser requires.
std::vector<std::string> forParser(const std::vector<std::string>& arguments) {
    std::vector<std::string> reversed;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        reversed.push_back(wantsMark(*argument) ? mark + *argument : *argument);
    return reversed;
}

CLI::Option* addToParser(CLI::App& command, const Option& option) {
    if (option.takes == Takes::Nothing)
        return command.add_flag_callback(
            option.name, [store = option.store] { store({}); }, option.description);
    if (option.isRepeated)
        return command.add_option_function<std::vector<std::string>>(option.name, option.store,
                                                                     option.description);
    return command.add_option_function<std::string>(
        option.name, [store = option.store](const std::string& text) { store({text}); },
        option.description);
}

CLI::Option* add(CLI::App& command, const Option& option) {
    CLI::Option* const added = addToParser(command, option);
    if (option.takes == Takes::Nothing) return added;
    added->type_name(option.valueName)->transform([](const std::string& text) {
        return withoutMarks(text);
    });
    if (option.takesOnlyWords) added->check(CLI::IsMember(option.words));
    if (option.objection) added->check(option.objection);
    if (option.isRequired) added->required();
    if (!option.byDefault.empty()) added->default_str(option.byDefault);
    return added;
}

void addAll(CLI::App& command, const OptionList& options) {
    std::map<std::string, CLI::Option*> added;
    for (const Option& option : options) {
        added[option.name] = add(command, option);
        if (!option.excludes.empty()) added[option.name]->excludes(added.at(option.excludes));
    }
}

void addPart(CLI::App& parent, const Command& command, Action& action);

/// Adds all but the name.
void describe(CLI::App& described, const Command& command, Action& action) {
    described.footer(std::string(command.footer));
    for (const Command& part : command.parts) addPart(described, part, action);
    if (!command.parts.empty()) described.require_subcommand(1);
    if (command.configure != nullptr) {
        const Configuration configuration = command.configure();
        addAll(described, configuration.options);
        described.callback([chosen = configuration.action, &action] { action = chosen; });
    }
    addAll(described, optionsEverywhere());
}

void addPart(CLI::App& parent, const Command& command, Action& action) {
    describe(*parent.add_subcommand(std::string(command.name), std::string(command.summary)),
             command, action);
}

std::string meaningsOfExitCodes() {
    std::string text = "Exit codes:\n";
    for (const auto& [code, meaning] : exitCodes)
        text.append("  ")
            .append(std::to_string(static_cast<int>(code)))
            .append("  ")
            .append(meaning) += '\n';
    return text;
}

const std::string* commandWord(const std::vector<std::string>& arguments) {
    const auto word = std::find_if(arguments.begin(), arguments.end(),
                                   [](const std::string& one) { return !one.starts_with('-'); });
    return word == arguments.end() ? nullptr : &*word;
}

/// Describes the command that is named, otherwise all: to describe all takes longer than to read a
/// file of a hundred settings.
void describeProgram(CLI::App& parser, Action& action, const std::vector<std::string>& arguments) {
    Command described = program();
    const std::string* const word = commandWord(arguments);
    const Command* const named = word == nullptr ? nullptr : described.partNamed(*word);
    if (named != nullptr) described.parts = {named, 1};
    parser.name(std::string(described.name));
    parser.set_version_flag("--version", "qrvsettings " QRV_VERSION);
    describe(parser, described, action);
    parser.footer(meaningsOfExitCodes() + "\n" + std::string(described.footer));
}

ExitCode refuse(const std::string& why) {
    say(why);
    return ExitCode::WrongUsage;
}

ExitCode wrongUsage(const CLI::App& parser, const CLI::ParseError& error) {
    std::string command = parser.get_name();
    for (const CLI::App* chosen : parser.get_subcommands()) command += " " + chosen->get_name();
    return refuse(withoutMarks(error.what()) + " (see " + command + " --help)");
}

ExitCode printed(const std::string& text) {
    print(text);
    return ExitCode::Done;
}

}  // namespace

ExitCode runCommandLine(const std::vector<std::string>& arguments) {
    CLI::App parser{std::string(program().summary)};
    Action action;
    describeProgram(parser, action, arguments);
    try {
        parser.parse(forParser(arguments));
    } catch (const CLI::CallForHelp&) {
        return printed(parser.help());
    } catch (const CLI::CallForVersion& version) {
        return printed(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        const bool isUnknown = !arguments.empty() && !arguments.front().starts_with('-') &&
                               program().partNamed(arguments.front()) == nullptr;
        return isUnknown ? refuse("there is no such command, " + arguments.front() +
                                  " (see qrvsettings --help)")
                         : wrongUsage(parser, error);
    }
    return action();
}

}  // namespace Tool
