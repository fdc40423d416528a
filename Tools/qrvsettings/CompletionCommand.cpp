// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "Completions.h"
#include "Output.h"

namespace Tool {
namespace {

ExitCode printCandidates(const std::vector<std::string>& words) {
    const auto candidates = completionsOf(words);
    if (!candidates) return ExitCode::Done;
    if (candidates->empty()) throw Failure(ExitCode::NotSet, "nothing can stand there");
    std::string lines;
    for (const std::string& candidate : *candidates) lines += candidate + "\n";
    print(lines);
    return ExitCode::Done;
}

void addShell(CLI::App& command, const std::string& shell, const std::string& use, Action& action) {
    CLI::App& added = *command.add_subcommand(shell, "Print the script for " + shell);
    added.footer("Example: " + use);
    added.callback([shell, &action] {
        action = [shell] {
            print(completionScript(shell));
            return ExitCode::Done;
        };
    });
}

void addCandidates(CLI::App& command, Action& action) {
    CLI::App& added = *command.add_subcommand(
        "candidates", "Print what may stand in the place of the last word, a line each");
    const auto words = std::make_shared<std::vector<std::string>>();
    addTexts(added, "WORD", *words, "The words of a command line after its first, as far as typed");
    added.footer(
        "Prints nothing where the name of a file belongs; the exit code is 1 where nothing "
        "does.\n\n"
        "Example: qrvsettings completion candidates -- get CPU.M");
    added.callback([words, &action] { action = [words] { return printCandidates(*words); }; });
}

}  // namespace

void addCompletionCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "completion", "Print what makes a shell complete commands, options and key paths");
    command.require_subcommand(1);
    command.footer("Example: eval \"$(qrvsettings completion bash)\"");
    addShell(command, "bash", "eval \"$(qrvsettings completion bash)\"", action);
    addShell(command, "zsh", "eval \"$(qrvsettings completion zsh)\"", action);
    addShell(command, "fish", "qrvsettings completion fish | source", action);
    addCandidates(command, action);
}

}  // namespace Tool
