// SPDX-License-Identifier: MIT
// Prints the value of a setting in each layer.

#include <optional>

#include "Commands/CommandTable.h"
#include "Commands/FactLines.h"
#include "History/HistoryText.h"
#include "History/ToolHistory.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Rows/SettingAnswer.h"
#include "Rows/SettingsSnapshot.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingDescription.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

struct Options {
    std::string keyPath;
    std::string profile;
    bool json = false;
};

struct Explanation {
    std::string keyPath;
    SettingAnswer answer;
    std::string profile;
    bool isProfileNamed;
    QRVSettingScope scope;
    std::optional<QRVHistorySave> lastChange;
    std::optional<QRVHistorySave> lastChangeInProfile;
};

SettingsSnapshot snapshotOfFile() {
    openToRead();
    SettingsSnapshot snapshot = snapshotOfSettings(QRVSettingsStoredValues());
    if (!snapshot.obstacle.empty()) throw Failure(Fault::WrongValue, snapshot.obstacle);
    return snapshot;
}

Explanation explanationOf(const Options& options) {
    const ProfileScope profile(options.profile.empty() ? "default" : options.profile);
    return {.keyPath = options.keyPath,
            .answer = answerAt(snapshotOfFile(), options.keyPath, options.profile),
            .profile = options.profile.empty() ? "default" : options.profile,
            .isProfileNamed = !options.profile.empty(),
            .scope = scopeOf(options.keyPath),
            .lastChange = lastChangeInHistory(options.keyPath),
            .lastChangeInProfile = lastChangeInHistory(profile.storedKeyPath(options.keyPath))};
}

PropertyListValue kindOrNullMarker(const PropertyListValue& value) {
    return value.isNull() ? PropertyListValue(NSNull()) : kindWord(value);
}

bool canCompareKinds(const SettingAnswer& answer) {
    return !answer.stored.isNull() && !answer.builtIn.isNull();
}

bool kindsDiffer(const SettingAnswer& answer) {
    return !answer.stored.isSameKindAs(answer.builtIn);
}

PropertyListValue objectOf(const std::optional<QRVHistorySave>& change) {
    return change ? PropertyListValue(historyObject(*change)) : NSNull();
}

std::string jsonOf(const Explanation& explanation) {
    const SettingAnswer& answer = explanation.answer;
    NSMutableArray profiles;
    for (const std::string& name : profileNames()) profiles.addObject(name);
    return jsonText(NSDictionary{
               {"keyPath", explanation.keyPath},
               {"effective", orNullMarker(answer.effective)},
               {"effectiveKind", kindOrNullMarker(answer.effective)},
               {"layer", layerWord(answer.layer)},
               {"stored", orNullMarker(answer.stored)},
               {"storedKind", kindOrNullMarker(answer.stored)},
               {"site", orNullMarker(answer.site)},
               {"siteKind", kindOrNullMarker(answer.site)},
               {"siteFile", orNullMarker(answer.siteFile)},
               {"lockFile", orNullMarker(answer.lockFile)},
               {"default", orNullMarker(answer.builtIn)},
               {"defaultKind", kindOrNullMarker(answer.builtIn)},
               {"kindDiffers", canCompareKinds(answer) ? PropertyListValue(kindsDiffer(answer))
                                                       : PropertyListValue(NSNull())},
               {"scope", scopeWord(explanation.scope)},
               {"profiles", profiles},
               {"profile", explanation.profile},
               {"profileValue", orNullMarker(answer.inProfile)},
               {"profileKind", kindOrNullMarker(answer.inProfile)},
               {"lastChange", objectOf(explanation.lastChange)},
               {"profileLastChange", objectOf(explanation.lastChangeInProfile)},
           }) +
           "\n";
}

void add(std::vector<Fact>& facts, const std::string& name, const PropertyListValue& value) {
    facts.push_back({name, value.isNull() ? "not set" : jsonText(value)});
    if (!value.isNull()) facts.push_back({name + " kind", kindWord(value)});
}

void add(std::vector<Fact>& facts, const std::string& name,
         const std::optional<QRVHistorySave>& change) {
    if (change) facts.push_back({name, lastChangeText(*change)});
}

/// A setting of the application has no value in a profile, but for one that somebody has put there.
bool concernsProfiles(const Explanation& explanation) {
    return explanation.isProfileNamed || explanation.scope == QRVSettingScope::Profile ||
           !explanation.answer.inProfile.isNull();
}

std::string linesOf(const Explanation& explanation) {
    const SettingAnswer& answer = explanation.answer;
    std::vector<Fact> facts = {{"key path", keyPathText(explanation.keyPath)}};
    add(facts, "effective", answer.effective);
    facts.push_back({"layer", layerWord(answer.layer)});
    if (!answer.lockFile.empty()) facts.push_back({"locked by", keyPathText(answer.lockFile)});
    add(facts, "stored", answer.stored);
    if (!answer.site.isNull()) add(facts, "site", answer.site);
    if (!answer.siteFile.empty()) facts.push_back({"site file", keyPathText(answer.siteFile)});
    add(facts, "default", answer.builtIn);
    if (canCompareKinds(answer))
        facts.push_back({"kinds differ", kindsDiffer(answer) ? "yes" : "no"});
    if (explanation.scope == QRVSettingScope::Profile)
        facts.push_back({"scope", scopeInWords(explanation.scope)});
    if (concernsProfiles(explanation)) {
        facts.push_back({"profile", keyPathText(explanation.profile)});
        add(facts, "in profile", answer.inProfile);
    }
    add(facts, "last change", explanation.lastChange);
    add(facts, "profile change", explanation.lastChangeInProfile);
    return factLines(facts);
}

ExitCode explain(const Options& options) {
    requireUTF8(options.keyPath);
    const Explanation explanation = explanationOf(options);
    print(options.json ? jsonOf(explanation) : linesOf(explanation));
    if (explanation.answer.effective.isNull())
        throw Failure(Fault::NotSet, notSet(options.keyPath));
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    return {keyPathArgument(options.keyPath), profileOption(options.profile),
            jsonFlag(options.json, "Print one JSON object, null for what is not set")};
}

}  // namespace

Configuration configureExplain() {
    return configured(declare, explain);
}

}  // namespace Tool
