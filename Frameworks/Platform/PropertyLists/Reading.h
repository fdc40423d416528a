// SPDX-License-Identifier: MIT
#pragma once

// What the readers of the three formats share; the limits are the writer's too. Inner header of
// this folder.

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"

namespace QRVPlatform::PropertyLists {

/// Thrown inside this folder only; never leaves it.
struct Failure {
    std::string message;
    std::size_t offset = 0;
};

[[noreturn]] inline void fail(std::string message, std::size_t offset) {
    throw Failure{std::move(message), offset};
}

inline constexpr std::string_view tooManyValues = "there are more than 1000000 values";
inline constexpr std::string_view tooManyLevels = "there are more than 512 levels";

/// Counts the values and levels of a text as they are read.
class Extent {
  public:
    void addValue(std::size_t offset) {
        if (++values_ > NSPropertyListSerialization::maximumValues) {
            fail(std::string(tooManyValues), offset);
        }
    }
    void enterContainer(std::size_t offset) {
        if (++levels_ > NSPropertyListSerialization::maximumLevels) {
            fail(std::string(tooManyLevels), offset);
        }
    }
    void leaveContainer() noexcept { --levels_; }

  private:
    std::size_t values_ = 0;
    std::size_t levels_ = 0;
};

/// The whole file, signature included. Offsets of failures are into it.
PropertyListValue readBinary(std::string_view bytes);

/// `text` is UTF-8 without U+0000. Offsets of failures are into it.
PropertyListValue readXML(std::string_view text);
PropertyListValue readOldStyle(std::string_view text);

}  // namespace QRVPlatform::PropertyLists
