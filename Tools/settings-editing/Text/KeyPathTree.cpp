// SPDX-License-Identifier: MIT
#include "Text/KeyPathTree.h"

#include <set>
#include <string_view>

#include "Reporting/Failure.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

/// The dictionary under `key`, which changes may reach only here.
NSMutableDictionary ownLevel(const NSMutableDictionary& parent, std::string_view key) {
    const PropertyListValue present = parent.objectForKey(key);
    NSMutableDictionary level =
        present.isNull() ? NSMutableDictionary() : present.dictionary().mutableCopy();
    parent.setObjectForKey(level, key);
    return level;
}

void merge(const NSMutableDictionary& level, std::string_view key, const PropertyListValue& value,
           const std::string& keyPath) {
    const PropertyListValue present = level.objectForKey(key);
    if (present.isNull()) {
        level.setObjectForKey(value, key);
    } else if (present.isDictionary() && value.isDictionary()) {
        const NSMutableDictionary below = ownLevel(level, key);
        for (const auto& [keyBelow, valueBelow] : value.dictionary())
            merge(below, keyBelow, valueBelow, keyPath + "." + std::string(keyBelow));
    } else {
        throw Failure(Fault::WrongValue, "two values for one key path: " + keyPathText(keyPath));
    }
}

void put(NSMutableDictionary level, const PropertyListValue& value, const std::string& keyPath) {
    std::size_t start = 0;
    for (std::size_t end = keyPath.find('.'); end != keyPath.npos; end = keyPath.find('.', start)) {
        const std::string key = keyPath.substr(start, end - start);
        const PropertyListValue present = level.objectForKey(key);
        if (!present.isNull() && !present.isDictionary())
            throw Failure(Fault::WrongValue, keyPathText(keyPath.substr(0, end)) +
                                                 " has a value, so that there can be no " +
                                                 keyPathText(keyPath));
        level = ownLevel(level, key);
        start = end + 1;
    }
    merge(level, keyPath.substr(start), value, keyPath);
}

}  // namespace

std::optional<std::string> keyWithDot(const NSDictionary& level) {
    std::set<std::string> keys;
    for (const auto& [key, value] : level)
        if (key.find('.') != key.npos) keys.emplace(key);
    return keys.empty() ? std::nullopt : std::optional(*keys.begin());
}

NSDictionary treeOfKeyPaths(const NSDictionary& valuesByKeyPath) {
    std::set<std::string> keyPaths;
    for (const auto& [keyPath, value] : valuesByKeyPath) keyPaths.emplace(keyPath);
    NSMutableDictionary root;
    for (const std::string& keyPath : keyPaths)
        put(root, valuesByKeyPath.objectForKey(keyPath), keyPath);
    return root;
}

}  // namespace Tool
