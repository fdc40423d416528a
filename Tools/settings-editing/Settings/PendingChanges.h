// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Settings/Changes.h"
#include "Settings/ProfileScope.h"

namespace Tool {

/// Changes that this process has made in memory and not saved yet. The constructor opens the batch
/// of the store and prepares the store as the application does at its start: what that resets or
/// migrates is pending too. `save` commits the batch, all changes in one save. What is never saved
/// stays in memory until the process ends.
class PendingChanges {
  public:
    /// Whether a stored value may prevent the preparation.
    enum class Preparation { MustSucceed, MayFail };

    /// Throws Failure (WrongValue) when the preparation fails and must not.
    explicit PendingChanges(Preparation preparation = Preparation::MustSucceed);

    /// A line for the user about each thing that the preparation changed. `save` makes them
    /// notices.
    [[nodiscard]] const std::vector<std::string>& notes() const { return notes_; }

    /// Stores a value, or removes the setting where it is null: one that is not set stays so. What
    /// is not stored, such as a default, leaves no empty levels above it.
    /// Throws as `write` does.
    void set(const PropertyListValue& value, const std::string& keyPath,
             const ProfileScope& scope = ProfileScope(""));

    /// Runs `change`, which writes at this stored key path. Throws Failure (WrongValue) that names
    /// the stored value in its way, the file that locks it, or what no settings file can hold; then
    /// nothing is written.
    void write(const std::string& storedKeyPath, const std::function<void()>& change);

    /// What the writes so far change, compared with what the file held when this process read it.
    [[nodiscard]] Changes changes() const;

    /// Returns `changes()` when the file holds them, or what others have saved at the same key
    /// paths since; there is a notice of fractions of seconds, which no file holds. When there are
    /// none, nothing is saved, not even what the preparation changed, unless the file is damaged.
    /// Throws Failure as `saveAndWait` does.
    Changes save();

  private:
    std::vector<std::string> notes_;
    std::set<std::string> keyPaths_;
    NSDictionary inFile_;
    NSDictionary prepared_;
};

/// Prepares the store for a process that only reads. What that changes is never saved.
void prepareToRead();

/// The same as if nothing were stored: to read the defaults alone, and before all settings are
/// replaced. No stored value can prevent it.
void prepareWithoutStoredSettings();

/// Replaces all settings, in one save; pending changes are discarded, and so is what others have
/// saved before. Saves nothing when the file held these settings as this process read it, unless it
/// is damaged. What is locked stays as it is stored. Throws Failure as `saveAndWait` and
/// `withLockedSettingsOf` do, and NSInvalidArgumentException when the settings cannot be migrated.
Changes importSettings(const NSDictionary& settings);

/// The same without the save.
Changes importInMemory(const NSDictionary& settings);

}  // namespace Tool
