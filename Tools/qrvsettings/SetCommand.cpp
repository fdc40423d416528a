// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "Failure.h"
#include "Input.h"
#include "QRVSettings/QRVSettings.h"
#include "Saving.h"
#include "Scope.h"
#include "SettingsFile.h"
#include "ValueText.h"

namespace Tool {
namespace {

constexpr const char* valueHelp =
    R"(VALUE: true and false are booleans, 40 is an integer, 0.5 and 1e3 are reals, text that
begins with {, [ or " is JSON, and anything else is a string. Of standard input the newline
at its end is left out, if there is one. A value that begins with a dash and is no number
goes after --.

In JSON, {"$date":"2020-01-01T00:00:00Z"} is a date, {"$data":"AQI="} is data (base64),
{"$real":"nan"} (inf, -inf) is a real, and {"$dictionary":{...}} is a dictionary that looks
like one of these.

Example: qrvsettings set CPU.Menubar.Mode.HistoryGraph.Width 40)";

struct Options {
    std::string keyPath;
    std::string value;
    std::string type;
    std::string profile;
    DamagedFile damagedFile = DamagedFile::Refused;
};

std::string textOf(const Options& options) {
    if (options.value != "-") return options.value;
    std::string text = standardInput();
    if (text.ends_with('\n')) text.pop_back();
    return text;
}

PropertyListValue valueOf(const Options& options) {
    PropertyListValue value = valueFromText(textOf(options), options.type);
    requireStorable(value);
    return value;
}

/// Nothing forbids it, but a slip of the key path or the value looks the same.
void tellWhatIsUnusual(const PropertyListValue& value, const PropertyListValue& replaced,
                       const std::string& keyPath) {
    if (replaced.isDictionary() && !value.isDictionary())
        remark("this replaces all settings that were stored below, " + keyPath);
    const PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(keyPath);
    if (!byDefault.isNull() && !byDefault.isSameKindAs(value))
        remark("the default is of another kind, " + kindWord(byDefault) + ", " + keyPath);
}

ExitCode set(const Options& options) {
    requireUTF8(options.keyPath);
    const PropertyListValue value = valueOf(options);
    const Scope scope(options.profile);
    const std::string storedKeyPath = scope.storedKeyPath(options.keyPath);
    requireWritableSettingsFile(options.damagedFile);
    const PropertyListValue replaced = scope.stored(options.keyPath);
    save({storedKeyPath}, [&] { scope.set(value, options.keyPath); });
    tellWhatIsNotKept(value, storedKeyPath);
    tellWhatIsUnusual(value, replaced, options.keyPath);
    return ExitCode::Done;
}

}  // namespace

void addSetCommand(CLI::App& program, Action& action) {
    CLI::App& command =
        *program.add_subcommand("set", "Store a setting; returns when the settings file holds it");
    const auto options = std::make_shared<Options>();
    addText(command, "KEYPATH", options->keyPath, "Keys joined by dots")->required();
    addText(command, "VALUE", options->value, "See below; - reads standard input")->required();
    addType(command, options->type);
    addProfile(command, options->profile);
    addReplaceDamaged(command, options->damagedFile);
    command.footer(valueHelp);
    command.callback([options, &action] { action = [options] { return set(*options); }; });
}

}  // namespace Tool
