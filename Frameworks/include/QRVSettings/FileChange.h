// SPDX-License-Identifier: MIT
#pragma once

/// What an observer of the settings file receives (`QRVSettings::setFileChangeHandler`).

#include <functional>
#include <string>
#include <string_view>

#include "Platform/Files/Files.h"
#include "Platform/Values/PropertyListValue.h"

/// What the store calls the origin of a save when the host gives it no name of its own.
namespace QRVChangeOrigins {

inline constexpr std::string_view set = "set";              ///< a write
inline constexpr std::string_view batch = "batch";          ///< a batch that was committed
inline constexpr std::string_view import = "import";        ///< QRVSettingsImport
inline constexpr std::string_view tree = "tree";            ///< a save without change records
inline constexpr std::string_view migration = "migration";  ///< QRVSettings::migrate
inline constexpr std::string_view hardware = "hardware";    ///< a recorded machine, and its resets

}  // namespace QRVChangeOrigins

/// The settings file has been replaced by this process, or was found changed by others. Trees are
/// immutable at every level, so that any thread may keep and read them.
struct QRVFileChange {
    enum class By {
        ThisProcess,  ///< a save that replaced the file
        Others,       ///< a reload has read the file
    };
    By by = By::ThisProcess;
    /// Of a save: `QRVSettings::changeOrigin`, or one of QRVChangeOrigins. Several, joined by ", ",
    /// when one save brings writes of several origins. Empty for `Others`.
    std::string origin{};
    /// Whether `before` is what the file held: false for `Others`, and when a save has replaced a
    /// damaged file.
    bool isBeforeKnown = false;
    NSDictionary before = nullptr;  ///< null when there was no file
    NSDictionary after = nullptr;   ///< null when there is no file
    /// The file that was replaced; missing when there was none, and for `Others`.
    QRVPlatform::FileIdentity fileBefore{};
    QRVPlatform::FileIdentity fileAfter{};
};

using QRVFileChangeHandler = std::function<void(const QRVFileChange& change)>;
