// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "Platform/Values/ContainerObjects.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform {

/// Walks over the keys of two dictionaries as they were at construction, each key once. Where both
/// hold their keys in the same order, as two readings of one file do, a key costs no search.
///
///     for (DictionaryPairs pairs(before, after); pairs.next();)
///         show(pairs.key(), pairs.valueBefore(), pairs.valueAfter());
class DictionaryPairs {
  public:
    /// Both must be dictionaries, and must live as long as this.
    DictionaryPairs(const PropertyListValue& before, const PropertyListValue& after)
        : before_(before), after_(after) {}

    /// Moves to the next key; false at the end.
    bool next();
    /// Valid as long as this lives.
    [[nodiscard]] std::string_view key() const noexcept { return key_; }
    /// Null when the dictionary does not have the key.
    [[nodiscard]] const PropertyListValue* valueBefore() const noexcept { return valueBefore_; }
    [[nodiscard]] const PropertyListValue* valueAfter() const noexcept { return valueAfter_; }

  private:
    using Contents = ValueObjects::CurrentContents<ValueObjects::DictionaryObject>;
    using Entry = ValueObjects::DictionaryContents::Entry;

    [[nodiscard]] const PropertyListValue* valueAfter(const Entry& entry) const;

    Contents before_;
    Contents after_;
    std::size_t position_ = 0;  // counted over both, one after the other
    std::size_t found_ = 0;     // how many keys are in both
    std::string_view key_;
    const PropertyListValue* valueBefore_ = nullptr;
    const PropertyListValue* valueAfter_ = nullptr;
};

}  // namespace QRVPlatform
