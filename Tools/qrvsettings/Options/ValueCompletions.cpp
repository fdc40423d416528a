// SPDX-License-Identifier: MIT
#include "Options/ValueCompletions.h"

#include <optional>

#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Reporting/PrintableText.h"
#include "Settings/KnownLists.h"
#include "Settings/SettingDescription.h"
#include "Text/ColorText.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

using Kind = PropertyListValue::Kind;

/// Says of the word that it is the default or the present value.
void addNote(Candidates& words, const std::string& word, const std::string& note) {
    std::string& sentence = words[word];
    if (sentence.ends_with('.'))
        sentence += " (" + note + ")";
    else
        sentence += (sentence.empty() ? "" : ", ") + note;
}

/// Empty where `set` reads another value from the bare text.
std::string wordFor(const PropertyListValue& value) {
    if (value.isNull() || value.isArray() || value.isDictionary()) return {};
    const std::string text = bareText(value);
    try {
        return valueFromText(text, "") == value ? text : "";
    } catch (const Failure&) {
        return {};
    }
}

std::string hexadecimal(const PropertyListValue& value) {
    std::vector<std::string> components(1);
    for (const char character : value.stringView())
        if (character == ' ')
            components.emplace_back();
        else
            components.back() += character;
    try {
        return components.size() == 4 ? hexadecimalColorText(colorFromTexts(components)) : "";
    } catch (const Failure&) {
        return {};
    }
}

PropertyListValue defaultOf(const KnownSetting* setting, const std::string& keyPath) {
    return setting == nullptr ? QRVSettingsDefaultForKeyPath(keyPath) : knownDefault(*setting);
}

}  // namespace

Candidates knownKeyPaths() {
    Candidates words;
    const KnownLists lists = KnownLists::read();
    for (const auto& [keyPath, setting] : lists.settings())
        words.emplace(keyPath, printable(setting.sentence));
    return words;
}

Candidates valuesOf(const std::string& keyPath, const ProfileScope& scope) {
    const KnownLists lists = KnownLists::read();
    const KnownSetting* const setting = lists.at(keyPath);
    Candidates words;
    if (setting != nullptr)
        for (const KnownChoice& choice : setting->choices)
            words.emplace(wordFor(choice.value), printable(choice.sentence));
    const PropertyListValue present = scope.effective(keyPath);
    if (setting == nullptr ? present.isBoolean() : setting->kind == Kind::Boolean)
        words = {{"true", ""}, {"false", ""}};
    addNote(words, wordFor(defaultOf(setting, keyPath)), "the default");
    addNote(words, wordFor(present), "the present value");
    words.erase("");
    return words;
}

Candidates colorsOf(const std::string& keyPath, const ProfileScope& scope) {
    const KnownLists lists = KnownLists::read();
    Candidates words;
    addNote(words, hexadecimal(defaultOf(lists.at(keyPath), keyPath)), "the default");
    addNote(words, hexadecimal(scope.effective(keyPath)), "the present value");
    words.erase("");
    return words;
}

}  // namespace Tool
