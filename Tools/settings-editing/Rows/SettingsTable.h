// SPDX-License-Identifier: MIT
#pragma once

// Every setting with its value, as the rows of a table.

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Rows/SettingAnswer.h"
#include "Rows/SettingsSnapshot.h"
#include "Settings/KnownLists.h"

namespace Tool {

/// One leaf: a setting whose value is no dictionary, or is an empty one.
struct SettingRow {
    std::string keyPath;          ///< plain, also in a profile
    PropertyListValue effective;  ///< what the application reads; null when no layer has a value
    PropertyListValue stored;     ///< what the file holds in this scope; null when nothing
    PropertyListValue byDefault;  ///< what answers where nothing is stored; null when nothing
    AnsweringLayer layer = AnsweringLayer::None;
    const KnownSetting* known = nullptr;  ///< null when nothing is known of it
    bool isRecord = false;                ///< the store's own, no setting of a person
    bool isLocked = false;                ///< by the site
    /// Something is stored, and differs from the default in value or kind.
    bool isModified = false;
    /// A stored value of another kind than the default.
    bool isOfOtherKind = false;

    /// Whether the value is the text of a colour, by what is known or, where nothing is, by its
    /// key path's last name ("Color") and its text.
    [[nodiscard]] bool isColor() const;
    /// The kind of the effective value; `Color` for a colour.
    [[nodiscard]] PropertyListValue::Kind kind() const;
};

/// The rows of one scope: the plain settings of the application, or one profile. Rows are those of
/// the known settings, the defaults, what is stored, and key paths that the caller adds; sorted so
/// that the rows of a level are beside each other, by the bytes of their names.
class SettingsTable {
  public:
    /// `lists` must outlive the table.
    explicit SettingsTable(const KnownLists& lists);

    /// What an update has changed. Key paths are sorted as the rows are.
    struct Change {
        std::vector<std::string> changed;  ///< rows with another value, layer or stored value
        std::vector<std::string> added;
        std::vector<std::string> removed;
        [[nodiscard]] bool isEmpty() const {
            return changed.empty() && added.empty() && removed.empty();
        }
    };

    /// Shows these settings. Of a tree of which most is shared with the last one, or equal to it,
    /// only what differs is looked up again.
    Change update(const SettingsSnapshot& snapshot);
    /// Shows another scope of the same settings; empty for the application's.
    void setProfile(const std::string& profile);
    [[nodiscard]] const std::string& profile() const { return profile_; }
    /// Key paths that have a row although no layer has a value: those of pending edits.
    Change setAdditionalKeyPaths(const std::set<std::string>& keyPaths);

    [[nodiscard]] const SettingsSnapshot& snapshot() const { return snapshot_; }
    [[nodiscard]] const std::vector<SettingRow>& rows() const { return rows_; }
    [[nodiscard]] std::optional<std::size_t> indexOf(std::string_view keyPath) const;
    [[nodiscard]] const SettingRow* at(std::string_view keyPath) const;
    /// The names of the profiles that have settings, and "default".
    [[nodiscard]] std::set<std::string> profileNames() const;

  private:
    const KnownLists& lists_;
    SettingsSnapshot snapshot_;
    std::string profile_;
    std::set<std::string> additional_;
    std::vector<SettingRow> rows_;
};

/// Whether a row stands before another one: by levels, so that "A.B" stands before "A-B".
bool standsBefore(std::string_view keyPath, std::string_view other);

}  // namespace Tool
