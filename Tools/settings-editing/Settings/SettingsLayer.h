// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"
#include "Settings/ProfileScope.h"

namespace Tool {

/// Where a read looks: "effective" is what the application sees, "stored" the settings file alone,
/// "site" the defaults of the site alone, "default" these over the built-in ones.
class SettingsLayer {
  public:
    /// `name` is one of the four.
    SettingsLayer(std::string_view name, ProfileScope scope);

    /// Call it before the first read. Throws Failure: UnreadableFile when the layer needs the
    /// settings file and that cannot be read or is damaged, and WrongValue as `prepareToRead` does.
    void open() const;
    /// Null when it is not set.
    [[nodiscard]] PropertyListValue value(QRVKeyPath keyPath) const;
    /// What `value` answers for each key path of a leaf, by key path. No key path reaches a key
    /// that holds a ".": what is below it is left out.
    [[nodiscard]] NSDictionary leaves() const;
    /// The same, and of the stored layer the empty dictionaries too: all that gives the same tree
    /// again. Keys there that no key path reaches are left out, with a notice.
    [[nodiscard]] NSDictionary leavesAndEmptyDictionaries() const;

  private:
    enum class Name { Effective, Stored, Site, Default };
    /// Whether the layer has what is stored, and the defaults.
    [[nodiscard]] bool hasStored() const {
        return name_ == Name::Effective || name_ == Name::Stored;
    }
    [[nodiscard]] bool hasDefaults() const { return name_ != Name::Stored; }
    [[nodiscard]] NSDictionary flattened() const;
    Name name_;
    ProfileScope scope_;
};

}  // namespace Tool
