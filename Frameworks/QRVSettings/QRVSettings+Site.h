// SPDX-License-Identifier: MIT
#pragma once

// What the site gives: defaults laid over the built-in ones, and locks. For the host's thread.

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"
#include "QRVSettings/QRVSettings+Locks.h"
#include "QRVSettings/QRVSettings.h"

namespace QRVInside {

struct Site {
    QRVSiteDefaults found;
    std::map<std::string, std::string, std::less<>> lists;  ///< by key path of a value
    Locks locks;
};

/// Reads the site's files, when the host wants that, lays their values over the built-in defaults,
/// and locks what they lock. Else there is no site from here on.
void laySiteOver(const NSMutableDictionary& defaults);

/// @name When something is locked
/// @{

/// The default of a setting; of one in a profile that of the plain key path.
PropertyListValue lockedValue(std::string_view keyPath);

/// The effective value, where `value` is that without locks.
PropertyListValue lockedView(std::string_view keyPath, const PropertyListValue& value);

/// What a write of the host may write, else nothing. `keyPathOfDefault` is the plain key path.
/// Reports what is refused, unless it is a removal of an empty dictionary.
std::optional<PropertyListValue> permittedWrite(const PropertyListValue& value, QRVKeyPath keyPath,
                                                QRVKeyPath keyPathOfDefault, bool isOfEmpty);

/// The tree to import in place of `settings`.
NSDictionary permittedImport(const NSDictionary& settings);

/// Those that are not locked.
NSArray withoutLocked(const NSArray& keyPaths);
/// @}

}  // namespace QRVInside
