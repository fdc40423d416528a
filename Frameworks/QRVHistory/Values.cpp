// SPDX-License-Identifier: MIT
#include "Values.h"

#include <algorithm>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"

namespace QRVHistoryInside {

namespace {

constexpr std::string_view opening = "<plist version=\"1.0\">\n";
constexpr std::string_view closing = "\n</plist>";

}  // namespace

Text textOf(const PropertyListValue& value) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(value);
    if (written.error) return std::nullopt;
    const std::size_t start = written.bytes.find(opening) + opening.size();
    return written.bytes.substr(start, written.bytes.rfind(closing) - start);
}

PropertyListValue valueOf(const Text& text) {
    if (!text) return nullptr;
    const std::string bytes = std::string(opening).append(*text).append(closing);
    return NSPropertyListSerialization::propertyListWithData(bytes).value;
}

// The same number may be an integer or a real.
bool areEqual(const Text& left, const Text& right) {
    if (left == right) return true;
    return left && right && valueOf(left) == valueOf(right);
}

PropertyListValue leafAt(const NSDictionary& tree, std::string_view keyPath) {
    PropertyListValue value = tree;
    for (std::size_t start = 0; value.isDictionary();) {
        const std::size_t end = std::min(keyPath.find('.', start), keyPath.size());
        value = value.dictionary().objectForKey(keyPath.substr(start, end - start));
        if (end == keyPath.size()) return value.isDictionary() ? PropertyListValue() : value;
        start = end + 1;
    }
    return nullptr;
}

Changes changesBetween(const NSDictionary& before, const NSDictionary& after) {
    Changes changes;
    for (const PropertyListValue& changed : NSDictionaryQRV::changedKeys(before, after)) {
        const std::string keyPath = changed.stringValue();
        Change change{textOf(leafAt(before, keyPath)), textOf(leafAt(after, keyPath))};
        if (change.before != change.after) changes.emplace(keyPath, std::move(change));
    }
    return changes;
}

Changes changesSince(const Leaves& leaves, const NSDictionary& tree) {
    Changes changes;
    Leaves now = leavesOf(tree);
    for (const auto& [keyPath, text] : leaves) {
        const auto found = now.find(keyPath);
        const Text after = found == now.end() ? Text() : Text(found->second);
        if (!areEqual(text, after)) changes.emplace(keyPath, Change{text, after});
        if (found != now.end()) now.erase(found);
    }
    for (auto& [keyPath, text] : now)
        changes.emplace(keyPath, Change{std::nullopt, std::move(text)});
    return changes;
}

void takeBack(const Changes& changes, Leaves& leaves) {
    for (const auto& [keyPath, change] : changes)
        if (change.before)
            leaves.insert_or_assign(keyPath, *change.before);
        else
            leaves.erase(keyPath);
}

Leaves leavesOf(const NSDictionary& tree) {
    Leaves leaves;
    if (tree.isNull()) return leaves;
    const NSMutableDictionary flat;
    NSDictionaryQRV::flatten(tree, flat);
    for (const auto& [keyPath, value] : flat)
        if (Text text = textOf(value)) leaves.emplace(keyPath, std::move(*text));
    return leaves;
}

}  // namespace QRVHistoryInside
