// SPDX-License-Identifier: MIT
// What the settings file holds: settings of another kind than their default, and typos.

#include <map>

#include "Doctor/Doctor.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/PendingChanges.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/ShellCommands.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

using Level = Finding::Level;
/// By key path, which is the order in which they are reported.
using Findings = std::map<std::string, Finding>;

void examinePreparation(Diagnosis& diagnosis) {
    try {
        const PendingChanges neverSaved;
        for (const std::string& note : neverSaved.notes())
            diagnosis.findings.push_back(
                {Level::Note, note, "nothing; the next change saves it too"});
    } catch (const Failure& failure) {
        diagnosis.findings.push_back(
            {Level::Error, failure.what(), "remove it: qrvsettings unset KEYPATH"});
        prepareWithoutStoredSettings();
    }
}

Finding ofAnotherKind(const std::string& keyPath, const PropertyListValue& stored,
                      const PropertyListValue& byDefault) {
    return {
        Level::Warning,
        keyPathText(keyPath) + " is " + kindName(stored) + ", and its default is " +
            kindName(byDefault) + ", " + shortened(jsonText(byDefault)),
        "set it to a value of that kind, or remove it: qrvsettings unset -- " + shellWord(keyPath),
        keyPath};
}

/// Reports a stored leaf, or a dictionary on the way to it, that is of another kind than the
/// default.
void examineKind(const std::string& keyPath, const NSDictionary& settings, Findings& findings) {
    const std::string_view plain = withoutProfile(keyPath);
    const std::string place = keyPath.substr(0, keyPath.size() - plain.size());
    const auto above = leafAbove(QRVSettings::sharedSettings().defaults(), plain);
    const std::string judged = above.value_or(std::string(plain));
    const PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(judged);
    const PropertyListValue stored = NSDictionaryQRV::objectAtKeyPath(settings, place + judged);
    if (!byDefault.isNull() && !stored.isSameKindAs(byDefault))
        findings.emplace(place + judged, ofAnotherKind(place + judged, stored, byDefault));
}

void examineSpelling(const std::string& keyPath, const KnownKeyPaths& known,
                     const NSDictionary& settings, Findings& findings) {
    const std::string_view plain = withoutProfile(keyPath);
    const auto meant = known.meantBy(plain);
    if (!meant) return;
    const std::string place = keyPath.substr(0, keyPath.size() - plain.size());
    const PropertyListValue value = NSDictionaryQRV::objectAtKeyPath(settings, keyPath);
    findings.emplace(
        keyPath,
        Finding{
            Level::Warning,
            "nothing is known to read " + keyPathText(keyPath) + "; did you mean " + *meant + "?",
            "store it there, and remove this one: qrvsettings set -- " + shellWord(place + *meant) +
                " " + shellWord(jsonText(value)) + " && qrvsettings unset -- " + shellWord(keyPath),
            keyPath});
}

}  // namespace

void examineSettings(Diagnosis& diagnosis, const NSDictionary& settings) {
    // As the file holds it: the preparation changes the stored tree in place.
    const NSDictionary leaves = leavesByKeyPath(settings);
    diagnosis.facts.push_back(
        {"settings", leaves.count(), std::to_string(leaves.count()) + " stored"});
    examinePreparation(diagnosis);
    const KnownKeyPaths known(QRVSettings::sharedSettings().defaults());
    Findings findings;
    for (const auto& [key, value] : leaves) {
        const std::string keyPath(key);
        if (NSDictionaryQRV::objectAtKeyPath(settings, keyPath).isNull()) continue;
        examineKind(keyPath, settings, findings);
        examineSpelling(keyPath, known, settings, findings);
    }
    for (const auto& [keyPath, finding] : findings) diagnosis.findings.push_back(finding);
}

}  // namespace Tool
