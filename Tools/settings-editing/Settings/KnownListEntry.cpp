// SPDX-License-Identifier: MIT
// An entry of a list of settings. Each fact is read alone: a wrong one leaves the others.

#include "Settings/KnownListEntry.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "Reporting/Failure.h"
#include "Text/JSON.h"

namespace Tool {
namespace {

using Kind = PropertyListValue::Kind;

struct NamedKind {
    std::string_view name;
    Kind kind;
};
constexpr std::array kinds = {NamedKind{"boolean", Kind::Boolean},
                              NamedKind{"integer", Kind::Integer},
                              NamedKind{"real", Kind::Real},
                              NamedKind{"string", Kind::String},
                              NamedKind{"color", Kind::Color},
                              NamedKind{"date", Kind::Date},
                              NamedKind{"data", Kind::Data},
                              NamedKind{"array", Kind::Array},
                              NamedKind{"dictionary", Kind::Dictionary}};

std::string quoted(const PropertyListValue& value) {
    return shortened(jsonText(value));
}

bool isNumber(Kind kind) {
    return kind == Kind::Integer || kind == Kind::Real || kind == Kind::Null;
}

class EntryReader {
  public:
    EntryReader(const std::string& keyPath, const QRVKnownSetting* known) : known_(known) {
        KnownSetting& setting = entry_.setting;
        setting.keyPath = keyPath;
        setting.scope = QRVScopeOfKeyPath(keyPath);
        if (known == nullptr) return;
        setting.kind = known->kind;
        setting.sentence = known->sentence;
    }

    ListEntry read(const NSDictionary& description) {
        // The kind first: other facts are compared with it.
        for (const auto& [name, value] : description)
            if (name == "kind") readKind(value);
        for (const auto& [name, value] : description) readFact(name, value);
        std::sort(entry_.faults.begin(), entry_.faults.end());
        return std::move(entry_);
    }

  private:
    void fault(std::string text) { entry_.faults.push_back(std::move(text)); }

    void readFact(std::string_view name, const PropertyListValue& value) {
        KnownSetting& setting = entry_.setting;
        if (name == "kind") return;
        if (name == "sentence")
            readText(name, value, setting.sentence);
        else if (name == "unit")
            readText(name, value, setting.unit);
        else if (name == "scope")
            readScope(value);
        else if (name == "default")
            readDefault(value);
        else if (name == "choices")
            readChoices(value);
        else if (name == "range")
            readRange(value);
        else if (name == "renamed-from")
            readEarlierNames(value);
        else
            fault(quoted(name) + " is no part of a description");
    }

    void readText(std::string_view name, const PropertyListValue& value, std::string& text) {
        if (value.isString())
            text = value.stringView();
        else
            fault(std::string(name) + " is not a string: " + quoted(value));
    }

    void readKind(const PropertyListValue& value) {
        const auto* const named =
            std::find_if(kinds.begin(), kinds.end(), [&](const NamedKind& one) {
                return value.isString() && one.name == value.stringView();
            });
        if (named == kinds.end()) return fault(quoted(value) + " is no kind");
        const bool isOther = known_ != nullptr && known_->kind != Kind::Null;
        if (isOther && known_->kind != named->kind)
            return fault("kind is " + quoted(value) + ", and that of the library is \"" +
                         kindWord(known_->kind) + "\"");
        entry_.setting.kind = named->kind;
    }

    void readScope(const PropertyListValue& value) {
        const bool isProfile = value == "profile";
        if (!isProfile && value != "application")
            return fault("scope is " + quoted(value) + ", not \"application\" or \"profile\"");
        entry_.setting.scope = isProfile ? QRVSettingScope::Profile : QRVSettingScope::Application;
    }

    bool isRightKind(std::string_view name, const PropertyListValue& value) {
        const Kind kind = entry_.setting.kind;
        if (isOfKind(value, kind)) return true;
        fault(std::string(name) + " is of another kind than " + kindWord(kind) + ": " +
              quoted(value));
        return false;
    }

    void readDefault(const PropertyListValue& value) {
        if (isRightKind("default", value)) entry_.setting.byDefault = value;
    }

    void readChoices(const PropertyListValue& value) {
        if (!value.isArray()) return fault("choices are not an array: " + quoted(value));
        for (const PropertyListValue& element : value.array()) readChoice(element);
    }

    void readChoice(const PropertyListValue& element) {
        KnownChoice choice{element, {}};
        if (element.isDictionary()) {
            const NSDictionary described = element.dictionary();
            choice.value = described.objectForKey("value");
            const PropertyListValue sentence = described.objectForKey("sentence");
            if (!sentence.isNull()) readText("sentence of a choice", sentence, choice.sentence);
            if (choice.value.isNull()) return fault("a choice has no value: " + quoted(element));
        }
        if (isRightKind("a choice", choice.value))
            entry_.setting.choices.push_back(std::move(choice));
    }

    void readRange(const PropertyListValue& value) {
        if (!value.isDictionary()) return fault("range is not a dictionary: " + quoted(value));
        if (!isNumber(entry_.setting.kind)) return fault("range of a setting that is no number");
        const NSDictionary range = value.dictionary();
        const PropertyListValue from = range.objectForKey("from");
        const PropertyListValue to = range.objectForKey("to");
        const auto isLimit = [](const PropertyListValue& limit) {
            return limit.isNull() || limit.isNumber();
        };
        const bool isInOrder =
            from.isNull() || to.isNull() || from.doubleValue() <= to.doubleValue();
        const auto limits =
            static_cast<std::size_t>(!from.isNull()) + static_cast<std::size_t>(!to.isNull());
        if (!isLimit(from) || !isLimit(to) || !isInOrder || limits == 0 || limits != range.count())
            return fault("range is not {\"from\": NUMBER, \"to\": NUMBER}: " + quoted(value));
        entry_.setting.minimum = from;
        entry_.setting.maximum = to;
    }

    void readEarlierNames(const PropertyListValue& value) {
        const NSArray names = value.isArray() ? value.array() : NSArray::arrayWithObject(value);
        for (const PropertyListValue& name : names) readEarlierName(name);
    }

    void readEarlierName(const PropertyListValue& name) {
        if (!name.isString() || name == "" || name == entry_.setting.keyPath)
            return fault("renamed-from is no other key path: " + quoted(name));
        if (QRVKnownSettingAt(name.stringView()) != nullptr)
            return fault("renamed-from is a setting of the library: " + quoted(name));
        entry_.setting.renamedFrom.emplace_back(name.stringView());
    }

    const QRVKnownSetting* known_;
    ListEntry entry_;
};

}  // namespace

ListEntry listEntry(const std::string& keyPath, const NSDictionary& description,
                    const QRVKnownSetting* known) {
    return EntryReader(keyPath, known).read(description);
}

bool isOfKind(const PropertyListValue& value, Kind kind) {
    if (kind == Kind::Null) return true;
    if (kind == Kind::Real) return value.isNumber();
    return value.kind() == (kind == Kind::Color ? Kind::String : kind);
}

std::string kindWord(Kind kind) {
    const auto* const named = std::find_if(
        kinds.begin(), kinds.end(), [kind](const NamedKind& one) { return one.kind == kind; });
    return named == kinds.end() ? "any" : std::string(named->name);
}

}  // namespace Tool
