// SPDX-License-Identifier: MIT
#include "Text/StrictXML.h"

#include <algorithm>
#include <map>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"

namespace Tool {
namespace {

using RefusalsByKeyPath = std::map<std::string, std::string>;

/// The first refusal within the entry; empty when there is none.
std::string firstRefusal(const std::string& key, const PropertyListValue& value) {
    const NSDictionary entry{{key, value}};
    const auto refusals = NSPropertyListSerialization::refusalsOfStrictReaders(entry, 1);
    return refusals.empty() ? "" : refusals.front().message;
}

void collect(const NSDictionary& level, const std::string& start, RefusalsByKeyPath& found) {
    for (const auto& [keyView, value] : level) {
        const std::string key(keyView);
        const std::string keyPath = start + key;
        const bool isLevel = value.isDictionary();
        const std::string refusal = firstRefusal(key, isLevel ? true : value);
        if (!refusal.empty())
            found.emplace(keyPath, refusal);
        else if (isLevel)
            collect(value.dictionary(), keyPath + ".", found);
    }
}

}  // namespace

std::vector<RefusedText> textsRefusedByStrictXML(const NSDictionary& tree) {
    if (NSPropertyListSerialization::refusalsOfStrictReaders(tree, 1).empty()) return {};
    RefusalsByKeyPath found;
    collect(tree, "", found);
    std::vector<RefusedText> texts;
    for (const auto& [keyPath, refusal] : found) texts.push_back({keyPath, refusal});
    return texts;
}

std::vector<std::string> remarksOfStrictXML(const NSDictionary& tree) {
    constexpr std::size_t mostNamed = 5;
    const std::vector<RefusedText> texts = textsRefusedByStrictXML(tree);
    std::vector<std::string> remarks;
    for (std::size_t index = 0; index < std::min(texts.size(), mostNamed); ++index)
        remarks.push_back(texts[index].refusal + ", " + texts[index].keyPath);
    if (texts.size() > mostNamed)
        remarks.push_back("they refuse " + std::to_string(texts.size() - mostNamed) +
                          " more settings");
    return remarks;
}

}  // namespace Tool
