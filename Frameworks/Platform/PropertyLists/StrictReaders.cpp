// SPDX-License-Identifier: MIT
// Finds the text that readers refuse which hold to XML 1.0.

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/TreeWalk.h"
#include "Platform/PropertyLists/Unicode.h"

using namespace QRVPlatform;

namespace {

using PropertyLists::TreeWalk;

constexpr bool isRefusedControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < ' ' && character != '\t' && character != '\n' && character != '\r';
}

std::string numberOf(char control) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(control);
    return {'U', '+', '0', '0', digits[byte >> 4U], digits[byte & 0xFU]};
}

/// The first character of UTF-8 that XML 1.0 does not have, as `U+0001`.
std::optional<std::string> refusedCharacter(std::string_view text) {
    const auto* const control = std::find_if(text.begin(), text.end(), isRefusedControl);
    const auto position = static_cast<std::size_t>(control - text.begin());
    const std::string_view before = text.substr(0, position);
    for (std::size_t place = before.find("\xEF\xBF"); place != std::string_view::npos;
         place = before.find("\xEF\xBF", place + 3)) {
        const std::string_view character = before.substr(place, 3);
        if (character == "\xEF\xBF\xBE") return "U+FFFE";
        if (character == "\xEF\xBF\xBF") return "U+FFFF";
    }
    if (control == text.end()) return std::nullopt;
    return numberOf(*control);
}

class Search {
  public:
    Search(const PropertyListValue& root, std::size_t most) : walk_(root), most_(most) {}

    std::vector<PropertyListError> refusals() {
        while (refusals_.size() < most_ && values_ < NSPropertyListSerialization::maximumValues) {
            const TreeWalk::Step step = walk_.next();
            if (step == TreeWalk::Step::EndOfTree) break;
            if (step == TreeWalk::Step::Value) checkValue(walk_.value());
        }
        if (refusals_.size() > most_) refusals_.pop_back();
        return std::move(refusals_);
    }

  private:
    // At most two refusals: of the key, and of the value itself.
    void checkValue(const PropertyListValue& value) {
        ++values_;
        if (walk_.hasKey()) checkText(walk_.key(), "a key");
        if (value.isString()) checkText(value.stringView(), "a string");
        const bool isContainer = value.isArray() || value.isDictionary();
        if (isContainer && walk_.level() < NSPropertyListSerialization::maximumLevels)
            walk_.enter();
    }

    void checkText(std::string_view text, const std::string& what) {
        const auto character = refusedCharacter(text);
        if (!character || PropertyLists::positionOfBrokenUTF8(text)) return;
        PropertyListError& refusal = refusals_.emplace_back();
        refusal.message = what + " holds " + *character + ", which strict XML readers refuse";
        refusal.place = PropertyListError::Place::KeyPath;
        refusal.keyPath = walk_.keyPath();
    }

    TreeWalk walk_;
    const std::size_t most_;
    std::size_t values_ = 0;
    std::vector<PropertyListError> refusals_;
};

}  // namespace

std::vector<PropertyListError> NSPropertyListSerialization::refusalsOfStrictReaders(
    const PropertyListValue& value, std::size_t most) {
    return Search(value, most).refusals();
}
