// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

/// Thrown inside this folder only; never leaves it.
struct WriteFailure {
    std::string message;
    std::string keyPath;
};

/// The whole file.
std::string writeXML(const PropertyListValue& value);

}  // namespace QRVPlatform::PropertyLists
