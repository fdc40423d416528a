// SPDX-License-Identifier: MIT
// What the settings file holds: settings of another kind than their default, and typos.

#include <cstdint>
#include <map>
#include <vector>

#include "Doctor/Doctor.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVKnownSettings.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/PendingChanges.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/ScalarText.h"
#include "Text/ShellCommands.h"
#include "Text/StrictXML.h"
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
            diagnosis.findings.push_back({Level::Note, note,
                                          "nothing; the next change saves it too", "",
                                          Finding::About::Preparation});
    } catch (const Failure& failure) {
        diagnosis.findings.push_back({Level::Error, failure.what(),
                                      "remove it: qrvsettings unset KEYPATH", "",
                                      Finding::About::Preparation});
        prepareWithoutStoredSettings();
    }
}

Finding ofAnotherKind(const std::string& keyPath, const PropertyListValue& stored,
                      const PropertyListValue& byDefault) {
    return {Level::Warning,
            keyPathText(keyPath) + " is " + kindName(stored) + ", and its default is " +
                kindName(byDefault) + ", " + shortened(jsonText(byDefault)),
            "set it to a value of that kind, or remove it: " + unsetCommand(keyPath), keyPath};
}

/// Reports a stored leaf, or a dictionary on the way to it, that is of another kind than the
/// default.
void examineKind(const std::string& keyPath, const NSDictionary& settings, Findings& findings) {
    const std::string_view plain = QRVPlainKeyPath(keyPath);
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
    const auto meant = known.meantInPlaceBy(keyPath);
    if (!meant) return;
    const PropertyListValue value = NSDictionaryQRV::objectAtKeyPath(settings, keyPath);
    findings.emplace(keyPath, Finding{Level::Warning,
                                      "nothing is known to read " + keyPathText(keyPath) +
                                          "; did you mean " + *meant + "?",
                                      "store it there, and remove this one: qrvsettings set -- " +
                                          shellWord(*meant) + " " + shellWord(jsonText(value)) +
                                          " && " + unsetCommand(keyPath),
                                      keyPath});
}

void examineEmptyDictionary(const std::string& keyPath, Findings& findings) {
    const PropertyListValue byDefault =
        QRVSettingsDefaultForKeyPath(std::string(QRVPlainKeyPath(keyPath)));
    // The migration makes levels of its own, empty where there is nothing to copy.
    if (!byDefault.isDictionary() || QRVIsRecordOfStore(keyPath)) return;
    findings.emplace(
        keyPath, Finding{Level::Note,
                         keyPathText(keyPath) + " is an empty dictionary, and hides its default",
                         "to bring the default back: " + unsetCommand(keyPath), keyPath});
}

bool holdsFarDate(const PropertyListValue& value) {
    if (value.isDate()) return dateText(value.date()).empty();
    if (value.isArray()) {
        for (const PropertyListValue& element : value.array())
            if (holdsFarDate(element)) return true;
    }
    if (value.isDictionary()) {
        for (const auto& [key, entry] : value.dictionary())
            if (holdsFarDate(entry)) return true;
    }
    return false;
}

void examineLeaf(const Difference& leaf, Findings& findings) {
    if (leaf.newValue.isDictionary()) examineEmptyDictionary(leaf.keyPath, findings);
    if (holdsFarDate(leaf.newValue))
        findings.emplace(
            leaf.keyPath,
            Finding{Level::Warning,
                    "other programs may refuse the file: " + keyPathText(leaf.keyPath) +
                        " has a date outside the years 0000 to 9999",
                    "set it to another date, or remove it: " + unsetCommand(leaf.keyPath),
                    leaf.keyPath});
}

/// A pipe that reads all before it writes anything.
Finding withoutKeyPath(const std::string& keyPath) {
    return {
        Level::Warning,
        "a key holds a dot, so that no key path reaches it: " + keyPathText(keyPath),
        "keep all other settings: qrvsettings list --json --layer stored | qrvsettings import -"};
}

void examineTexts(const NSDictionary& settings, Findings& findings) {
    for (const auto& [keyPath, refusal] : textsRefusedByStrictXML(settings))
        findings.emplace(
            keyPath,
            Finding{Level::Warning, refusal + ": " + keyPathText(keyPath),
                    "set it to other text, or remove it: " + unsetCommand(keyPath), keyPath});
}

struct Size {
    std::uint64_t values = 0;
    std::uint64_t bytes = 0;  ///< of texts, keys and data
};

/// As the limits of a settings file count; the recursion ends there too.
void measure(const PropertyListValue& value, Size& size) {
    ++size.values;
    if (value.isString()) size.bytes += value.stringView().size();
    if (value.isData()) size.bytes += value.data().size();
    if (value.isArray())
        for (const PropertyListValue& element : value.array()) measure(element, size);
    if (!value.isDictionary()) return;
    for (const auto& [key, element] : value.dictionary()) {
        size.bytes += key.size();
        measure(element, size);
    }
}

/// A file beyond a limit counts as damaged.
void examineSize(const NSDictionary& settings, std::vector<Finding>& findings) {
    Size size;
    measure(settings, size);
    const auto report = [&findings](std::uint64_t found, std::uint64_t largest, const char* what) {
        if (found <= largest / 4 * 3) return;
        findings.push_back({Level::Warning,
                            "the settings are nearly too large: " + std::to_string(found) + " of " +
                                std::to_string(largest) + what,
                            "find what takes the space: qrvsettings list --layer stored"});
    };
    report(size.values, NSPropertyListSerialization::maximumValues, " values");
    report(size.bytes, NSPropertyListSerialization::maximumContents, " bytes of text and data");
}

constexpr const char* adviceForSite = "ask the administrator of this machine to correct the file";

void examineSiteKinds(const QRVSiteDefaults& site, std::vector<Finding>& findings) {
    for (const auto& [key, value] : leavesByKeyPath(site.values)) {
        const std::string keyPath(key);
        const PropertyListValue builtIn = NSDictionaryQRV::objectAtKeyPath(site.builtIn, keyPath);
        if (builtIn.isNull() || builtIn.isSameKindAs(value)) continue;
        findings.push_back({Level::Warning,
                            "the site's " + keyPathText(keyPath) + " is " + kindName(value) +
                                ", and the built-in default is " + kindName(builtIn) + ", in " +
                                QRVSettingsSiteFileForKeyPath(keyPath),
                            adviceForSite, keyPath});
    }
}

void examineSite(Diagnosis& diagnosis) {
    const QRVSiteDefaults site = QRVSettingsSiteDefaults();
    const NSMutableArray files;
    std::string text;
    for (const std::string& file : site.files) {
        files.addObject(file);
        text += (text.empty() ? "" : ", ") + file;
    }
    if (!site.files.empty()) diagnosis.facts.push_back({"site", files, text});
    for (const QRVSiteDefaults::Fault& fault : site.faults) {
        const std::string what =
            fault.keyPath.empty() ? fault.file : keyPathText(fault.keyPath) + " in " + fault.file;
        diagnosis.findings.push_back(
            {Level::Warning, "the site's settings are left out: " + what + ": " + fault.reason,
             adviceForSite, fault.keyPath});
    }
    examineSiteKinds(site, diagnosis.findings);
}

}  // namespace

void examineSettings(Diagnosis& diagnosis, const NSDictionary& settings) {
    // As the file holds it: the preparation changes the stored tree in place.
    const NSDictionary leaves = leavesByKeyPath(settings);
    const std::vector<Difference> tree = differencesBetween(nullptr, settings);
    const NSDictionary whole = snapshotOf(settings);
    diagnosis.facts.push_back(
        {"settings", leaves.count(), std::to_string(leaves.count()) + " stored"});
    examineSize(settings, diagnosis.findings);
    examinePreparation(diagnosis);
    examineSite(diagnosis);
    const KnownKeyPaths known(KnownLists::read());
    Findings findings;
    for (const auto& [key, value] : leaves) {
        const std::string keyPath(key);
        if (NSDictionaryQRV::objectAtKeyPath(settings, keyPath).isNull()) continue;
        examineKind(keyPath, settings, findings);
        examineSpelling(keyPath, known, settings, findings);
    }
    for (const Difference& leaf : tree)
        if (leaf.isReached) examineLeaf(leaf, findings);
    examineTexts(whole, findings);
    for (const Difference& leaf : tree)
        if (!leaf.isReached) findings.insert_or_assign(leaf.keyPath, withoutKeyPath(leaf.keyPath));
    for (const auto& [keyPath, finding] : findings) diagnosis.findings.push_back(finding);
}

}  // namespace Tool
