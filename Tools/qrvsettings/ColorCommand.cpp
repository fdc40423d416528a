// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "ColorText.h"
#include "CommandOptions.h"
#include "Commands.h"
#include "Input.h"
#include "Output.h"
#include "Platform/System/Terminal.h"
#include "QRVSettings/QRVSettings.h"
#include "Saving.h"
#include "Scope.h"
#include "SettingsFile.h"
#include "StartUp.h"
#include "ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string keyPath;
    std::string profile;
    std::vector<std::string> color;
    bool hexadecimal = false;
    DamagedFile damagedFile = DamagedFile::Refused;
};

bool isSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool has24Bits() {
    const char* const colors = std::getenv("COLORTERM");
    return colors != nullptr &&
           (std::string_view(colors) == "truecolor" || std::string_view(colors) == "24bit");
}

bool showsColors() {
    const char* const terminal = std::getenv("TERM");
    return QRVPlatform::standardOutputIsTerminal() && !isSet("NO_COLOR") && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

/// As the store tells a colour's text from another.
bool isColorText(const PropertyListValue& value) {
    const std::string_view text = value.stringView();
    return value.isString() && std::count(text.begin(), text.end(), ' ') == 3;
}

NSColor colorOf(const Scope& scope, const std::string& keyPath) {
    scope.extendDefault(keyPath);
    const PropertyListValue color = QRVSettingsColorForKeyPath(scope.storedKeyPath(keyPath));
    const PropertyListValue stored = scope.stored(keyPath);
    const PropertyListValue present =
        stored.isNull() ? QRVSettingsDefaultForKeyPath(keyPath) : stored;
    if (present.isNull()) throw Failure(ExitCode::NotSet, "not set, " + keyPath);
    if (color.isNull())
        throw Failure(ExitCode::WrongValue, "not a colour, but " + kindName(present) + ": " +
                                                shortened(bareText(present)) + ", " + keyPath);
    if (!isColorText(present))
        remark("what is stored is not a colour, so this is the default, " + keyPath);
    return color.color();
}

ExitCode get(const Options& options) {
    requireUTF8(options.keyPath);
    const Scope scope(options.profile);
    requireReadableSettingsFile();
    startUp();
    const NSColor color = colorOf(scope, options.keyPath);
    const std::string text = options.hexadecimal ? hexadecimalColorText(color) : colorText(color);
    print(text + (showsColors() ? "  " + swatch(color, has24Bits()) : "") + "\n");
    return ExitCode::Done;
}

bool isUsual(double component) {
    return component >= 0 && component <= 1;
}

ExitCode set(const Options& options) {
    requireUTF8(options.keyPath);
    const NSColor color = colorFromTexts(options.color);
    const Scope scope(options.profile);
    const std::string storedKeyPath = scope.storedKeyPath(options.keyPath);
    requireWritableSettingsFile(options.damagedFile);
    save({storedKeyPath}, [&] {
        scope.extendDefault(options.keyPath);
        QRVSettingsSetColorForKeyPath(color, storedKeyPath);
    });
    if (!isUsual(color.redComponent) || !isUsual(color.greenComponent) ||
        !isUsual(color.blueComponent) || !isUsual(color.alphaComponent))
        remark("stored as it is, though not all components are from 0 to 1, " + options.keyPath);
    return ExitCode::Done;
}

ExitCode unset(const Options& options) {
    requireUTF8(options.keyPath);
    const Scope scope(options.profile);
    const std::string storedKeyPath = scope.storedKeyPath(options.keyPath);
    requireWritableSettingsFile(options.damagedFile);
    if (QRVSettingsStoredObjectForKeyPath(storedKeyPath).isNull())
        throw Failure(ExitCode::NotSet, "not set, " + options.keyPath);
    save({storedKeyPath}, [&] { QRVSettingsSetColorForKeyPath(nullptr, storedKeyPath); });
    return ExitCode::Done;
}

CLI::App& addOperation(CLI::App& command, const std::string& name, const std::string& description,
                       const std::shared_ptr<Options>& options, Action& action,
                       ExitCode (*operation)(const Options&)) {
    CLI::App& added = *command.add_subcommand(name, description);
    addText(added, "KEYPATH", options->keyPath, "Keys joined by dots")->required();
    addProfile(added, options->profile);
    added.footer("Example: qrvsettings color " + name + " Network.Menubar.Mode.Status.NoIP.Color" +
                 (name == "set" ? " '#ffc600'" : ""));
    added.callback([options, &action, operation] {
        action = [options, operation] { return operation(*options); };
    });
    return added;
}

}  // namespace

void addColorCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand("color", "Read or write a colour");
    command.require_subcommand(1);
    command.footer("Example: qrvsettings color get Network.Menubar.Mode.Status.NoIP.Color");
    const auto options = std::make_shared<Options>();

    CLI::App& getCommand =
        addOperation(command, "get",
                     "Print red, green, blue and alpha, from 0 to 1; on a terminal the colour too",
                     options, action, get);
    getCommand.add_flag("--hex", options->hexadecimal, "Print #rrggbbaa, cut to what that can say");

    CLI::App& setCommand =
        addOperation(command, "set", "Store a colour; returns when the settings file holds it",
                     options, action, set);
    addTexts(setCommand, "COLOR", options->color,
             "R G B [A], numbers usually from 0 to 1, or '#rrggbb' or '#rrggbbaa'")
        ->required();
    addReplaceDamaged(setCommand, options->damagedFile);

    CLI::App& unsetCommand =
        addOperation(command, "unset", "Remove a stored colour, so that the default holds again",
                     options, action, unset);
    addReplaceDamaged(unsetCommand, options->damagedFile);
}

}  // namespace Tool
