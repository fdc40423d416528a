// SPDX-License-Identifier: MIT
#pragma once

// The limits of NSPropertyListSerialization.h, which the readers and the writer share, and their
// messages.

#include <cmath>
#include <cstddef>
#include <string>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/Values/Calendar.h"

namespace QRVPlatform::PropertyLists {

inline constexpr std::size_t maximumLevels = NSPropertyListSerialization::maximumLevels;
inline constexpr std::size_t maximumSize = NSPropertyListSerialization::maximumSize;
inline constexpr std::size_t maximumValues = NSPropertyListSerialization::maximumValues;
inline constexpr std::size_t maximumContents = NSPropertyListSerialization::maximumContents;

inline std::string tooManyValues() {
    return "there are more than " + std::to_string(maximumValues) + " values";
}

inline std::string tooManyLevels() {
    return "there are more than " + std::to_string(maximumLevels) + " levels";
}

inline std::string inMebibytes(std::size_t bytes) {
    return std::to_string(bytes / (std::size_t{1024} * 1024)) + " MiB";
}

inline std::string tooMuchContents() {
    return "there are more than " + inMebibytes(maximumContents) + " of text and data";
}

inline std::string tooLarge() {
    return "the file is larger than " + inMebibytes(maximumSize);
}

static_assert(NSPropertyListSerialization::maximumDateInterval == Calendar::furthestSecond);

/// Why no file can hold the date; empty when one can.
inline std::string faultOf(NSDate date) {
    const double seconds = date.timeIntervalSinceReferenceDate();
    if (!std::isfinite(seconds)) return "a date is not finite";
    if (std::abs(seconds) <= NSPropertyListSerialization::maximumDateInterval) return {};
    return "a date is more than 146 billion years from 2001";
}

}  // namespace QRVPlatform::PropertyLists
