// SPDX-License-Identifier: MIT
#include "CommandOptions.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <string_view>

#include "Failure.h"

namespace Tool {
namespace {

constexpr char mark = '\0';

bool wantsMark(std::string_view argument) {
    constexpr std::array<std::string_view, 5> starts = {"-.", "-inf", "-nan", "+", "["};
    return std::any_of(starts.begin(), starts.end(),
                       [argument](std::string_view start) { return argument.starts_with(start); });
}

CLI::Option* addPlain(CLI::Option* option) {
    return option->type_name("")->transform(
        [](const std::string& text) { return withoutMarks(text); });
}

}  // namespace

std::string marked(const std::string& argument) {
    return wantsMark(argument) ? mark + argument : argument;
}

std::string withoutMarks(std::string text) {
    std::erase(text, mark);
    return text;
}

CLI::Option* addText(CLI::App& command, const std::string& name, std::string& text,
                     const std::string& description) {
    return addPlain(command.add_option(name, text, description));
}

CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description) {
    return addPlain(command.add_option(name, texts, description));
}

const std::vector<std::string>& layerNames() {
    static const auto& names = *new std::vector<std::string>{"effective", "stored", "default"};
    return names;
}

const std::vector<std::string>& typeNames() {
    static const auto& names =
        *new std::vector<std::string>{"bool", "int", "real", "string", "date", "data", "json"};
    return names;
}

void addLayer(CLI::App& command, std::string& layer) {
    command
        .add_option("--layer", layer,
                    "effective: stored values over the defaults, as the application sees them; "
                    "stored: the settings file alone; default: the built-in defaults alone")
        ->type_name("NAME")
        ->check(CLI::IsMember(layerNames()))
        ->capture_default_str();
}

void addType(CLI::App& command, std::string& type) {
    command
        .add_option("--type", type,
                    "Read VALUE as this; a date is YYYY-MM-DDTHH:MM:SSZ (UTC), data is base64")
        ->type_name("NAME")
        ->check(CLI::IsMember(typeNames()));
}

void addQuiet(CLI::App& command) {
    command.add_flag_callback("--quiet", keepQuiet,
                              "Say nothing on standard error but why the exit code is not 0");
}

void addJSON(CLI::App& command, bool& json, const std::string& description) {
    command.add_flag("--json", json, description);
}

void addForm(CLI::App& command, Form& form, const FormDescriptions& descriptions) {
    CLI::Option* json = command.add_flag_callback(
        "--json", [&form] { form = Form::JSON; }, descriptions.json);
    command
        .add_flag_callback(
            "--as-commands", [&form] { form = Form::Commands; }, descriptions.commands)
        ->excludes(json);
}

CLI::Option* addProfile(CLI::App& command, std::string& profile) {
    return addText(
               command, "--profile", profile,
               "Work on the settings of this profile: what is not stored there has its default, "
               "whatever is stored elsewhere")
        ->type_name("NAME")
        ->check([](const std::string& name) {
            return std::string(name.empty() ? "the name of the profile is empty" : "");
        });
}

void addReplaceDamaged(CLI::App& command, DamagedFile& damagedFile) {
    command.add_flag_callback(
        "--replace-damaged", [&damagedFile] { damagedFile = DamagedFile::Replaced; },
        "Go on where the settings file is damaged: it counts as empty, and its bytes "
        "are kept beside the new file");
}

}  // namespace Tool
