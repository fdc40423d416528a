// SPDX-License-Identifier: MIT
#include "StoreModel.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Fuzzing.h"

namespace StoreModel {
namespace {

const Node nothing = PropertyListValue();

bool isNothing(const Node& node) {
    const auto* const leaf = std::get_if<PropertyListValue>(&node);
    return leaf != nullptr && leaf->isNull();
}

LevelReference levelIn(const Node& node) {
    const auto* const level = std::get_if<LevelReference>(&node);
    return level == nullptr ? nullptr : *level;
}

std::vector<std::string> keysOf(std::string_view keyPath) {
    std::vector<std::string> keys(1);
    for (const char character : keyPath) {
        if (character == '.')
            keys.emplace_back();
        else
            keys.back() += character;
    }
    return keys;
}

Node nodeAt(const LevelReference& root, const std::string& keyPath) {
    Node node = root == nullptr ? nothing : Node(root);
    for (const std::string& key : keysOf(keyPath)) {
        const LevelReference level = levelIn(node);
        if (level == nullptr) return nothing;
        const auto found = level->entries.find(key);
        node = found == level->entries.end() ? nothing : found->second;
    }
    return node;
}

LevelReference mutableCopyOf(const LevelReference& level) {
    return std::make_shared<Level>(Level{true, level->entries});
}

// Levels made or replaced on the way stay, also when a leaf stands further on.
bool setNodeAt(LevelReference level, const Node& node, const std::string& keyPath) {
    std::vector<std::string> keys = keysOf(keyPath);
    const std::string last = std::move(keys.back());
    keys.pop_back();
    for (const std::string& key : keys) {
        auto& entries = level->entries;
        if (!entries.contains(key)) entries[key] = std::make_shared<Level>();
        LevelReference next = levelIn(entries[key]);
        if (next == nullptr) return false;
        if (!next->isMutable) entries[key] = next = mutableCopyOf(next);
        level = next;
    }
    if (isNothing(node))
        level->entries.erase(last);
    else
        level->entries[last] = node;
    return true;
}

bool isWritable(const PropertyListValue& value) {
    constexpr double farDate = 1e12;
    if (value.isNullMarker() || value.isColor()) return false;
    if (value.isDate() && value.date().timeIntervalSinceReferenceDate() > farDate) return false;
    if (value.isString()) return value.stringView() != "\xFF";
    for (const PropertyListValue& element : value.array())
        if (!isWritable(element)) return false;
    for (const auto& [key, element] : value.dictionary())
        if (!isWritable(element)) return false;
    return true;
}

// Immutable, and dates at whole seconds.
PropertyListValue asReadFromFile(const PropertyListValue& value) {
    if (value.isDate()) return Fuzzing::wholeSecond(value.date());
    if (value.isArray()) {
        const NSMutableArray elements;
        for (const PropertyListValue& element : value.array())
            elements.addObject(asReadFromFile(element));
        return elements.copy();
    }
    if (!value.isDictionary()) return value;
    const NSMutableDictionary entries;
    for (const auto& [key, element] : value.dictionary())
        entries.setObjectForKey(asReadFromFile(element), key);
    return entries.copy();
}

}  // namespace

LevelReference levelOf(const NSDictionary& dictionary) {
    if (dictionary.isNull()) return nullptr;
    auto level = std::make_shared<Level>(Level{dictionary.isMutable(), {}});
    for (const auto& [key, value] : dictionary) level->entries[std::string(key)] = nodeOf(value);
    return level;
}

Node nodeOf(const PropertyListValue& value) {
    return value.isDictionary() ? Node(levelOf(value.dictionary())) : Node(value);
}

PropertyListValue valueOf(const Node& node) {
    const LevelReference level = levelIn(node);
    if (level == nullptr) return std::get<PropertyListValue>(node);
    const NSMutableDictionary entries;
    for (const auto& [key, entry] : level->entries) entries.setObjectForKey(valueOf(entry), key);
    return entries;
}

PropertyListValue Store::get(const OptionalKeyPath& keyPath) {
    if (!keyPath) return nullptr;
    if (cache_ && cache_->contains(*keyPath)) {
        PropertyListValue cached = valueOf(cache_->at(*keyPath));
        return cached.isNullMarker() ? PropertyListValue() : cached;
    }
    Node node = nodeAt(storedTree(), *keyPath);
    if (isNothing(node)) node = nodeAt(defaults_, *keyPath);
    if (!isCacheDisabled_) putInCache(isNothing(node) ? Node(NSNull{}) : node, *keyPath);
    return valueOf(node);
}

PropertyListValue Store::getInProfile(const OptionalKeyPath& keyPath) {
    if (!keyPath) return nullptr;
    const std::string inProfile = profileKeyPath(keyPath);
    if (cache_ && cache_->contains(inProfile)) {
        PropertyListValue cached = valueOf(cache_->at(inProfile));
        return cached.isNullMarker() ? PropertyListValue() : cached;
    }
    Node node = nodeAt(storedTree(), inProfile);
    if (isNothing(node)) node = nodeAt(defaults_, *keyPath);
    putInCache(isNothing(node) ? Node(NSNull{}) : node, inProfile);
    return valueOf(node);
}

PropertyListValue Store::getStored(const OptionalKeyPath& keyPath) {
    return keyPath ? valueOf(nodeAt(storedTree(), *keyPath)) : PropertyListValue();
}

PropertyListValue Store::getDefault(const OptionalKeyPath& keyPath) const {
    return keyPath ? valueOf(nodeAt(defaults_, *keyPath)) : PropertyListValue();
}

bool Store::set(const PropertyListValue& value, const OptionalKeyPath& keyPath,
                const OptionalKeyPath& keyPathOfDefault) {
    if (!keyPath) return false;
    const PropertyListValue byDefault = getDefault(keyPathOfDefault);
    const bool isOfItsKind =
        byDefault.kind() == value.kind() || (byDefault.isNumber() && value.isNumber());
    const Node node = nodeOf(value);
    const bool isDefault = isOfItsKind && Fuzzing::isEqualByModel(byDefault, value);
    const LevelReference& tree = storedTree();
    const LevelReference working = tree ? mutableCopyOf(tree) : std::make_shared<Level>();
    if (!setNodeAt(working, isDefault ? nothing : node, *keyPath)) return false;
    stored_ = working;
    putInCache(node, *keyPath);
    if (!isInBatch_) save();
    return true;
}

bool Store::setInProfile(const PropertyListValue& value, const OptionalKeyPath& keyPath) {
    return set(value, profileKeyPath(keyPath), keyPath);
}

void Store::clearCache(const OptionalKeyPath& keyPath) {
    if (cache_ && keyPath) cache_->erase(*keyPath);
}

void Store::commit() {
    isInBatch_ = false;
    save();
}

void Store::import(const NSDictionary& settings) {
    stored_ = mutableCopyOf(levelOf(settings));
    static_cast<void>(get("Migration.CombinedPowerItems"));
    isInBatch_ = false;
    save();
}

void Store::disableCache(bool isDisabled) {
    isCacheDisabled_ = isDisabled;
    cache_.reset();
}

void Store::reopen() {
    stored_ = nullptr;
    cache_.emplace();
}

std::string Store::profileKeyPath(const OptionalKeyPath& keyPath) const {
    return "Profiles.Settings." + profile_.value_or("(null)") + "." + keyPath.value_or("(null)");
}

const LevelReference& Store::storedTree() {
    if (stored_ == nullptr && file_ != nullptr) stored_ = mutableCopyOf(file_);
    return stored_;
}

void Store::setFile(const NSDictionary& tree) {
    file_ = levelOf(asReadFromFile(tree).dictionary());
}

void Store::putInCache(const Node& node, const std::string& keyPath) {
    if (!cache_) return;
    if (isNothing(node))
        cache_->erase(keyPath);
    else
        (*cache_)[keyPath] = node;
}

void Store::save() {
    if (stored_ == nullptr) return;
    const PropertyListValue tree = valueOf(stored_);
    if (isWritable(tree)) setFile(tree.dictionary());
}

}  // namespace StoreModel
