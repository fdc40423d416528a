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
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/PendingChanges.h"
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
    PropertyListValue effective;
    std::string layer;
    PropertyListValue stored;
    PropertyListValue site;
    std::string siteFile;
    std::string lockFile;
    PropertyListValue byDefault;
    std::string profile;
    bool isProfileNamed;
    PropertyListValue inProfile;
    QRVSettingScope scope;
    std::optional<QRVHistorySave> lastChange;
    std::optional<QRVHistorySave> lastChangeInProfile;
};

/// The layer that answers, when the stored value is of the layer that has this name; it is empty
/// when nothing is stored.
std::string answeringLayer(const Explanation& explanation, const std::string& stored) {
    if (!stored.empty() && explanation.lockFile.empty()) return stored;
    if (!explanation.site.isNull()) return "site";
    return explanation.byDefault.isNull() ? "none" : "default";
}

/// Reads the stored value before the preparation, which may reset it in memory.
Explanation explanationOf(const Options& options) {
    const ProfileScope scope(options.profile);
    const ProfileScope profile(options.profile.empty() ? "default" : options.profile);
    openToRead();
    const PropertyListValue stored = QRVSettingsStoredObjectForKeyPath(options.keyPath);
    prepareToRead();
    const QRVSiteDefaults site = QRVSettingsSiteDefaults();
    Explanation explanation{
        .keyPath = options.keyPath,
        .effective = scope.effective(options.keyPath),
        .layer = "",
        .stored = stored,
        .site = NSDictionaryQRV::objectAtKeyPath(site.values, options.keyPath),
        .siteFile = QRVSettingsSiteFileForKeyPath(options.keyPath),
        .lockFile = QRVSettingsLockFileForKeyPath(scope.storedKeyPath(options.keyPath)),
        .byDefault = NSDictionaryQRV::objectAtKeyPath(site.builtIn, options.keyPath),
        .profile = options.profile.empty() ? "default" : options.profile,
        .isProfileNamed = scope.isProfile(),
        .inProfile = profile.stored(options.keyPath),
        .scope = scopeOf(options.keyPath),
        .lastChange = lastChangeInHistory(options.keyPath),
        .lastChangeInProfile = lastChangeInHistory(profile.storedKeyPath(options.keyPath))};
    const bool isStored = !scope.stored(options.keyPath).isNull();
    const std::string layerOfStored = scope.isProfile() ? "profile" : "stored";
    explanation.layer = answeringLayer(explanation, isStored ? layerOfStored : "");
    return explanation;
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

PropertyListValue objectOf(const std::optional<QRVHistorySave>& change) {
    return change ? PropertyListValue(historyObject(*change)) : NSNull();
}

std::string jsonOf(const Explanation& explanation) {
    NSMutableArray profiles;
    for (const std::string& name : profileNames()) profiles.addObject(name);
    return jsonText(NSDictionary{
               {"keyPath", explanation.keyPath},
               {"effective", orNullMarker(explanation.effective)},
               {"effectiveKind", kindOrNullMarker(explanation.effective)},
               {"layer", explanation.layer},
               {"stored", orNullMarker(explanation.stored)},
               {"storedKind", kindOrNullMarker(explanation.stored)},
               {"site", orNullMarker(explanation.site)},
               {"siteKind", kindOrNullMarker(explanation.site)},
               {"siteFile", orNullMarker(explanation.siteFile)},
               {"lockFile", orNullMarker(explanation.lockFile)},
               {"default", orNullMarker(explanation.byDefault)},
               {"defaultKind", kindOrNullMarker(explanation.byDefault)},
               {"kindDiffers", canCompareKinds(explanation)
                                   ? PropertyListValue(kindsDiffer(explanation))
                                   : PropertyListValue(NSNull())},
               {"scope", scopeWord(explanation.scope)},
               {"profiles", profiles},
               {"profile", explanation.profile},
               {"profileValue", orNullMarker(explanation.inProfile)},
               {"profileKind", kindOrNullMarker(explanation.inProfile)},
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
           !explanation.inProfile.isNull();
}

std::string linesOf(const Explanation& explanation) {
    std::vector<Fact> facts = {{"key path", keyPathText(explanation.keyPath)}};
    add(facts, "effective", explanation.effective);
    facts.push_back({"layer", explanation.layer});
    if (!explanation.lockFile.empty())
        facts.push_back({"locked by", keyPathText(explanation.lockFile)});
    add(facts, "stored", explanation.stored);
    if (!explanation.site.isNull()) add(facts, "site", explanation.site);
    if (!explanation.siteFile.empty())
        facts.push_back({"site file", keyPathText(explanation.siteFile)});
    add(facts, "default", explanation.byDefault);
    if (canCompareKinds(explanation))
        facts.push_back({"kinds differ", kindsDiffer(explanation) ? "yes" : "no"});
    if (explanation.scope == QRVSettingScope::Profile)
        facts.push_back({"scope", scopeInWords(explanation.scope)});
    if (concernsProfiles(explanation)) {
        facts.push_back({"profile", keyPathText(explanation.profile)});
        add(facts, "in profile", explanation.inProfile);
    }
    add(facts, "last change", explanation.lastChange);
    add(facts, "profile change", explanation.lastChangeInProfile);
    return factLines(facts);
}

ExitCode explain(const Options& options) {
    requireUTF8(options.keyPath);
    const Explanation explanation = explanationOf(options);
    print(options.json ? jsonOf(explanation) : linesOf(explanation));
    if (explanation.effective.isNull()) throw Failure(Fault::NotSet, notSet(options.keyPath));
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
