// SPDX-License-Identifier: MIT
// Prints the value of a setting.

#include <optional>

#include "Commands/CommandTable.h"
#include "Commands/PrintedValue.h"
#include "Commands/ProfileHint.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsLayer.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string keyPath;
    std::string layer = "effective";
    std::string profile;
    std::optional<std::string> fallback;
    bool json = false;
};

/// What `--default` gives: its text as it stands, or as a value that `set` would store.
PropertyListValue fallbackOf(const Options& options) {
    if (!options.json) return *options.fallback;
    return valueFromText(*options.fallback, "");
}

ExitCode get(const Options& options) {
    requireUTF8(options.keyPath);
    const ProfileScope scope(options.profile);
    const SettingsLayer layer(options.layer, scope);
    layer.open();
    PropertyListValue value = layer.value(options.keyPath);
    const bool isOfLayer = !value.isNull();
    if (!isOfLayer && options.fallback) value = fallbackOf(options);
    if (value.isNull()) throw Failure(Fault::NotSet, notSet(options.keyPath));
    if (options.json)
        print(jsonText(value) + "\n");
    else
        printValue(value);
    if (isOfLayer && options.layer == layerNames().front()) hintAfterRead(options.keyPath, scope);
    return ExitCode::Done;
}

Option fallbackOption(std::optional<std::string>& fallback) {
    return {
        .name = "--default",
        .description = "Print this where the setting has no value, and exit with code 0",
        .takes = Takes::Text,
        .store = [&fallback](const std::vector<std::string>& given) { fallback = given.front(); },
        .valueName = "VALUE"};
}

OptionList declare(Options& options) {
    return {keyPathArgument(options.keyPath), layerOption(options.layer),
            profileOption(options.profile), fallbackOption(options.fallback),
            jsonFlag(options.json, "Print every value as JSON, not only dictionaries and arrays")};
}

}  // namespace

Configuration configureGet() {
    return configured(declare, get);
}

}  // namespace Tool
