// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <span>
#include <string_view>

/// The short time patterns of the locales that ICU or the C library has. The build asks the
/// installed ICU for them (`TimePatternTableMakerLinux.cpp`).
namespace QRVPlatform::TimePatternTable {

struct Row {
    /// Named as in the environment, without encoding and modifier. An array, and not a pointer: a
    /// process need not adjust a thousand addresses when it loads the library.
    std::array<char, 15> locale;
    unsigned char pattern;  ///< where it is in `patterns`
};
/// In the order of the names.
extern const std::span<const Row> rows;
extern const std::span<const std::string_view> patterns;

}  // namespace QRVPlatform::TimePatternTable
