// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "Input.h"
#include "JSON.h"
#include "Layers.h"
#include "LetterCase.h"
#include "Output.h"
#include "SettingLines.h"
#include "ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string text;
    std::string layer = "effective";
    std::string profile;
    bool keysOnly = false;
    bool valuesOnly = false;
    bool json = false;
};

bool contains(std::string_view text, const std::string& lowercaseText) {
    return lowercase(std::string(text)).find(lowercaseText) != std::string::npos;
}

/// In one of the scalars as `get` prints them, or in a key of a dictionary within an array.
bool holds(const PropertyListValue& value, const std::string& lowercaseText) {
    if (value.isArray()) {
        for (const PropertyListValue& element : value.array())
            if (holds(element, lowercaseText)) return true;
        return false;
    }
    if (value.isDictionary()) {
        for (const auto& [key, entry] : value.dictionary())
            if (contains(key, lowercaseText) || holds(entry, lowercaseText)) return true;
        return false;
    }
    return contains(bareText(value), lowercaseText);
}

NSDictionary found(const NSDictionary& leaves, const Options& options) {
    const std::string text = lowercase(options.text);
    NSMutableDictionary matches;
    for (const auto& [keyPath, value] : leaves)
        if ((!options.valuesOnly && contains(keyPath, text)) ||
            (!options.keysOnly && holds(value, text)))
            matches.setObjectForKey(value, keyPath);
    return matches;
}

ExitCode search(const Options& options) {
    requireUTF8(options.text);
    const Layer layer(options.layer, Scope(options.profile));
    layer.open();
    const NSDictionary matches = found(layer.leaves(), options);
    if (matches.count() == 0) throw Failure(ExitCode::NotSet, "not found, " + options.text);
    print(options.json ? jsonText(matches) + "\n" : settingLines(matches));
    return ExitCode::Done;
}

}  // namespace

void addSearchCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "search", "Print the settings whose key path or value holds a text, as list does");
    const auto options = std::make_shared<Options>();
    addText(command, "TEXT", options->text, "What to look for; A to Z are like a to z")->required();
    CLI::Option* const keys =
        command.add_flag("--keys", options->keysOnly, "Look into key paths only");
    command.add_flag("--values", options->valuesOnly, "Look into values only")->excludes(keys);
    addLayer(command, options->layer);
    addProfile(command, options->profile);
    addJSON(command, options->json, "Print one JSON object, from key path to value");
    command.footer(
        "The value of an array is all that is in it. The exit code is 1 where nothing is found.\n\n"
        "Example: qrvsettings search color --keys");
    command.callback([options, &action] { action = [options] { return search(*options); }; });
}

}  // namespace Tool
