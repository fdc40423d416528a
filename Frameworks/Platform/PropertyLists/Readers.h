// SPDX-License-Identifier: MIT
#pragma once

// The readers of the three formats, and what they share.

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/PropertyLists/Limits.h"

namespace QRVPlatform::PropertyLists {

/// Why a file cannot be read; thrown inside this folder only.
struct ReadFailure {
    std::string message;
    std::size_t offset = 0;
};

[[noreturn]] inline void fail(std::string message, std::size_t offset) {
    throw ReadFailure{std::move(message), offset};
}

/// Counts the values and levels of a text while it is read.
class Extent {
  public:
    void addValue(std::size_t offset) {
        if (++values_ > maximumValues) fail(tooManyValues(), offset);
    }
    void enterContainer(std::size_t offset) {
        if (++levels_ > maximumLevels) fail(tooManyLevels(), offset);
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
