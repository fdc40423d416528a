// SPDX-License-Identifier: MIT
#include "Settings/SettingObjections.h"

#include <algorithm>
#include <map>

#include "QRVSettings/StoreKeyPaths.h"
#include "Reporting/Failure.h"
#include "Settings/SettingDescription.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/ScalarText.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

using Kind = PropertyListValue::Kind;

std::string exampleOf(const KnownSetting& setting, const char* otherwise) {
    const PropertyListValue example = knownDefault(setting);
    return example.isNull() ? otherwise : bareText(example);
}

/// How to say a value of the kind.
std::string wayToSay(const KnownSetting& setting) {
    switch (setting.kind) {
        case Kind::Boolean:
            return "say true or false";
        case Kind::Integer:
            return "say a whole number, such as " + exampleOf(setting, "1");
        case Kind::Real:
            return "say a number, such as " + exampleOf(setting, "0.5");
        case Kind::String:
            return "say it with --type string";
        case Kind::Color:
            return "say four numbers from 0 to 1, such as '" + exampleOf(setting, "1 0.5 0 1") +
                   "', or qrvsettings color set";
        case Kind::Date:
            return "say it with --type date, such as 2020-01-01T00:00:00Z";
        case Kind::Data:
            return "say it as base64 with --type data";
        case Kind::Array:
            return "say it as JSON, [...]";
        default:
            return "say it as JSON, {...}";
    }
}

/// Four numbers, as the store writes a colour.
bool isColorText(std::string_view text) {
    std::size_t count = 0;
    for (;; ++count) {
        const std::size_t end = text.find(' ');
        if (!isDecimalNumber(text.substr(0, end))) return false;
        if (end == text.npos) return count == 3;
        text.remove_prefix(end + 1);
    }
}

bool fits(const PropertyListValue& value, Kind kind) {
    return isOfKind(value, kind) && (kind != Kind::Color || isColorText(value.stringView()));
}

std::string given(const PropertyListValue& value) {
    return kindName(value) + ": " + shortened(jsonText(value));
}

bool isOutside(const PropertyListValue& value, const KnownSetting& setting) {
    return value.isNumber() &&
           ((!setting.minimum.isNull() && value.doubleValue() < setting.minimum.doubleValue()) ||
            (!setting.maximum.isNull() && value.doubleValue() > setting.maximum.doubleValue()));
}

/// Calls `judge` for the value and for all that a dictionary holds, until one has an objection.
using Judge = std::function<std::string(const std::string& keyPath, const PropertyListValue&)>;
std::string firstObjection(const std::string& keyPath, const PropertyListValue& value,
                           const Judge& judge) {
    std::string objection = judge(keyPath, value);
    if (!objection.empty() || !value.isDictionary()) return objection;
    for (const auto& [key, entry] : value.dictionary()) {
        // No key path reaches a key that holds a ".".
        if (key.find('.') != key.npos) continue;
        objection = firstObjection(keyPath + "." + std::string(key), entry, judge);
        if (!objection.empty()) break;
    }
    return objection;
}

}  // namespace

SettingObjections::SettingObjections() : lists_(KnownLists::read()), keyPaths_(lists_) {}

bool SettingObjections::isLevel(std::string_view plain) const {
    // A plain key path there is that of a whole profile, or of all profiles.
    return isAtOrBelow(plain, QRVStoreKeyPaths::profiles) ||
           (keyPaths_.have(plain) && lists_.at(plain) == nullptr);
}

std::string SettingObjections::toKeyPath(const std::string& keyPath, const PropertyListValue& value,
                                         const IsUsed& isUsed) const {
    return firstObjection(keyPath, value, [&](const std::string& one, const auto& /*value*/) {
        return isUsed && isUsed(one) ? std::string() : toSpelling(one);
    });
}

std::string SettingObjections::toSpelling(const std::string& keyPath) const {
    if (lists_.at(keyPath) != nullptr) return {};
    if (const KnownSetting* const present = lists_.renamedFrom(keyPath))
        return keyPathText(keyPath) + " was renamed; did you mean " + present->keyPath + "?";
    const auto meant = keyPaths_.meantInPlaceBy(keyPath);
    if (!meant) return {};
    return "nothing is known to read " + keyPathText(keyPath) + "; did you mean " + *meant + "?";
}

std::string SettingObjections::toValue(const std::string& keyPath,
                                       const PropertyListValue& value) const {
    const std::string_view plain = QRVPlainKeyPath(keyPath);
    const std::string objection = toPlace(plain);
    if (!objection.empty()) return objection + ": " + keyPathText(keyPath);
    return firstObjection(
        keyPath, value, [this](const std::string& one, const PropertyListValue& candidate) {
            if (const KnownSetting* const setting = lists_.at(one))
                return toLeaf(*setting, one, candidate);
            if (!isLevel(QRVPlainKeyPath(one)) || candidate.isDictionary()) return std::string();
            return keyPathText(one) + " is a dictionary of settings, not " + given(candidate);
        });
}

/// The levels above the key path.
std::string SettingObjections::toPlace(std::string_view plain) const {
    for (std::size_t end = plain.find('.'); end != plain.npos; end = plain.find('.', end + 1)) {
        const KnownSetting* const above = lists_.at(plain.substr(0, end));
        if (above != nullptr && above->kind != Kind::Dictionary && above->kind != Kind::Null)
            return above->keyPath + " is " + kindWithArticle(above->kind) +
                   ", so that nothing can be below it";
    }
    return {};
}

std::string SettingObjections::toLeaf(const KnownSetting& setting, const std::string& keyPath,
                                      const PropertyListValue& value) const {
    if (!fits(value, setting.kind))
        return keyPathText(keyPath) + " is " + kindWithArticle(setting.kind) + ", not " +
               given(value) + "; " + wayToSay(setting);
    const auto isChoice = [&value](const KnownChoice& choice) { return choice.value == value; };
    if (!setting.choices.empty() &&
        std::none_of(setting.choices.begin(), setting.choices.end(), isChoice))
        return keyPathText(keyPath) + " is none of its choices, " + shortened(bareText(value)) +
               "; say one of " + choicesInWords(setting);
    if (isOutside(value, setting))
        return keyPathText(keyPath) + " is out of range, " + bareText(value) + "; say a number " +
               rangeInWords(setting);
    return {};
}

std::string SettingObjections::toColor(const std::string& keyPath) const {
    const std::string_view plain = QRVPlainKeyPath(keyPath);
    const std::string objection = toPlace(plain);
    if (!objection.empty()) return objection + ": " + keyPathText(keyPath);
    if (isLevel(plain)) return keyPathText(keyPath) + " is a dictionary of settings, not a colour";
    const KnownSetting* const setting = lists_.at(keyPath);
    if (setting == nullptr || setting->kind == Kind::Color || setting->kind == Kind::Null)
        return {};
    return keyPathText(keyPath) + " is " + kindWithArticle(setting->kind) + ", not a colour";
}

std::vector<std::string> SettingObjections::toTree(const NSDictionary& tree) const {
    std::map<std::string, PropertyListValue> leaves;
    for (const auto& [keyPath, value] : leavesByKeyPath(tree)) leaves.emplace(keyPath, value);
    std::vector<std::string> objections;
    for (const auto& [keyPath, value] : leaves)
        for (const std::string& objection : {toKeyPath(keyPath, value), toValue(keyPath, value)})
            if (!objection.empty()) objections.push_back(objection);
    return objections;
}

std::vector<std::string> remarksOnTree(const NSDictionary& tree) {
    constexpr std::size_t mostNamed = 5;
    std::vector<std::string> remarks = SettingObjections().toTree(tree);
    if (remarks.size() <= mostNamed) return remarks;
    const std::size_t unnamed = remarks.size() - mostNamed;
    remarks.resize(mostNamed);
    remarks.push_back("the same holds for " + std::to_string(unnamed) + " more settings");
    return remarks;
}

OptionsToSet optionsThatTakeIt() {
    return [objections = SettingObjections()](const std::string& keyPath,
                                              const PropertyListValue& value) {
        return std::string(objections.toKeyPath(keyPath, value).empty() ? "" : "--new ") +
               (objections.toValue(keyPath, value).empty() ? "" : "--any-kind ");
    };
}

}  // namespace Tool
