// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "Platform/Values/ContainerObjects.h"
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
    [[nodiscard]] const PropertyListValue* find(std::string_view key) const noexcept {
        return level_->find(key, ValueObjects::hashOf(key));
    }
    /// Enters a dictionary that was found.
    void enter(const PropertyListValue& dictionary) { level_.enter(dictionary); }

  private:
    ValueObjects::CurrentContents<ValueObjects::DictionaryObject> level_;
};

}  // namespace QRVPlatform
