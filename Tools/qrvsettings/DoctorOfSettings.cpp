// SPDX-License-Identifier: MIT
#include <map>

#include "Doctor.h"
#include "DryRun.h"
#include "Failure.h"
#include "JSON.h"
#include "KeyPaths.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "ShellCommands.h"
#include "Slips.h"
#include "StartUp.h"
#include "ValueText.h"

namespace Tool {
namespace {

using Level = Finding::Level;
/// By key path: the order in which they are told.
using Findings = std::map<std::string, Finding>;

void examineStartUp(Diagnosis& diagnosis) {
    try {
        for (const std::string& note : startUpNotingChanges())
            diagnosis.findings.push_back(
                {Level::Note, note, "nothing; the next change saves it too"});
    } catch (const Failure& failure) {
        diagnosis.findings.push_back(
            {Level::Error, failure.what(), "remove it: qrvsettings unset KEYPATH"});
        startUpOnNothing();
    }
}

Finding ofAnotherKind(const std::string& keyPath, const PropertyListValue& stored,
                      const PropertyListValue& byDefault) {
    return {Level::Warning,
            keyPathText(keyPath) + " is " + kindName(stored) + ", and its default is " +
                kindName(byDefault) + ", " + shortened(jsonText(byDefault)),
            "write it anew as that kind, or remove it: qrvsettings unset -- " + shellWord(keyPath),
            keyPath};
}

/// Where the stored leaf, or the dictionary that leads to it, is not what the default is.
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
    findings.emplace(keyPath,
                     Finding{Level::Warning,
                             "nobody is known to read " + keyPathText(keyPath) + "; did you mean " +
                                 *meant + "?",
                             "write it under that name, and remove it: qrvsettings set -- " +
                                 shellWord(place + *meant) + " " + shellWord(jsonText(value)) +
                                 " && qrvsettings unset -- " + shellWord(keyPath),
                             keyPath});
}

}  // namespace

void examineSettings(Diagnosis& diagnosis, const NSDictionary& settings) {
    // As the file holds it: the start-up changes the stored tree in place.
    const NSDictionary leaves = leavesByKeyPath(settings);
    diagnosis.facts.push_back(
        {"settings", leaves.count(), std::to_string(leaves.count()) + " stored"});
    examineStartUp(diagnosis);
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
