// SPDX-License-Identifier: MIT
#pragma once

// Edits of settings by where they are stored.

#include <compare>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Where the file keeps a setting, and how people name it.
struct SettingPlace {
    std::string keyPath;  ///< plain
    std::string profile;  ///< empty for the application's

    [[nodiscard]] std::string storedKeyPath() const;
    auto operator<=>(const SettingPlace&) const = default;
};

/// The place whose `storedKeyPath` this is.
SettingPlace placeOfStored(std::string_view storedKeyPath);

struct PendingEdit {
    SettingPlace place;
    /// What the file held when the setting was first edited; null when nothing.
    PropertyListValue base;
    /// What the file is to hold; null for nothing, so that the default answers.
    PropertyListValue value;
};

/// At most one edit for each stored key path.
class EditTable {
  public:
    [[nodiscard]] const std::map<SettingPlace, PendingEdit>& edits() const { return edits_; }

    /// Null when there is none. Valid until the table changes.
    [[nodiscard]] const PendingEdit* at(const std::string& storedKeyPath) const;
    /// The edit of a dictionary that the key path leads through; null when there is none.
    [[nodiscard]] const PendingEdit* above(std::string_view storedKeyPath) const;
    /// The edits that lead through the key path.
    [[nodiscard]] std::vector<PendingEdit> below(const std::string& storedKeyPath) const;
    /// `PendingEdits::appliedTo`.
    [[nodiscard]] NSDictionary appliedTo(const NSDictionary& stored) const;

    /// Replaces an edit of the same stored key path.
    void set(const PendingEdit& edit);
    void erase(const std::string& storedKeyPath);

  private:
    using Places = std::map<std::string, SettingPlace, std::less<>>;
    /// A level with the edits of a range, which lead through it. `start` is how much of their key
    /// paths leads to the level.
    [[nodiscard]] PropertyListValue levelWith(const PropertyListValue& level,
                                              Places::const_iterator edit,
                                              Places::const_iterator end, std::size_t start) const;

    std::map<SettingPlace, PendingEdit> edits_;
    Places places_;  // by stored key path
};

/// A copy of a dictionary with another value at a key path; what is no dictionary counts as an
/// empty one where a value is to be set. A null value removes, with the levels that are empty then:
/// null when nothing is left.
PropertyListValue treeWithValue(const PropertyListValue& tree, std::string_view keyPath,
                                const PropertyListValue& value);

}  // namespace Tool
