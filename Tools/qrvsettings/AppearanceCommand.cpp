// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "LetterCase.h"
#include "Output.h"
#include "Platform/System/NSAppearance.h"
#include "QRVSettings/QRVSettings.h"
#include "Saving.h"
#include "SettingsFile.h"
#include "StartUp.h"
#include "ValueText.h"

namespace Tool {
namespace {

constexpr const char* keyPath = "MenubarCurrentApperance";

/// The platform's name for what the user calls by a word or by such a name.
std::string appearanceName(const std::string& name) {
    if (lowercase(name) == "dark") return std::string(NSAppearanceNameDarkAqua);
    if (lowercase(name) == "light") return "NSAppearanceNameAqua";
    if (name.starts_with("NSAppearanceName")) return name;
    throw Failure(ExitCode::WrongValue,
                  "neither dark, light nor the name of an appearance: " + shortened(name));
}

ExitCode get() {
    requireReadableSettingsFile();
    startUp();
    const PropertyListValue appearance = QRVSettingsCurrentAppearance();
    if (appearance.isNull()) throw Failure(ExitCode::NotSet, std::string("not set, ") + keyPath);
    print(bareText(appearance) + "\n");
    return ExitCode::Done;
}

struct Options {
    std::string name;
    DamagedFile damagedFile = DamagedFile::Refused;
};

ExitCode set(const Options& options) {
    const std::string platformName = appearanceName(options.name);
    requireWritableSettingsFile(options.damagedFile);
    save({keyPath}, [&] { QRVSettingsSetCurrentAppearance(platformName); });
    print(bareText(QRVSettingsCurrentAppearance()) + "\n");
    return ExitCode::Done;
}

}  // namespace

void addAppearanceCommand(CLI::App& program, Action& action) {
    CLI::App& command =
        *program.add_subcommand("appearance", "Read or write the appearance of the menu bar");
    command.require_subcommand(1);
    command.footer("Example: qrvsettings appearance set dark");

    CLI::App& getCommand = *command.add_subcommand("get", "Print it: Dark or Light");
    getCommand.footer("Example: qrvsettings appearance get");
    getCommand.callback([&action] { action = get; });

    CLI::App& setCommand = *command.add_subcommand("set", "Store it, and print what is stored");
    const auto options = std::make_shared<Options>();
    addText(setCommand, "NAME", options->name,
            "dark, light, or the platform's name of an appearance")
        ->required();
    addReplaceDamaged(setCommand, options->damagedFile);
    setCommand.footer(
        "Of the platform's names NSAppearanceNameDarkAqua, NSAppearanceNameVibrantDark,\n"
        "NSAppearanceNameAccessibilityHighContrastDarkAqua and\n"
        "NSAppearanceNameAccessibilityHighContrastVibrantDark are dark, all others are light.\n\n"
        "Example: qrvsettings appearance set NSAppearanceNameVibrantDark");
    setCommand.callback([options, &action] { action = [options] { return set(*options); }; });
}

}  // namespace Tool
