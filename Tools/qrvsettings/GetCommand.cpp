// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "Input.h"
#include "JSON.h"
#include "Layers.h"
#include "Output.h"
#include "Slips.h"
#include "ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string keyPath;
    std::string layer = "effective";
    std::string profile;
    bool json = false;
};

ExitCode get(const Options& options) {
    requireUTF8(options.keyPath);
    const Layer layer(options.layer, Scope(options.profile));
    layer.open();
    const PropertyListValue value = layer.value(options.keyPath);
    if (value.isNull())
        throw Failure(ExitCode::NotSet,
                      "not set, " + options.keyPath + didYouMean(options.keyPath));
    print((options.json ? jsonText(value) : bareText(value)) + "\n");
    return ExitCode::Done;
}

}  // namespace

void addGetCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand("get", "Print the value of a setting");
    const auto options = std::make_shared<Options>();
    addText(command, "KEYPATH", options->keyPath, "Keys joined by dots")->required();
    addLayer(command, options->layer);
    addProfile(command, options->profile);
    addJSON(command, options->json, "Print every value as JSON, not only dictionaries and arrays");
    command.footer("Example: qrvsettings get CPU.Menubar.Enabled");
    command.callback([options, &action] { action = [options] { return get(*options); }; });
}

}  // namespace Tool
