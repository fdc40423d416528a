// SPDX-License-Identifier: MIT
#pragma once

// Every setting with its value, as the rows of a table.

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Rows/LayerComparison.h"
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
    /// Something is stored, and differs from the default in value or kind. An empty dictionary,
    /// as a removed setting leaves it, differs only from a default that is no dictionary.
    bool isModified = false;
    /// A stored value of another kind than the default; integers and reals are of one kind.
    bool isOfOtherKind = false;

    /// Whether the value is the text of a colour, by what is known or, where nothing is, by its
    /// key path's last name ("Color") and its text.
    [[nodiscard]] bool isColor() const;
    /// The kind of the effective value; `Color` for a colour.
    [[nodiscard]] PropertyListValue::Kind kind() const;
};

/// The rows of one scope: the plain settings of the application, or one profile. Rows are those of
/// the known settings, the defaults, what is stored, and key paths that the caller adds; sorted so
/// that the rows of a level are beside each other, by the bytes of their names. Where one layer has
/// a value and another a dictionary, there is a row for each key path at which a read finds a
/// value, so there may be a row "A" and a row "A.B".
///
/// All functions that change rows belong to the host's thread: they ask the store for locks, and
/// for values that are locked. Its stored tree must be the one of the last `snapshotOfSettings`.
class SettingsTable {
  public:
    /// `lists` must outlive the table.
    explicit SettingsTable(const KnownLists& lists);

    /// What has changed. Key paths are sorted as the rows are.
    struct Change {
        std::vector<std::string> changed;  ///< rows that differ in anything
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
    /// Differs from an earlier one when rows were added or removed since: then indexes have another
    /// meaning.
    [[nodiscard]] std::size_t generation() const { return generation_; }
    /// Null when there is none. Valid until the rows change.
    [[nodiscard]] const SettingRow* at(std::string_view keyPath) const;
    /// The `searchableText` of a row, which is made once. Valid until the rows change.
    [[nodiscard]] std::string_view searchableTextOf(std::size_t row) const;
    /// How many values the file holds in this scope that no key path reaches, because a key holds
    /// a ".". They have no rows.
    [[nodiscard]] std::size_t unreachedCount() const { return unreachedCount_; }
    /// The names of the profiles that have settings, and "default".
    [[nodiscard]] std::set<std::string> profileNames() const;

  private:
    class Merge;
    /// What is at a key path now: a row, or none.
    struct Place {
        SettingRow row;  ///< without a row its key path alone
        bool isRow = false;
    };
    using Places = std::vector<Place>;

    [[nodiscard]] LayerValues layersOf(const SettingsSnapshot& snapshot) const;
    [[nodiscard]] std::string storedKeyPath(const std::string& keyPath) const;
    [[nodiscard]] bool isLocked(const std::string& keyPath) const;
    [[nodiscard]] bool isKnownHere(const SettingRow& row) const;
    [[nodiscard]] Place placeOf(const std::string& keyPath, const LayerValues& values) const;
    [[nodiscard]] Place placeOf(const std::string& keyPath) const;
    void addUncompared(Places& places) const;
    Change replaceRows(Places places);

    const KnownLists& lists_;
    SettingsSnapshot snapshot_;
    std::string profile_;
    std::set<std::string> additional_;
    bool isFilled_ = false;
    LayerValues layers_;  ///< the roots of the scope
    std::vector<SettingRow> rows_;
    std::size_t generation_ = 0;
    mutable std::vector<std::string> searchableTexts_;  ///< of each row; empty until it is needed
    std::size_t unreachedCount_ = 0;
};

/// Whether a row stands before another one: by levels, so that "A.B" stands before "A-B".
bool standsBefore(std::string_view keyPath, std::string_view other);

}  // namespace Tool
