// SPDX-License-Identifier: MIT
// Stores one setting.

#include "Commands/CommandTable.h"
#include "Commands/Leniency.h"
#include "Commands/ProfileHint.h"
#include "Commands/WritingCommands.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/InputFile.h"
#include "Process/StandardError.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/Differences.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string keyPath;
    std::string value;
    std::string type;
    std::string profile;
    Leniency leniency;
    WritingOptions writing;
    ChangeReport report;
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

/// Settings below a dictionary that a new value there changes or removes, with their values.
std::string replacedBelow(const std::string& keyPath, const PropertyListValue& replaced,
                          const PropertyListValue& value) {
    constexpr std::size_t mostNamed = 5;
    std::string text;
    std::size_t count = 0;
    for (const Difference& difference :
         differencesBetween(replaced.dictionary(), value.dictionary()))
        if (!difference.oldValue.isNull() && ++count <= mostNamed)
            text += (text.empty() ? "" : ", ") + keyPathText(keyPath + "." + difference.keyPath) +
                    " was " + shortened(jsonText(difference.oldValue));
    return count <= mostNamed ? text
                              : text + ", and " + std::to_string(count - mostNamed) + " more";
}

/// It is allowed, but a typo in the key path or the value looks the same.
void remarkWhatIsReplaced(const PropertyListValue& value, const PropertyListValue& replaced,
                          const std::string& keyPath) {
    const std::string below = replacedBelow(keyPath, replaced, value);
    if (!below.empty()) remark("this replaces what was stored below, " + keyPath + ": " + below);
}

ExitCode set(const Options& options) {
    requireUTF8(options.keyPath);
    const PropertyListValue value = valueOf(options);
    const ProfileScope scope(options.profile);
    openToWrite(options.writing);
    const PropertyListValue replaced = scope.stored(options.keyPath);
    PendingChanges changes;
    requireUsual(SettingObjections(), options.keyPath, value, scope, options.leniency);
    changes.set(value, options.keyPath, scope);
    const Changes saved = changes.save();
    remarkWhatIsReplaced(value, replaced, options.keyPath);
    remarkWhatStrictXMLRefuses({{options.keyPath, value}});
    if (options.report.json)
        printObject(saved);
    else
        remarkIfUnchanged(saved, options.keyPath);
    hintAfterWrite(options.keyPath, scope);
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option type =
        text("--type", options.type,
             "Read VALUE as bool, int, real, string, date (YYYY-MM-DDTHH:MM:SSZ, UTC), data "
             "(base64) or json");
    type.valueName = "NAME";
    type.words = valueTypes();
    type.takesOnlyWords = true;
    Option value = required(text("VALUE", options.value, "See below; - reads standard input"));
    value.takes = Takes::Value;
    return withWritingOptions(
        withLeniency({keyPathArgument(options.keyPath), value, type, profileOption(options.profile),
                      changesAsJSONFlag(options.report)},
                     options.leniency),
        options.writing);
}

}  // namespace

Configuration configureSet() {
    return configured(declare, set);
}

}  // namespace Tool
