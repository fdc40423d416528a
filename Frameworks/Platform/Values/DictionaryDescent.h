// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Values/ContainerObjects.h"
#include "Platform/Values/HashedKey.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform {

/// A way down a tree of dictionaries. Each level is seen as it is when it is entered. Immutable
/// levels, such as those of a tree that was read from a file, cost no lock and no reference.
class DictionaryDescent {
  public:
    /// `root` must not be null, and must live as long as this.
    explicit DictionaryDescent(const NSDictionary& root) : level_(root) {}

    /// The value under a key of the current level; null when the key is missing. Valid until the
    /// next level is entered.
    [[nodiscard]] const PropertyListValue* find(const HashedKey& key) const noexcept {
        return level_->find(key.text(), key.hash);
    }
    /// Enters a dictionary that was found.
    void enter(const PropertyListValue& dictionary) { level_.enter(dictionary); }

  private:
    ValueObjects::CurrentContents<ValueObjects::DictionaryObject> level_;
};

/// The same for the thread that alone changes the dictionaries of the tree: no level costs a lock
/// or a reference. What was found is valid until that thread changes the tree.
class WritersDescent {
  public:
    /// `root` must not be null.
    explicit WritersDescent(const NSDictionary& root) noexcept
        : level_(&ValueObjects::contentsForTheWriter(ValueObjects::Access::objectOf(root))) {}

    /// The value under a key of the current level; null when the key is missing.
    [[nodiscard]] const PropertyListValue* find(const HashedKey& key) const noexcept {
        return level_->find(key.text(), key.hash);
    }
    /// Enters a dictionary that was found.
    void enter(const PropertyListValue& dictionary) noexcept {
        level_ = &ValueObjects::contentsForTheWriter(ValueObjects::Access::objectOf(dictionary));
    }

  private:
    const ValueObjects::DictionaryContents* level_;
};

}  // namespace QRVPlatform
