// SPDX-License-Identifier: MIT
#include "Text/StrictXML.h"

#include <map>
#include <string_view>

namespace Tool {
namespace {

/// Empty when there is none.
std::string refusedCharacter(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        const bool isAllowed = byte >= ' ' || byte == '\t' || byte == '\n' || byte == '\r';
        if (!isAllowed) return std::string("U+00") + digits[byte >> 4U] + digits[byte & 0xFU];
        if (text.substr(index, 3) == "\xef\xbf\xbe") return "U+FFFE";
        if (text.substr(index, 3) == "\xef\xbf\xbf") return "U+FFFF";
    }
    return "";
}

std::string refusedWithin(const PropertyListValue& value);

std::string refusedInElements(const NSArray& array) {
    for (const PropertyListValue& element : array) {
        const std::string refused = refusedWithin(element);
        if (!refused.empty()) return refused;
    }
    return "";
}

std::string refusedInEntries(const NSDictionary& dictionary) {
    for (const auto& [key, entry] : dictionary) {
        const std::string inKey = refusedCharacter(key);
        const std::string refused = inKey.empty() ? refusedWithin(entry) : inKey;
        if (!refused.empty()) return refused;
    }
    return "";
}

std::string refusedWithin(const PropertyListValue& value) {
    if (value.isString()) return refusedCharacter(value.stringView());
    if (value.isArray()) return refusedInElements(value.array());
    return value.isDictionary() ? refusedInEntries(value.dictionary()) : "";
}

using CharactersByKeyPath = std::map<std::string, std::string>;

void collect(const NSDictionary& level, const std::string& start, CharactersByKeyPath& found) {
    for (const auto& [key, value] : level) {
        const std::string keyPath = start + std::string(key);
        const std::string inKey = refusedCharacter(key);
        if (!inKey.empty())
            found.emplace(keyPath, inKey);
        else if (value.isDictionary())
            collect(value.dictionary(), keyPath + ".", found);
        else if (const std::string refused = refusedWithin(value); !refused.empty())
            found.emplace(keyPath, refused);
    }
}

}  // namespace

std::vector<RefusedText> textsRefusedByStrictXML(const NSDictionary& tree) {
    CharactersByKeyPath found;
    if (!tree.isNull()) collect(tree, "", found);
    std::vector<RefusedText> texts;
    for (const auto& [keyPath, character] : found) texts.push_back({keyPath, character});
    return texts;
}

}  // namespace Tool
