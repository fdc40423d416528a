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
    [[nodiscard, gnu::always_inline]] inline const PropertyListValue* find(
        const HashedKey& key) const noexcept {
        return level_->find(key.text(), key.hash);
    }
    /// Enters a dictionary that was found.
    void enter(const PropertyListValue& dictionary) noexcept {
        level_ = &ValueObjects::contentsForTheWriter(ValueObjects::Access::objectOf(dictionary));
    }

  private:
    const ValueObjects::DictionaryContents* level_;
};

/// A way of that thread down the mutable dictionaries of a tree, to a change.
class WritersEdit {
  public:
    /// `root` must not be null.
    explicit WritersEdit(const NSMutableDictionary& root) noexcept
        : level_(ValueObjects::Access::objectOf(root)) {}

    /// Enters the mutable dictionary under a key. False, and stays, when there is none.
    [[nodiscard]] bool enter(const HashedKey& key) noexcept {
        using ValueObjects::Access;
        const PropertyListValue* const next =
            ValueObjects::contentsForTheWriter(level_).find(key.text(), key.hash);
        if (next == nullptr || !next->isDictionary()) return false;
        if (!Access::objectOf(*next)->isMutable) return false;
        level_ = Access::objectOf(*next);
        return true;
    }
    /// `NSMutableDictionary::setObjectForKey` of the current level.
    void set(PropertyListValue value, const HashedKey& key) const;
    /// The same. Returns the key as a string, which is that of the dictionary unless `value` is
    /// null.
    [[nodiscard]] PropertyListValue setAndShareKey(PropertyListValue value,
                                                   const HashedKey& key) const;

  private:
    ValueObjects::Object* level_;
};

}  // namespace QRVPlatform
