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

/// What is stored in the scope beside the defaults: `there` is the default.
std::vector<ComparedSetting> comparedWithDefaults(const SettingsSnapshot& snapshot,
                                                  const std::string& profile);
/// What is stored in one scope beside what is stored in another; empty names the application's.
std::vector<ComparedSetting> comparedWithProfile(const SettingsSnapshot& snapshot,
                                                 const std::string& profile,
                                                 const std::string& otherProfile);
/// What is stored beside another tree of plain key paths, both without the store's records.
std::vector<ComparedSetting> comparedWithTree(const NSDictionary& stored,
                                              const NSDictionary& other);
/// The tree as it was before these saves of the history, which are all since a moment.
NSDictionary treeBefore(const std::vector<QRVHistorySave>& saves, const NSDictionary& stored);

/// The edits that make `here` as `there` for these settings. Without a value there, nothing will be
/// stored.
std::vector<PendingEdits::Request> requestsToTake(const std::vector<ComparedSetting>& settings,
                                                  const std::string& profile,
                                                  const SettingsSnapshot& snapshot);

struct ImportPreview {
    std::vector<PendingEdits::Request> requests;
    std::vector<std::string> remarks;  ///< a line each: what is migrated, left out, or unusual
};
/// What an import of these settings changes, but for the store's records and what belongs to this
/// machine. `bytes` are a property list or JSON, as `settingsFromText` reads them; `name` names
/// them in messages. Throws Failure. Uses the store in memory: on the host's thread, and
/// `snapshotOfSettings` is to be called again afterwards.
ImportPreview previewOfImport(const std::string& bytes, const std::string& name,
                              const SettingsSnapshot& snapshot);

}  // namespace Tool
