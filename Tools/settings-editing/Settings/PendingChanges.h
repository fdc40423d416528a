// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
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
    /// the stored value in its way; then nothing is written.
    void write(const std::string& storedKeyPath, const std::function<void()>& change);

    /// Returns when the file holds at each key path written what this process has stored there, but
    /// for fractions of seconds: then there is a notice. Throws Failure (NotWritten), with the
    /// reason, when it does not.
    void save();

  private:
    std::vector<std::string> notes_;
    std::set<std::string> keyPaths_;
};

/// Prepares the store for a process that only reads. What that changes is never saved.
void prepareToRead();

/// The same as if nothing were stored: to read the defaults alone, and before all settings are
/// replaced. No stored value can prevent it.
void prepareWithoutStoredSettings();

/// Replaces all settings, in one save; pending changes are discarded. Returns when the file holds
/// what this process has stored, as a whole. Throws Failure
/// (NotWritten) when it does not, and NSInvalidArgumentException when the settings cannot be
/// migrated.
void importSettings(const NSDictionary& settings);

/// The same without the save.
void importInMemory(const NSDictionary& settings);

}  // namespace Tool
