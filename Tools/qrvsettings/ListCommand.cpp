// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

#include "CommandOptions.h"
#include "Commands.h"
#include "Input.h"
#include "JSON.h"
#include "KeyPaths.h"
#include "Layers.h"
#include "Output.h"
#include "SettingLines.h"

namespace Tool {
namespace {

struct Options {
    std::optional<std::string> prefix;
    std::string layer = "effective";
    std::string profile;
    bool keysOnly = false;
    bool json = false;
};

NSDictionary withPrefix(const NSDictionary& leaves, const std::optional<std::string>& prefix) {
    if (!prefix) return leaves;
    NSMutableDictionary chosen;
    for (const auto& [keyPath, value] : leaves)
        if (isAtOrBelow(keyPath, *prefix)) chosen.setObjectForKey(value, keyPath);
    return chosen;
}

std::string textOf(const NSDictionary& leaves, const Options& options) {
    if (!options.keysOnly) return options.json ? jsonText(leaves) + "\n" : settingLines(leaves);
    return options.json ? jsonText(keyPathsOf(leaves)) + "\n" : keyPathLines(leaves);
}

ExitCode list(const Options& options) {
    if (options.prefix) requireUTF8(*options.prefix);
    const Layer layer(options.layer, Scope(options.profile));
    layer.open();
    const NSDictionary leaves = withPrefix(layer.leaves(), options.prefix);
    if (leaves.count() == 0)
        throw Failure(ExitCode::NotSet,
                      "nothing is set" + (options.prefix ? ", " + *options.prefix : ""));
    print(textOf(leaves, options));
    return ExitCode::Done;
}

}  // namespace

void addListCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "list", "Print settings, a line each: key path, tab, value as JSON");
    const auto options = std::make_shared<Options>();
    const auto prefix = std::make_shared<std::string>();
    const CLI::Option* prefixOption =
        addText(command, "PREFIX", *prefix, "Only this key path and those that lead through it");
    command.add_flag("--keys", options->keysOnly, "Print key paths alone");
    addLayer(command, options->layer);
    addProfile(command, options->profile);
    addJSON(command, options->json,
            "Print one JSON object, from key path to value; with --keys, one array");
    command.footer(
        "Key paths are in the order of their bytes. One that holds control characters or begins\n"
        "with a quotation mark is printed as a JSON string. Those of a profile are printed as the\n"
        "application asks for them, without the profile's own place.\n\n"
        "Example: qrvsettings list CPU --layer stored");
    command.callback([options, prefix, prefixOption, &action] {
        if (prefixOption->count() > 0) options->prefix = *prefix;
        action = [options] { return list(*options); };
    });
}

}  // namespace Tool
