// SPDX-License-Identifier: MIT
// Finds the text that readers refuse which hold to XML 1.0.

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/Limits.h"
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

}  // namespace

std::vector<PropertyListError> NSPropertyListSerialization::refusalsOfStrictReaders(
    const PropertyListValue& value, std::size_t most) {
    std::vector<PropertyListError> refusals;
    TreeWalk walk(value);
    const auto check = [&](std::string_view text, const std::string& what) {
        const auto character = refusedCharacter(text);
        if (!character || PropertyLists::positionOfBrokenUTF8(text)) return;
        PropertyListError refusal;
        refusal.message = what + " holds " + *character + ", which strict XML readers refuse";
        refusal.place = PropertyListError::Place::KeyPath;
        refusal.keyPath = walk.keyPath();
        refusals.push_back(std::move(refusal));
    };
    std::size_t values = 0;
    for (auto step = walk.next(); step != TreeWalk::Step::EndOfTree; step = walk.next()) {
        if (step != TreeWalk::Step::Value) continue;
        if (refusals.size() >= most || ++values > maximumValues) break;
        if (walk.hasKey()) check(walk.key(), "a key");
        const PropertyListValue& found = walk.value();
        if (found.isString()) check(found.stringView(), "a string");
        if ((found.isArray() || found.isDictionary()) && walk.level() < maximumLevels) walk.enter();
    }
    if (refusals.size() > most) refusals.resize(most);
    return refusals;
}
