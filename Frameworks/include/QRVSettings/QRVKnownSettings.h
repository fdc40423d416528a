// SPDX-License-Identifier: MIT
#pragma once

/// What is known of each setting: for tools, windows and documents. The store itself needs none of
/// it: whatever is not known here is read and written as ever.
///
/// All functions: any thread, at any time; they read no file and need no `loadDefaults`.

#include <span>
#include <string_view>

#include "Platform/Export.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"

/// Where the application keeps a setting.
enum class QRVSettingScope {
    Application,  ///< at its plain key path
    Profile,      ///< in each profile (`QRVSettingsProfileObjectForKeyPath`)
    Record        ///< no setting of a person: the store keeps it for itself
};

struct QRVKnownSetting {
    /// Plain, also for a setting of a profile.
    std::string_view keyPath;
    /// `Color` for text that is a colour. `Null` where it is not known: then any kind will do.
    PropertyListValue::Kind kind;
    QRVSettingScope scope;
    /// Whether it has a built-in default of its own, which `QRVSettingsDefaultForKeyPath` gives;
    /// that of a level is made of those below it.
    bool hasDefault;
    /// What the setting is, for people: one sentence in English.
    std::string_view sentence;

    /// The kind that is stored: that of a colour is `String`.
    [[nodiscard]] constexpr PropertyListValue::Kind storedKind() const {
        using Kind = PropertyListValue::Kind;
        return kind == Kind::Color ? Kind::String : kind;
    }
};

/// All of them, sorted by the bytes of their key paths. Valid as long as the process.
QRV_EXPORT std::span<const QRVKnownSetting> QRVKnownSettings();

/// The one of a key path, plain or of a profile ("Profiles.Settings.NAME.REST" finds REST). Null
/// when it is not known, and for a null key path.
QRV_EXPORT const QRVKnownSetting* QRVKnownSettingAt(QRVKeyPath keyPath);

/// The key path without a profile: REST of "Profiles.Settings.NAME.REST", else all of it. NAME has
/// no dot. Refers to the text of `keyPath`.
QRV_EXPORT std::string_view QRVPlainKeyPath(QRVKeyPath keyPath);

/// The scope of any key path, known or not, plain or of a profile. `Profile` exactly for the
/// menu-bar settings that the migration copies into the profile "default", and for what lies below
/// them.
QRV_EXPORT QRVSettingScope QRVScopeOfKeyPath(QRVKeyPath keyPath);

/// Whether what is stored at a key path is none of a person's settings: a record of the store, what
/// lies below one, or a level that holds nothing but records. Comparisons of two machines, and
/// copies for another machine, leave these out.
///
/// With the value it also tells what is left behind where there is no setting: an empty dictionary
/// at a level of known settings, plain or in a profile, as a removed setting leaves it above; and
/// the empty list that the migration writes to "Combined.Menubar.Items", also in the profile
/// "default". Without a value, the levels that the migration makes in the profile "default"
/// ("Profiles.Settings.default.CPU.Menubar") count as records; what lies below them does not.
QRV_EXPORT bool QRVIsRecordOfStore(QRVKeyPath keyPath, const PropertyListValue& value = nullptr);
