// SPDX-License-Identifier: MIT
#pragma once

// Key paths for look-ups in several trees.

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "Platform/Values/DictionaryDescent.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVInside {

/// A key path, split into its keys and hashed once. Refers to the text.
class HashedKeyPath {
  public:
    explicit HashedKeyPath(std::string_view keyPath);
    HashedKeyPath(const HashedKeyPath&) = delete;
    HashedKeyPath& operator=(const HashedKeyPath&) = delete;

    [[nodiscard]] std::string_view text() const noexcept { return text_; }
    /// The keys in their order; at least one.
    [[nodiscard]] std::span<const QRVPlatform::HashedKey> keys() const noexcept {
        return {isLong() ? ofLongPath_.data() : few_.data(), count_};
    }

  private:
    // More than any known setting has.
    static constexpr std::size_t fewKeys = 10;

    void add(std::string_view key);
    [[nodiscard]] bool isLong() const noexcept { return count_ > fewKeys; }

    std::string_view text_;
    std::size_t count_ = 0;
    std::array<QRVPlatform::HashedKey, fewKeys> few_;
    std::vector<QRVPlatform::HashedKey> ofLongPath_;
};

void logValueOnTheWay(const HashedKeyPath& keyPath);

/// The value at the key path, in place and as long as `descent` keeps it; null when nothing is
/// there. Writes a line to the log where the key path leads through a value.
template <typename Descent>
const PropertyListValue* found(Descent& descent, const HashedKeyPath& keyPath) {
    const auto keys = keyPath.keys();
    for (const QRVPlatform::HashedKey& key : keys.first(keys.size() - 1)) {
        const PropertyListValue* const next = descent.find(key);
        if (next == nullptr) return nullptr;
        if (!next->isDictionary()) {
            logValueOnTheWay(keyPath);
            return nullptr;
        }
        descent.enter(*next);
    }
    return descent.find(keys.back());
}

/// The value at a key path of a tree that only the calling thread changes; null for a null tree. In
/// place, valid until that thread changes the tree.
const PropertyListValue* valueOfTheWriter(const NSDictionary& root, const HashedKeyPath& keyPath);

/// `NSDictionaryQRV::setObjectAtKeyPath` in a tree that only the calling thread changes.
void setValueOfTheWriter(const NSMutableDictionary& root, const PropertyListValue& value,
                         const HashedKeyPath& keyPath);

/// What was found, as a handle.
inline PropertyListValue valueOrNull(const PropertyListValue* found) {
    return found == nullptr ? PropertyListValue() : *found;
}

}  // namespace QRVInside
