// SPDX-License-Identifier: MIT
#pragma once

// The one write that plain and profile settings share.

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"

namespace QRVInside {

/// Writes at `keyPath`. A value that equals the default at `keyPathOfDefault` is not stored. Throws
/// as QRVSettingsSetObjectForKeyPath does.
///
/// `isOfEmpty`: `Write::isOfEmpty`.
void writeSetting(const PropertyListValue& value, QRVKeyPath keyPath, QRVKeyPath keyPathOfDefault,
                  bool isOfEmpty = false);

}  // namespace QRVInside
