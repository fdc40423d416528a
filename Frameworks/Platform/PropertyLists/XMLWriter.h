// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

/// Why a value cannot be written; thrown inside this folder only.
struct WriteFailure {
    std::string message;
    std::string keyPath;
};

/// The whole file.
std::string writeXML(const PropertyListValue& value);

}  // namespace QRVPlatform::PropertyLists
