// SPDX-License-Identifier: MIT
#pragma once

// Files of settings that people name: a property list in any format, or JSON.

#include <QString>
#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace QRVWindow {

struct SettingsFile {
    std::string bytes;
    NSDictionary settings = nullptr;
    QString fault;  ///< one line: why there are no settings; empty when there are
};

SettingsFile readSettingsFile(const QString& path);

/// Replaces a file, or makes it (`QRVPlatform::replaceFile`). Returns one line that says why it
/// could not; empty when it could. The settings file of this user and what lies beside it for its
/// writers are never replaced.
QString writeFile(const QString& path, const std::string& bytes);

}  // namespace QRVWindow
