// SPDX-License-Identifier: MIT
#pragma once

// The limits of NSPropertyListSerialization.h, which the readers and the writer share, and their
// messages.

#include <cstddef>
#include <string>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"

namespace QRVPlatform::PropertyLists {

inline constexpr std::size_t maximumLevels = NSPropertyListSerialization::maximumLevels;
inline constexpr std::size_t maximumSize = NSPropertyListSerialization::maximumSize;
inline constexpr std::size_t maximumValues = NSPropertyListSerialization::maximumValues;

inline std::string tooManyValues() {
    return "there are more than " + std::to_string(maximumValues) + " values";
}

inline std::string tooManyLevels() {
    return "there are more than " + std::to_string(maximumLevels) + " levels";
}

/// `verb` is "is" or "would be".
inline std::string tooLarge(const std::string& verb) {
    constexpr std::size_t mebibyte = std::size_t{1024} * 1024;
    static_assert(maximumSize % mebibyte == 0);
    return "the file " + verb + " larger than " + std::to_string(maximumSize / mebibyte) + " MiB";
}

}  // namespace QRVPlatform::PropertyLists
