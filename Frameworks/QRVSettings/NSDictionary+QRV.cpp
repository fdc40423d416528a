// SPDX-License-Identifier: MIT
#include "QRVSettings/NSDictionary+QRV.h"

#include <string>
#include <utility>
#include <vector>

#include "Platform/System/System.h"

namespace NSDictionaryQRV {
namespace {

constexpr char separator = '.';

// Takes the first key off a key path; empty when what is left is the leaf key.
std::optional<std::string_view> takeIntermediateKey(std::string_view& rest) {
    const std::size_t end = rest.find(separator);
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view key = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return key;
}

NSDictionary dictionaryOrThrow(const PropertyListValue& object, KeyPath keyPath) {
    if (!object.isDictionary()) {
        throw NSInvalidArgumentException("a value on the way is not a dictionary, key path " +
                                         std::string(keyPath.text()));
    }
    return object.dictionary();
}

NSMutableDictionary mutableOrThrow(const NSDictionary& dictionary, KeyPath keyPath) {
    if (!dictionary.isMutable()) {
        throw NSInvalidArgumentException("the root dictionary is immutable, key path " +
                                         std::string(keyPath.text()));
    }
    return dictionary.asMutable();
}

// What the write walks into next: the level under `key`, created or made mutable where needed, or a
// value that is not a dictionary.
PropertyListValue writableLevel(const NSDictionary& parent, std::string_view key, KeyPath keyPath) {
    PropertyListValue present = parent.objectForKey(key);
    if (present.isNull()) {
        const NSMutableDictionary created;
        mutableOrThrow(parent, keyPath).setObjectForKey(created, key);
        return created;
    }
    if (!present.isDictionary()) {
        NSLog("leaf is not a dictionary");
        return present;
    }
    if (present.dictionary().isMutable()) return present;
    const NSMutableDictionary copy = present.dictionary().mutableCopy();
    mutableOrThrow(parent, keyPath).setObjectForKey(copy, key);
    return copy;
}

}  // namespace

PropertyListValue objectAtKeyPath(const NSDictionary& root, KeyPath keyPath) {
    if (keyPath.isNull()) return nullptr;
    NSDictionary current = root;
    std::string_view rest = keyPath.text();
    while (const auto key = takeIntermediateKey(rest)) {
        PropertyListValue next = current.objectForKey(*key);
        if (next.isNull()) return nullptr;
        if (!next.isDictionary()) {
            NSLog("object is not a dictionary");
            NSLog("%@", {keyPath.text()});
            return nullptr;
        }
        current = std::move(next).dictionary();
    }
    return current.objectForKey(rest);
}

void setObjectAtKeyPath(const NSDictionary& root, const PropertyListValue& value, KeyPath keyPath) {
    if (root.isNull()) return;
    if (keyPath.isNull()) throw NSInvalidArgumentException("the key path of a write is null");
    PropertyListValue current = root;
    std::string_view rest = keyPath.text();
    while (const auto key = takeIntermediateKey(rest)) {
        current = writableLevel(dictionaryOrThrow(current, keyPath), *key, keyPath);
    }
    mutableOrThrow(dictionaryOrThrow(current, keyPath), keyPath).setObjectForKey(value, rest);
}

// A list of what remains to be looked at instead of recursion: a key path of many components makes
// a tree as deep as it likes.
bool hasValues(const NSDictionary& dictionary) {
    std::vector<NSDictionary> remaining{dictionary};
    while (!remaining.empty()) {
        const NSDictionary level = std::move(remaining.back());
        remaining.pop_back();
        for (const auto& [key, value] : level) {
            if (!value.isDictionary()) return true;
            remaining.push_back(value.dictionary());
        }
    }
    return false;
}

void flatten(const NSDictionary& tree, const NSMutableDictionary& results) {
    flatten(tree, results, std::nullopt);
}

// A dictionary without leaves enters nothing by itself, so that it need not be looked for first.
void flatten(const PropertyListValue& value, const NSMutableDictionary& results,
             std::optional<std::string_view> prefix) {
    struct Level {
        NSDictionary dictionary;
        std::string keyPathStart;
    };
    std::vector<Level> remaining;
    remaining.push_back({value.dictionary(), prefix ? std::string(*prefix) + separator : ""});
    while (!remaining.empty()) {
        const Level level = std::move(remaining.back());
        remaining.pop_back();
        for (const auto& [key, element] : level.dictionary) {
            std::string keyPath = level.keyPathStart + std::string(key);
            if (element.isDictionary()) {
                remaining.push_back({element.dictionary(), std::move(keyPath) + separator});
            } else {
                results.setObjectForKey(element, keyPath);
            }
        }
    }
}

namespace {

// By their flat maps: any two key paths that look alike are one.
NSMutableArray changedKeysOfFlattened(const NSDictionary& dict1, const NSDictionary& dict2) {
    const NSMutableDictionary before;
    const NSMutableDictionary after;
    flatten(dict1, before);
    flatten(dict2, after);
    NSMutableArray changed;
    for (const auto& [keyPath, value] : before)
        if (after.objectForKey(keyPath) != value) changed.addObject(keyPath);
    for (const auto& [keyPath, value] : after)
        if (before.objectForKey(keyPath).isNull()) changed.addObject(keyPath);
    return changed;
}

struct KeyWithSeparator {};

/// Walks over two trees at once and collects where they differ. Throws KeyWithSeparator where a key
/// holds a ".": then two ways through a tree may have one key path.
class Comparison {
  public:
    NSMutableArray changedKeys(const NSDictionary& dict1, const NSDictionary& dict2) {
        remaining_.push_back({dict1, dict2, ""});
        while (!remaining_.empty()) {
            const Level level = std::move(remaining_.back());
            remaining_.pop_back();
            compare(level);
        }
        return changed_;
    }

  private:
    /// Two dictionaries at one place; null where there is none.
    struct Level {
        NSDictionary before;
        NSDictionary after;
        std::string keyPathStart;
    };

    void compare(const Level& level) {
        if (level.before.isIdenticalTo(level.after)) return;
        for (const auto& [key, value] : level.before)
            compare(value, level.after.objectForKey(key), level, key);
        for (const auto& [key, value] : level.after)
            if (level.before.objectForKey(key).isNull()) compare(nullptr, value, level, key);
    }

    void compare(const PropertyListValue& before, const PropertyListValue& after,
                 const Level& level, std::string_view key) {
        if (key.find(separator) != std::string_view::npos) throw KeyWithSeparator();
        if (before.isIdenticalTo(after)) return;
        const bool hadLeaf = !before.isNull() && !before.isDictionary();
        const bool hasLeaf = !after.isNull() && !after.isDictionary();
        const bool isEqual = hadLeaf && hasLeaf && before == after;
        if (isEqual) return;
        std::string keyPath = level.keyPathStart + std::string(key);
        if (hadLeaf || hasLeaf) changed_.addObject(keyPath);
        if (before.isDictionary() || after.isDictionary())
            remaining_.push_back(
                {before.dictionary(), after.dictionary(), std::move(keyPath) + separator});
    }

    std::vector<Level> remaining_;
    NSMutableArray changed_;
};

}  // namespace

NSMutableArray changedKeys(const NSDictionary& dict1, const NSDictionary& dict2) {
    try {
        return Comparison().changedKeys(dict1, dict2);
    } catch (const KeyWithSeparator&) {
        return changedKeysOfFlattened(dict1, dict2);
    }
}

}  // namespace NSDictionaryQRV
