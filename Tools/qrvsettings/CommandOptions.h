// SPDX-License-Identifier: MIT
#pragma once

// What the command line parser gets to see, and what several commands ask of it.

#include <string>
#include <vector>

#include "SettingsFile.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Tool {

/// The parser takes `-.5`, `-inf`, `++` and `[1,2]` for something of its own. Such arguments go
/// through it with a mark in front that no argument can hold.
std::string marked(const std::string& argument);
std::string withoutMarks(std::string text);

/// @name Texts as they were given, marks removed
/// @{
CLI::Option* addText(CLI::App& command, const std::string& name, std::string& text,
                     const std::string& description);
CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description);
/// @}

/// What an option takes, where that is one of a few words.
const std::vector<std::string>& layerNames();
const std::vector<std::string>& typeNames();

void addLayer(CLI::App& command, std::string& layer);
void addType(CLI::App& command, std::string& type);
/// For the program and every command: it may stand anywhere.
void addQuiet(CLI::App& command);
void addJSON(CLI::App& command, bool& json, const std::string& description);

/// How a command prints changes: as lines for people, `--json` or `--as-commands`.
enum class Form { Lines, JSON, Commands };
struct FormDescriptions {
    std::string json;
    std::string commands;
};
void addForm(CLI::App& command, Form& form, const FormDescriptions& descriptions);

/// `profile` stays empty where none is named.
CLI::Option* addProfile(CLI::App& command, std::string& profile);
void addReplaceDamaged(CLI::App& command, DamagedFile& damagedFile);

}  // namespace Tool
