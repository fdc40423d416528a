// SPDX-License-Identifier: MIT
#pragma once

// What each layer says of one setting, as `qrvsettings explain` prints it.

#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"
#include "Rows/SettingsSnapshot.h"

namespace Tool {

enum class AnsweringLayer { None, Default, Site, Stored, Profile };

/// "none", "default", "site", "stored" or "profile".
std::string layerWord(AnsweringLayer layer);

/// Which layers have something at the key path of a setting.
struct LayersOfSetting {
    bool isOfProfile = false;  ///< the scope is a profile
    bool isStored = false;     ///< in the scope, after the preparation
    bool isLocked = false;
    bool hasSite = false;
    bool hasBuiltIn = false;
};
AnsweringLayer answeringLayer(const LayersOfSetting& layers);

/// Values are null where a layer has none.
struct SettingAnswer {
    PropertyListValue effective;  ///< what the application reads
    AnsweringLayer layer = AnsweringLayer::None;
    PropertyListValue stored;     ///< in the file, at the plain key path
    PropertyListValue site;       ///< default of the site
    PropertyListValue builtIn;    ///< default of the library
    PropertyListValue inProfile;  ///< in the profile, after the preparation
    std::string siteFile;         ///< that gives the default
    std::string lockFile;         ///< that locks the key path

    /// What answers where nothing is stored.
    [[nodiscard]] const PropertyListValue& byDefault() const {
        return site.isNull() ? builtIn : site;
    }
};

/// `keyPath` is plain. Where `profile` is empty the application's value answers, and `inProfile` is
/// that of the profile "default". On the host's thread, after `snapshotOfSettings`.
SettingAnswer answerAt(const SettingsSnapshot& snapshot, std::string_view keyPath,
                       const std::string& profile);

}  // namespace Tool
