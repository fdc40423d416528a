// SPDX-License-Identifier: MIT
// Prints settings with their values.

#include <optional>

#include "Commands/CommandTable.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/ProfileScope.h"
#include "Settings/Records.h"
#include "Settings/SettingsLayer.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/SettingLines.h"

namespace Tool {
namespace {

struct Options {
    std::optional<std::string> prefix;
    std::string layer = "effective";
    std::string profile;
    bool keysOnly = false;
    bool records = false;
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

/// Records that nothing else was asked for are printed, and those of a tree for `import`.
NSDictionary chosenOf(const NSDictionary& leaves, const Options& options) {
    const bool isTree = options.json && !options.keysOnly && options.layer == "stored";
    if (options.records || (isTree && !options.prefix)) return leaves;
    NSDictionary chosen = withoutRecords(leaves, ProfileScope(options.profile));
    if (options.prefix && chosen.count() == 0) return leaves;
    if (leaves.count() != 0 && chosen.count() == 0)
        throw Failure(Fault::NotSet, "nothing is set but records of the store (--records)");
    return chosen;
}

ExitCode list(const Options& options) {
    if (options.prefix) requireUTF8(*options.prefix);
    const SettingsLayer layer(options.layer, ProfileScope(options.profile));
    layer.open();
    const bool isWhole = options.json && !options.keysOnly;
    const NSDictionary leaves =
        withPrefix(isWhole ? layer.leavesAndEmptyDictionaries() : layer.leaves(), options.prefix);
    if (leaves.count() == 0)
        throw Failure(Fault::NotSet,
                      "nothing is set" + (options.prefix ? atKeyPath(*options.prefix) : ""));
    print(textOf(chosenOf(leaves, options), options));
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    return {prefixArgument(options.prefix),
            flag("--keys", options.keysOnly, "Print key paths alone"),
            layerOption(options.layer),
            profileOption(options.profile),
            recordsFlag(options.records),
            jsonFlag(options.json,
                     "Print one JSON object, from key path to value; with --keys, one array")};
}

}  // namespace

Configuration configureList() {
    return configured(declare, list);
}

}  // namespace Tool
