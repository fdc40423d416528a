// SPDX-License-Identifier: MIT
#include "QRVSettings/NSDictionary+QRV.h"

#include <string>
#include <utility>
#include <vector>

#include "Platform/System/System.h"
#include "Platform/Values/DictionaryDescent.h"
#include "Platform/Values/DictionaryPairs.h"
#include "QRVSettings/HashedKeyPath.h"

namespace NSDictionaryQRV {
namespace {

constexpr char separator = '.';

// Takes the first key off a key path; empty when only the leaf key is left.
std::optional<std::string_view> takeIntermediateKey(std::string_view& rest) {
    std::size_t end = 0;  // a key is so short that a call of a search costs more
    while (end < rest.size() && rest[end] != separator) ++end;
    if (end == rest.size()) return std::nullopt;
    const std::string_view key = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return key;
}

[[noreturn]] void fail(const char* reason, QRVKeyPath keyPath) {
    throw NSInvalidArgumentException(reason + (", key path " + std::string(keyPath.text())));
}

// The level itself. Only a root can be immutable here: every other level was made mutable.
NSMutableDictionary mutableOrThrow(const NSDictionary& level, QRVKeyPath keyPath) {
    if (!level.isMutable()) fail("the root dictionary is immutable", keyPath);
    return level.asMutable();
}

// The level under `key` that a write goes on to, created or made mutable where needed.
NSDictionary writableLevel(const NSDictionary& parent, std::string_view key, QRVKeyPath keyPath) {
    PropertyListValue present = parent.objectForKey(key);
    NSMutableDictionary level(nullptr);
    if (present.isNull()) {
        level = NSMutableDictionary();
    } else if (!present.isDictionary()) {
        NSLog("leaf is not a dictionary");
        fail("a value on the way is not a dictionary", keyPath);
    } else {
        NSDictionary dictionary = std::move(present).dictionary();
        if (dictionary.isMutable()) return dictionary;
        level = dictionary.mutableCopy();
    }
    mutableOrThrow(parent, keyPath).setObjectForKey(level, key);
    return level;
}

}  // namespace

PropertyListValue objectAtKeyPath(const NSDictionary& root, QRVKeyPath keyPath) {
    if (keyPath.isNull()) return nullptr;
    if (root.isNull()) return nullptr;
    QRVPlatform::DictionaryDescent descent(root);
    return QRVInside::valueOrNull(
        QRVInside::found(descent, QRVInside::HashedKeyPath(keyPath.text())));
}

void setObjectAtKeyPath(const NSDictionary& root, const PropertyListValue& value,
                        QRVKeyPath keyPath) {
    if (root.isNull()) return;
    if (keyPath.isNull()) throw NSInvalidArgumentException("the key path of a write is null");
    NSDictionary current = root;
    std::string_view rest = keyPath.text();
    while (const auto key = takeIntermediateKey(rest))
        current = writableLevel(current, *key, keyPath);
    mutableOrThrow(current, keyPath).setObjectForKey(value, rest);
}

// A list of the levels still to visit instead of recursion: a key path of many components can make
// a tree of any depth.
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

// A dictionary without leaves adds no entry, so that no test for one is needed.
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

// Compares their flat maps, where two ways through a tree with one key path are one entry.
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

/// Walks over two trees at once and collects the key paths of their differences. Throws
/// KeyWithSeparator for a key that holds a ".": then two ways through a tree may have one key path.
class Comparison {
  public:
    NSMutableArray changedKeys(const NSDictionary& dict1, const NSDictionary& dict2) {
        const PropertyListValue before = orEmpty(dict1);
        const PropertyListValue after = orEmpty(dict2);
        if (!before.isIdenticalTo(after)) levels_.emplace_back(before, after);
        while (!levels_.empty()) {
            if (levels_.back().next())
                compareValues();
            else
                levels_.pop_back();
        }
        return changed_;
    }

  private:
    static NSDictionary orEmpty(const NSDictionary& dictionary) {
        return dictionary.isNull() ? NSDictionary() : dictionary;
    }

    void compareValues() {
        const QRVPlatform::DictionaryPairs& pair = levels_.back();
        if (pair.key().find(separator) != std::string_view::npos) throw KeyWithSeparator();
        const PropertyListValue& before = orNull(pair.valueBefore());
        const PropertyListValue& after = orNull(pair.valueAfter());
        if (before.isIdenticalTo(after)) return;
        const bool hadLeaf = !before.isNull() && !before.isDictionary();
        const bool hasLeaf = !after.isNull() && !after.isDictionary();
        if ((hadLeaf || hasLeaf) && before != after) changed_.addObject(keyPath());
        if (before.isDictionary() || after.isDictionary())
            levels_.emplace_back(before.isDictionary() ? before : empty_,
                                 after.isDictionary() ? after : empty_);
    }

    static const PropertyListValue& orNull(const PropertyListValue* value) {
        static constexpr PropertyListValue null;
        return value == nullptr ? null : *value;
    }

    [[nodiscard]] std::string keyPath() const {
        std::string text;
        for (const QRVPlatform::DictionaryPairs& level : levels_) {
            if (&level != &levels_.front()) text += separator;
            text += level.key();
        }
        return text;
    }

    const PropertyListValue empty_ = NSDictionary();
    std::vector<QRVPlatform::DictionaryPairs> levels_;  // from the root to where the walk is
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
