// SPDX-License-Identifier: MIT
#pragma once

#include <set>
#include <string>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"

namespace Tool {

/// The settings that a command works on: those of the application, or those of one profile, whose
/// key paths are the same plain ones.
class Scope {
  public:
    /// The settings of the application when there is no name. Throws Failure (WrongValue) when the
    /// name is not UTF-8.
    explicit Scope(std::string profile);

    [[nodiscard]] bool isProfile() const { return !profile_.empty(); }
    /// Where the settings file keeps the setting.
    [[nodiscard]] std::string storedKeyPath(QRVKeyPath keyPath) const;
    /// All that is stored, as a tree of plain key paths; null when nothing is.
    [[nodiscard]] NSDictionary storedTree() const;

    [[nodiscard]] PropertyListValue stored(QRVKeyPath keyPath) const;
    [[nodiscard]] PropertyListValue effective(QRVKeyPath keyPath) const;
    /// Throws as QRVSettingsSetObjectForKeyPath does.
    void set(const PropertyListValue& value, QRVKeyPath keyPath) const;

    /// Makes the default of the setting also that of its stored key path, for functions that know
    /// no profiles. After the store is prepared.
    void extendDefault(QRVKeyPath keyPath) const;

  private:
    /// Makes the profile the active one, at each use: the preparation activates another.
    void enter() const;
    std::string profile_;
};

/// The profiles that have settings. Of a name that holds dots only the part before the first one.
std::set<std::string> profileNames();

}  // namespace Tool
