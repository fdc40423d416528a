// SPDX-License-Identifier: MIT
#pragma once

// The commands. Each adds itself to the parser; when the command line names it, it sets the action.

#include <functional>

#include "Failure.h"

namespace CLI {
class App;
}

namespace Tool {

/// Does what the command line asks for. Throws Failure.
using Action = std::function<ExitCode()>;

void addGetCommand(CLI::App& program, Action& action);
void addSetCommand(CLI::App& program, Action& action);
void addUnsetCommand(CLI::App& program, Action& action);
void addListCommand(CLI::App& program, Action& action);
void addSearchCommand(CLI::App& program, Action& action);
void addExplainCommand(CLI::App& program, Action& action);
void addDiffCommand(CLI::App& program, Action& action);
void addExportCommand(CLI::App& program, Action& action);
void addColorCommand(CLI::App& program, Action& action);
void addAppearanceCommand(CLI::App& program, Action& action);
void addProfilesCommand(CLI::App& program, Action& action);
void addApplyCommand(CLI::App& program, Action& action);
void addImportCommand(CLI::App& program, Action& action);
void addWatchCommand(CLI::App& program, Action& action);
void addPathCommand(CLI::App& program, Action& action);
void addDoctorCommand(CLI::App& program, Action& action);
void addCompletionCommand(CLI::App& program, Action& action);

}  // namespace Tool
