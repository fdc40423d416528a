// SPDX-License-Identifier: MIT
#include "Text/KeyPaths.h"

#include "QRVSettings/NSDictionary+QRV.h"
#include "Reporting/PrintableText.h"
#include "Text/JSON.h"

namespace Tool {
bool isAtOrBelow(std::string_view keyPath, std::string_view prefix) {
    return keyPath.starts_with(prefix) &&
           (keyPath.size() == prefix.size() || keyPath[prefix.size()] == '.');
}

PropertyListValue valueAt(const PropertyListValue& tree, std::string_view keyPath) {
    PropertyListValue value = tree;
    while (value.isDictionary()) {
        const std::size_t end = keyPath.find('.');
        value = value.dictionary().objectForKey(keyPath.substr(0, end));
        if (end == keyPath.npos) return value;
        keyPath.remove_prefix(end + 1);
    }
    return nullptr;
}

std::optional<std::string> leafAbove(const NSDictionary& tree, std::string_view keyPath) {
    for (std::size_t end = keyPath.find('.'); end != keyPath.npos;
         end = keyPath.find('.', end + 1)) {
        const std::string_view above = keyPath.substr(0, end);
        const PropertyListValue value = NSDictionaryQRV::objectAtKeyPath(tree, above);
        if (!value.isNull() && !value.isDictionary()) return std::string(above);
    }
    return std::nullopt;
}

NSDictionary leavesByKeyPath(const NSDictionary& tree) {
    NSMutableDictionary leaves;
    NSDictionaryQRV::flatten(tree, leaves);
    return leaves;
}

NSDictionary snapshotOf(const NSDictionary& tree) {
    NSMutableDictionary copy;
    if (tree.isNull()) return copy;
    for (const auto& [key, value] : tree)
        copy.setObjectForKey(
            value.isDictionary() ? PropertyListValue(snapshotOf(value.dictionary())) : value, key);
    return copy.copy();
}

std::string keyPathText(std::string_view keyPath) {
    return !keyPath.empty() && !keyPath.starts_with('"') && !holdsControls(keyPath)
               ? std::string(keyPath)
               : jsonText(keyPath);
}

}  // namespace Tool
