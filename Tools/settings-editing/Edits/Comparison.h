// SPDX-License-Identifier: MIT
#pragma once

// Two sides of settings, and what would make one as the other.

#include <string>
#include <vector>

#include "Edits/PendingEdits.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVHistory/QRVHistory.h"
#include "Rows/SettingsSnapshot.h"

namespace Tool {

struct ComparedSetting {
    enum class Sign { OnlyHere, OnlyThere, Differs };
    std::string keyPath;
    PropertyListValue here;   ///< null when not set
    PropertyListValue there;  ///< likewise
    Sign sign = Sign::Differs;
};

/// @name Comparisons
/// The leaves that differ, in kind too, sorted by the bytes of their key paths. Records of the
/// store are none of them, and neither is what no key path reaches because a key holds a ".".
/// @{

/// What is stored in the scope beside the defaults: `there` is the default. Empty names the
/// application's scope.
std::vector<ComparedSetting> comparedWithDefaults(const SettingsSnapshot& snapshot,
                                                  const std::string& profile);
/// What is stored in one scope beside what is stored in another, without what is stored of any
/// profile in the application's.
std::vector<ComparedSetting> comparedWithProfile(const SettingsSnapshot& snapshot,
                                                 const std::string& profile,
                                                 const std::string& otherProfile);
/// What is stored beside another tree. Both have plain key paths.
std::vector<ComparedSetting> comparedWithTree(const NSDictionary& stored,
                                              const NSDictionary& other);
/// @}

/// What is stored in a scope, as a tree of plain key paths: all that is stored for the
/// application's. Null when nothing is.
NSDictionary treeOfScope(const NSDictionary& stored, const std::string& profile);

/// The tree as it was before these saves of the history, in any order: they are all since a moment.
NSDictionary treeBefore(const std::vector<QRVHistorySave>& saves, const NSDictionary& stored);

/// The edits that make `here` as `there` for these settings. Without a value there, nothing will be
/// stored, and neither will the default be.
std::vector<PendingEdits::Request> requestsToTake(const std::vector<ComparedSetting>& settings,
                                                  const std::string& profile,
                                                  const SettingsSnapshot& snapshot);

struct ImportPreview {
    /// None for what stays as it is, for records of the store, and for what belongs to this
    /// machine.
    std::vector<PendingEdits::Request> requests;
    std::vector<std::string> remarks;  ///< a line each: what is migrated, left out, or unusual
};
/// What an import of these settings changes, as `qrvsettings import --portable` does it, but for
/// values that equal their defaults: those are not stored. `bytes` are a property list or JSON, as
/// `settingsFromText` reads them; `name` names them in messages.
///
/// Throws Failure when they are no settings, have another value than a lock of the site, or cannot
/// be migrated. Uses the store in memory, and leaves it as `snapshotOfSettings` does. On the host's
/// thread.
ImportPreview previewOfImport(const std::string& bytes, const std::string& name,
                              const SettingsSnapshot& snapshot);

}  // namespace Tool
