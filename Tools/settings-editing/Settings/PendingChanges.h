// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Changes that this process reads already and the settings file does not hold yet. The first one
/// of a process opens the batch of the store; `save` commits it, all changes in one save. What is
/// never saved stays in memory until the process ends.
///
/// The store is prepared as for the application; what that resets or migrates is pending too.
class PendingChanges {
  public:
    /// What happens when the store cannot be prepared, because a stored value is in the way.
    enum class Preparation { MustSucceed, MayFail };

    /// Throws Failure (WrongValue) when the preparation fails and must not.
    explicit PendingChanges(Preparation preparation = Preparation::MustSucceed);

    /// A line for the user about each thing that the preparation changed. `save` makes them
    /// notices.
    [[nodiscard]] const std::vector<std::string>& notes() const { return notes_; }

    /// Runs `write`, which writes at this stored key path. Throws Failure (WrongValue) that names
    /// the stored value in its way; then nothing is written.
    void write(const std::string& storedKeyPath, const std::function<void()>& write);

    /// Returns when the file holds at each key path written what this process has stored there.
    /// Throws Failure (NotWritten), with the reason, when it does not.
    void save();

  private:
    std::vector<std::string> notes_;
    std::vector<std::string> keyPaths_;
};

/// Prepares the store for a process that only reads. What that changes is never saved.
void prepareToRead();

/// The same as if nothing were stored: for the defaults alone, and before everything that is stored
/// is replaced. Nothing can be in the way.
void prepareWithoutStoredSettings();

/// Replaces all settings, in one save that does not wait for pending changes: they are discarded.
/// Returns when the file holds what this process has stored, as a whole. Throws Failure
/// (NotWritten) when it does not, and NSInvalidArgumentException when the settings cannot be
/// migrated.
void importSettings(const NSDictionary& settings);

/// The same without the save.
void importInMemory(const NSDictionary& settings);

}  // namespace Tool
