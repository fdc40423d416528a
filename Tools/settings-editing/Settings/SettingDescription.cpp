// SPDX-License-Identifier: MIT
#include "Settings/SettingDescription.h"

#include "QRVSettings/QRVSettings.h"
#include "Settings/ProfileScope.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

using Kind = PropertyListValue::Kind;

/// The values that it takes.
std::string takenValues(const KnownSetting& setting) {
    if (!setting.choices.empty()) return "one of " + choicesInWords(setting);
    const std::string range = rangeInWords(setting);
    const bool hasUnitAlone = range.empty() && !setting.unit.empty();
    return kindInWords(setting.kind) + (range.empty() ? "" : " " + range) +
           (hasUnitAlone ? " in " + setting.unit : "");
}

/// Long ones say little in a paragraph.
std::string shortDefault(const KnownSetting& setting) {
    constexpr std::size_t longest = 32;
    const PropertyListValue value = knownDefault(setting);
    const std::string text = value.isNull() ? "" : jsonText(value);
    return text.size() > longest ? "" : text;
}

std::string capitalized(std::string text) {
    if (!text.empty() && 'a' <= text.front() && text.front() <= 'z')
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    return text;
}

}  // namespace

std::string kindInWords(Kind kind) {
    if (kind == Kind::Null) return "any kind";
    return kind == Kind::Color ? "colour" : kindWord(kind);
}

std::string kindWithArticle(Kind kind) {
    std::string words = kindInWords(kind);
    if (kind == Kind::Data || kind == Kind::Null) return words;
    return (kind == Kind::Integer || kind == Kind::Array ? "an " : "a ") + words;
}

QRVSettingScope scopeOf(const std::string& keyPath) {
    const KnownLists lists = KnownLists::readWithoutLibrary();
    if (const KnownSetting* const setting = lists.at(keyPath)) return setting->scope;
    const QRVKnownSetting* const setting = QRVKnownSettingAt(keyPath);
    return setting == nullptr ? QRVScopeOfKeyPath(keyPath) : setting->scope;
}

std::string scopeWord(QRVSettingScope scope) {
    switch (scope) {
        case QRVSettingScope::Application:
            return "application";
        case QRVSettingScope::Profile:
            return "profile";
        case QRVSettingScope::Record:
            break;
    }
    return "record";
}

std::string scopeInWords(QRVSettingScope scope) {
    switch (scope) {
        case QRVSettingScope::Application:
            return "of the application";
        case QRVSettingScope::Profile:
            return "of each profile: " + profilesInWords();
        case QRVSettingScope::Record:
            break;
    }
    return "a record of the store";
}

std::string rangeInWords(const KnownSetting& setting) {
    const std::string unit = setting.unit.empty() ? "" : " " + setting.unit;
    const bool hasMinimum = !setting.minimum.isNull();
    const bool hasMaximum = !setting.maximum.isNull();
    if (hasMinimum && hasMaximum)
        return "from " + bareText(setting.minimum) + " to " + bareText(setting.maximum) + unit;
    if (hasMinimum) return "of " + bareText(setting.minimum) + unit + " or more";
    return hasMaximum ? "of " + bareText(setting.maximum) + unit + " or less" : "";
}

std::string choicesInWords(const KnownSetting& setting) {
    std::string text;
    for (const KnownChoice& choice : setting.choices)
        text += (text.empty() ? "" : ", ") + bareText(choice.value);
    return text;
}

PropertyListValue knownDefault(const KnownSetting& setting) {
    const PropertyListValue builtIn = QRVSettingsDefaultForKeyPath(setting.keyPath);
    return builtIn.isNull() ? setting.byDefault : builtIn;
}

std::string paragraphOn(const KnownSetting& setting) {
    if (setting.scope == QRVSettingScope::Record)
        return setting.sentence + " A record of the store.";
    const std::string byDefault = shortDefault(setting);
    return setting.sentence + (setting.sentence.empty() ? "" : " ") +
           capitalized(takenValues(setting)) + (byDefault.empty() ? "" : ", default " + byDefault) +
           (setting.scope == QRVSettingScope::Profile ? ", of each profile." : ".");
}

}  // namespace Tool
