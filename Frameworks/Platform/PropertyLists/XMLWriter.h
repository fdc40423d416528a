// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::PropertyLists {

/// Why a value cannot be written; thrown inside this folder only.
struct WriteFailure {
    std::string message;
    std::string keyPath;
};

/// Levels below this one are indented no further.
inline constexpr std::size_t deepestIndentation = 16;

/// The whole file.
std::string writeXML(const PropertyListValue& value);

/// The lines of the entries, as they stand in the file of a dictionary that has them at `level`;
/// those of the root are at level 1.
std::string writeXMLEntries(const NSDictionary& entries, std::size_t level);

}  // namespace QRVPlatform::PropertyLists
