// SPDX-License-Identifier: MIT
#pragma once

#include <set>
#include <string>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"

namespace Tool {

/// The settings that are read and written: those of the application, or those of one profile. Key
/// paths are the plain ones in both.
class ProfileScope {
  public:
    /// The settings of the application when there is no name. Throws Failure (WrongValue) when the
    /// name is not UTF-8.
    explicit ProfileScope(std::string profile);

    [[nodiscard]] bool isProfile() const { return !profile_.empty(); }
    /// Gives a notice when this is a profile without settings, and others than the first one,
    /// "default", have some: the name may hold a typo.
    void noticeIfMissing() const;
    /// Where the settings file keeps the setting.
    [[nodiscard]] std::string storedKeyPath(QRVKeyPath keyPath) const;
    /// All that is stored, as a tree of plain key paths; null when nothing is.
    [[nodiscard]] NSDictionary storedTree() const;

    [[nodiscard]] PropertyListValue stored(QRVKeyPath keyPath) const;
    [[nodiscard]] PropertyListValue effective(QRVKeyPath keyPath) const;
    /// Throws as QRVSettingsSetObjectForKeyPath does.
    void set(const PropertyListValue& value, QRVKeyPath keyPath) const;

    /// Gives the stored key path of the setting the same default, for functions without profiles.
    /// Call it after the store is prepared.
    void extendDefault(QRVKeyPath keyPath) const;

  private:
    /// Makes the profile the active one, at each use: the preparation activates another.
    void enter() const;
    std::string profile_;
};

/// The profiles that have settings. Of a name that holds dots only the part before the first one.
std::set<std::string> profileNames();
/// The same with commas between them; "none" where there is none.
std::string profilesInWords();

}  // namespace Tool
