// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "FactLines.h"
#include "Input.h"
#include "JSON.h"
#include "KeyPaths.h"
#include "Output.h"
#include "QRVSettings/QRVSettings.h"
#include "Scope.h"
#include "SettingsFile.h"
#include "Slips.h"
#include "StartUp.h"
#include "ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string keyPath;
    std::string profile;
    bool json = false;
};

struct Explanation {
    std::string keyPath;
    PropertyListValue effective;
    std::string layer;
    PropertyListValue stored;
    PropertyListValue byDefault;
    std::string profile;
    PropertyListValue inProfile;
};

/// What the file holds is asked for before the start-up, which may reset it in memory.
Explanation explanationOf(const Options& options) {
    const Scope scope(options.profile);
    const Scope profile(options.profile.empty() ? "default" : options.profile);
    requireReadableSettingsFile();
    const PropertyListValue stored = QRVSettingsStoredObjectForKeyPath(options.keyPath);
    startUp();
    const PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(options.keyPath);
    const std::string layer = !scope.stored(options.keyPath).isNull()
                                  ? (scope.isProfile() ? "profile" : "stored")
                              : byDefault.isNull() ? "none"
                                                   : "default";
    return {options.keyPath,
            scope.effective(options.keyPath),
            layer,
            stored,
            byDefault,
            options.profile.empty() ? "default" : options.profile,
            profile.stored(options.keyPath)};
}

PropertyListValue orNullMarker(const PropertyListValue& value) {
    return value.isNull() ? NSNull() : value;
}

PropertyListValue kindOrNullMarker(const PropertyListValue& value) {
    return value.isNull() ? PropertyListValue(NSNull()) : kindWord(value);
}

bool canCompareKinds(const Explanation& explanation) {
    return !explanation.stored.isNull() && !explanation.byDefault.isNull();
}

bool kindsDiffer(const Explanation& explanation) {
    return !explanation.stored.isSameKindAs(explanation.byDefault);
}

std::string jsonOf(const Explanation& explanation) {
    return jsonText(NSDictionary{
               {"keyPath", explanation.keyPath},
               {"effective", orNullMarker(explanation.effective)},
               {"effectiveKind", kindOrNullMarker(explanation.effective)},
               {"layer", explanation.layer},
               {"stored", orNullMarker(explanation.stored)},
               {"storedKind", kindOrNullMarker(explanation.stored)},
               {"default", orNullMarker(explanation.byDefault)},
               {"defaultKind", kindOrNullMarker(explanation.byDefault)},
               {"kindDiffers", canCompareKinds(explanation)
                                   ? PropertyListValue(kindsDiffer(explanation))
                                   : PropertyListValue(NSNull())},
               {"profile", explanation.profile},
               {"profileValue", orNullMarker(explanation.inProfile)},
               {"profileKind", kindOrNullMarker(explanation.inProfile)},
           }) +
           "\n";
}

void add(std::vector<Fact>& facts, const std::string& name, const PropertyListValue& value) {
    facts.push_back({name, value.isNull() ? "not set" : jsonText(value)});
    if (!value.isNull()) facts.push_back({name + " kind", kindWord(value)});
}

std::string linesOf(const Explanation& explanation) {
    std::vector<Fact> facts = {{"key path", keyPathText(explanation.keyPath)}};
    add(facts, "effective", explanation.effective);
    facts.push_back({"layer", explanation.layer});
    add(facts, "stored", explanation.stored);
    add(facts, "default", explanation.byDefault);
    if (canCompareKinds(explanation))
        facts.push_back({"kinds differ", kindsDiffer(explanation) ? "yes" : "no"});
    facts.push_back({"profile", keyPathText(explanation.profile)});
    add(facts, "in profile", explanation.inProfile);
    return factLines(facts);
}

ExitCode explain(const Options& options) {
    requireUTF8(options.keyPath);
    const Explanation explanation = explanationOf(options);
    print(options.json ? jsonOf(explanation) : linesOf(explanation));
    if (explanation.effective.isNull())
        throw Failure(ExitCode::NotSet,
                      "not set, " + options.keyPath + didYouMean(options.keyPath));
    return ExitCode::Done;
}

}  // namespace

void addExplainCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "explain", "Print what each layer holds of a setting, and which one answers");
    const auto options = std::make_shared<Options>();
    addText(command, "KEYPATH", options->keyPath, "Keys joined by dots")->required();
    addProfile(command, options->profile);
    addJSON(command, options->json, "Print one JSON object, null for what is not set");
    command.footer(
        "effective is what get prints, and layer who says so: stored, profile, default or none.\n"
        "stored is the value in the file as it is; \"in profile\" that of the profile \"default\"\n"
        "or of the one that is named. Integers and reals are one kind, number, where the stored\n"
        "value is compared with the default. The exit code is 1 where nothing is effective.\n\n"
        "Example: qrvsettings explain CPU.Menubar.Enabled");
    command.callback([options, &action] { action = [options] { return explain(*options); }; });
}

}  // namespace Tool
