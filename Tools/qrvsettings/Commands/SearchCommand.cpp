// SPDX-License-Identifier: MIT
// Prints the settings that contain a text.

#include <algorithm>

#include "Commands/CommandTable.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Settings/ProfileScope.h"
#include "Settings/Records.h"
#include "Settings/SettingsLayer.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/LetterCase.h"
#include "Text/SettingLines.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string text;
    std::string layer = "effective";
    std::string profile;
    bool keysOnly = false;
    bool valuesOnly = false;
    bool records = false;
    bool json = false;
};

bool contains(std::string_view text, const std::string& lowercaseText) {
    return lowercase(std::string(text)).find(lowercaseText) != std::string::npos;
}

/// Searches scalars as `get` prints them, and keys of dictionaries within arrays.
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
    const ProfileScope scope(options.profile);
    const SettingsLayer layer(options.layer, scope);
    layer.open();
    const NSDictionary all = found(layer.leaves(), options);
    const NSDictionary matches = options.records ? all : withoutRecords(all, scope);
    if (matches.count() == 0)
        throw Failure(Fault::NotSet, "not found, " + options.text +
                                         (all.count() == 0 ? ""
                                                           : ", but in records of the store "
                                                             "(--records)"));
    print(options.json ? jsonText(matches) + "\n" : settingLines(matches));
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option values = flag("--values", options.valuesOnly, "Search values only");
    values.excludes = "--keys";
    return {required(text("TEXT", options.text, "What to search for; A to Z match a to z too")),
            flag("--keys", options.keysOnly, "Search key paths only"),
            values,
            recordsFlag(options.records),
            layerOption(options.layer),
            profileOption(options.profile),
            jsonFlag(options.json, "Print one JSON object, from key path to value")};
}

}  // namespace

Configuration configureSearch() {
    return configured(declare, search);
}

}  // namespace Tool
