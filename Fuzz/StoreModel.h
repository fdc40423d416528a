// SPDX-License-Identifier: MIT
#pragma once

// A model of the store with plain maps: the cache, the stored tree, the defaults and the file after
// each operation. Levels have an identity, because a mutable level is changed in place, and whoever
// has read it sees the change.

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "Platform/Values/PropertyListValue.h"

namespace StoreModel {

struct Level;
using LevelReference = std::shared_ptr<Level>;
/// A leaf, arrays among them, or a level.
using Node = std::variant<PropertyListValue, LevelReference>;

struct Level {
    bool isMutable = true;
    std::map<std::string, Node> entries;
};

Node nodeOf(const PropertyListValue& value);
LevelReference levelOf(const NSDictionary& dictionary);
PropertyListValue valueOf(const Node& node);

/// Null as `std::nullopt`.
using OptionalKeyPath = std::optional<std::string>;

class Store {
  public:
    [[nodiscard]] PropertyListValue get(const OptionalKeyPath& keyPath);
    [[nodiscard]] PropertyListValue getInProfile(const OptionalKeyPath& keyPath);
    [[nodiscard]] PropertyListValue getStored(const OptionalKeyPath& keyPath);
    [[nodiscard]] PropertyListValue getDefault(const OptionalKeyPath& keyPath) const;

    /// False when the write is refused.
    [[nodiscard]] bool set(const PropertyListValue& value, const OptionalKeyPath& keyPath,
                           const OptionalKeyPath& keyPathOfDefault);
    [[nodiscard]] bool setInProfile(const PropertyListValue& value, const OptionalKeyPath& keyPath);
    void clearCache(const OptionalKeyPath& keyPath);
    void commit();
    /// The tree has the flags of both migrations.
    void import(const NSDictionary& settings);
    void disableCache(bool isDisabled);
    /// As a new process would find the store.
    void reopen();

    [[nodiscard]] std::string profileKeyPath(const OptionalKeyPath& keyPath) const;
    [[nodiscard]] const LevelReference& storedTree();
    [[nodiscard]] const LevelReference& file() const { return file_; }
    [[nodiscard]] const std::optional<std::map<std::string, Node>>& cache() const { return cache_; }

    void setFile(const NSDictionary& tree);
    void setDefaults(const NSDictionary& defaults) { defaults_ = levelOf(defaults); }
    void setProfile(std::string name) { profile_ = std::move(name); }
    void setInBatch(bool isInBatch) { isInBatch_ = isInBatch; }
    [[nodiscard]] bool isInBatch() const { return isInBatch_; }

  private:
    void putInCache(const Node& node, const std::string& keyPath);
    void save();

    std::optional<std::map<std::string, Node>> cache_ = std::map<std::string, Node>();
    LevelReference stored_;
    LevelReference defaults_;
    LevelReference file_;
    std::optional<std::string> profile_;
    bool isCacheDisabled_ = false;
    bool isInBatch_ = false;
};

}  // namespace StoreModel
