// SPDX-License-Identifier: MIT
// Prints what is known of settings.

#include <algorithm>
#include <optional>

#include "Commands/CommandTable.h"
#include "Commands/FactLines.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "Process/StandardStreams.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/PrintableText.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingDescription.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/ValueText.h"
#include "Text/WrappedText.h"

namespace Tool {
namespace {

struct Options {
    std::optional<std::string> prefix;
    std::string profile;
    bool json = false;
};

/// What the application reads now, and where it comes from.
struct PresentValue {
    PropertyListValue value;
    std::string layer;
    std::string profile;  ///< empty for a setting of the application
};

/// The profile whose settings are meant; empty for those of the application.
std::string profileOf(const KnownSetting& setting, const std::string& profile) {
    const bool isOfProfile = setting.scope == QRVSettingScope::Profile;
    return profile.empty() && isOfProfile ? "default" : profile;
}

PresentValue presentValueOf(const KnownSetting& setting, const Options& options) {
    const std::string profile = profileOf(setting, options.profile);
    const ProfileScope scope(profile);
    const PropertyListValue value = scope.effective(setting.keyPath);
    const auto from = [&](const char* layer) { return PresentValue{value, layer, profile}; };
    if (QRVSettingsIsLocked(scope.storedKeyPath(setting.keyPath))) return from("site");
    if (!scope.stored(setting.keyPath).isNull())
        return from(profile.empty() ? "stored" : "profile");
    return from(value.isNull() ? "none" : "default");
}

std::string valueInWords(const PresentValue& present) {
    if (present.value.isNull()) return "not set";
    if (present.layer == "default") return "the default";
    if (present.layer == "site") return jsonText(present.value) + " (locked by the site)";
    return jsonText(present.value) + " (stored" +
           (present.profile.empty() ? "" : " in the profile " + keyPathText(present.profile)) + ")";
}

std::string factsOf(const KnownSetting& setting, const Options& options) {
    std::vector<Fact> facts = {{"key path", keyPathText(setting.keyPath)}};
    const auto add = [&facts](const std::string& name, const std::string& text) {
        if (!text.empty()) facts.push_back({name, printable(text)});
    };
    add("what", setting.sentence);
    add("kind", kindInWords(setting.kind));
    for (const KnownChoice& choice : setting.choices)
        add("choice",
            bareText(choice.value) + (choice.sentence.empty() ? "" : ": " + choice.sentence));
    const std::string range = rangeInWords(setting);
    add("range", range);
    if (range.empty()) add("unit", setting.unit);
    const PropertyListValue byDefault = knownDefault(setting);
    add("default", byDefault.isNull() ? "none" : jsonText(byDefault));
    add("scope", scopeInWords(setting.scope));
    for (const std::string& earlier : setting.renamedFrom) add("earlier", keyPathText(earlier));
    add("value", valueInWords(presentValueOf(setting, options)));
    add("list", setting.file);
    return factLines(facts, widthOfStandardOutput());
}

NSArray choicesOf(const KnownSetting& setting) {
    NSMutableArray choices;
    for (const KnownChoice& choice : setting.choices)
        choices.addObject(
            NSDictionary{{"value", choice.value}, {"sentence", orNullMarker(choice.sentence)}});
    return choices;
}

NSDictionary objectOf(const KnownSetting& setting, const Options& options) {
    NSMutableArray earlier;
    for (const std::string& keyPath : setting.renamedFrom) earlier.addObject(keyPath);
    const PresentValue present = presentValueOf(setting, options);
    return {{"keyPath", setting.keyPath},
            {"sentence", orNullMarker(setting.sentence)},
            {"kind", kindWord(setting.kind)},
            {"choices", choicesOf(setting)},
            {"minimum", orNullMarker(setting.minimum)},
            {"maximum", orNullMarker(setting.maximum)},
            {"unit", orNullMarker(setting.unit)},
            {"default", orNullMarker(knownDefault(setting))},
            {"scope", scopeWord(setting.scope)},
            {"renamedFrom", earlier},
            {"value", orNullMarker(present.value)},
            {"layer", present.layer},
            {"profile", orNullMarker(present.profile)},
            {"list", orNullMarker(setting.file)}};
}

using Settings = std::vector<const KnownSetting*>;

/// Two lines or more for each, and a blank one between groups of one first key.
std::string paragraphsOf(const Settings& settings) {
    std::string text;
    std::string_view group;
    for (const KnownSetting* setting : settings) {
        const std::string_view first =
            std::string_view(setting->keyPath).substr(0, setting->keyPath.find('.'));
        if (!group.empty() && first != group) text += "\n";
        group = first;
        text += keyPathText(setting->keyPath) + "\n" +
                wrapped(printable(paragraphOn(*setting)), 4, widthOfStandardOutput());
    }
    return text;
}

std::string jsonOf(const Settings& settings, const Options& options) {
    NSMutableArray objects;
    for (const KnownSetting* setting : settings) objects.addObject(objectOf(*setting, options));
    return jsonText(objects) + "\n";
}

/// The one that is named in full, and paragraphs of those below it.
std::string textOf(const Settings& settings, const Options& options) {
    const KnownSetting& first = *settings.front();
    if (!options.prefix || first.keyPath != QRVPlainKeyPath(*options.prefix))
        return paragraphsOf(settings);
    const std::string rest = paragraphsOf({settings.begin() + 1, settings.end()});
    return factsOf(first, options) + (rest.empty() ? "" : "\n") + rest;
}

Settings chosenOf(const KnownLists& lists, const std::optional<std::string>& prefix) {
    Settings chosen;
    for (const auto& [keyPath, setting] : lists.settings())
        if (!prefix || isAtOrBelow(keyPath, QRVPlainKeyPath(*prefix))) chosen.push_back(&setting);
    return chosen;
}

/// What is known needs no settings file.
void openIfPossible() {
    try {
        openToRead();
        prepareToRead();
    } catch (const Failure& failure) {
        remark(failure.what());
        prepareWithoutStoredSettings();
    }
}

ExitCode describe(const Options& options) {
    if (options.prefix) requireUTF8(*options.prefix);
    const ProfileScope requireName(options.profile);
    const KnownLists lists = KnownLists::read();
    const Settings settings = chosenOf(lists, options.prefix);
    if (settings.empty())
        throw Failure(Fault::NotSet, "nothing is known" + atKeyPath(*options.prefix));
    openIfPossible();
    print(options.json ? jsonOf(settings, options) : textOf(settings, options));
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option prefix = prefixArgument(options.prefix);
    prefix.takes = Takes::KnownKeyPath;
    return {prefix, profileOption(options.profile),
            jsonFlag(options.json, "Print one JSON array of objects, null for what is not known")};
}

}  // namespace

Configuration configureDescribe() {
    return configured(declare, describe);
}

}  // namespace Tool
