// SPDX-License-Identifier: MIT
#pragma once

// The readers of the three formats, and what they share.

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/PropertyLists/Limits.h"
#include "Platform/PropertyLists/PassedText.h"

namespace QRVPlatform::PropertyLists {

/// Why a file cannot be read; thrown inside this folder only.
struct ReadFailure {
    std::string message;
    std::size_t offset = 0;
};

[[noreturn, gnu::cold]] inline void fail(std::string message, std::size_t offset) {
    throw ReadFailure{std::move(message), offset};
}

/// Counts what a text holds while it is read.
class Extent {
  public:
    void addValue(std::size_t offset) {
        if (++values_ > maximumValues) failTooLarge(tooManyValues, offset);
    }
    /// Bytes of text, keys included, or of data.
    void addContents(std::size_t bytes, std::size_t offset) {
        contents_ += bytes;
        if (contents_ > maximumContents) failTooLarge(tooMuchContents, offset);
    }
    void enterContainer(std::size_t offset) {
        if (++levels_ > maximumLevels) failTooLarge(tooManyLevels, offset);
    }
    void leaveContainer() noexcept { --levels_; }

  private:
    [[noreturn, gnu::cold, gnu::noinline]] static void failTooLarge(std::string (*message)(),
                                                                    std::size_t offset) {
        fail(message(), offset);
    }
    std::size_t values_ = 0;
    std::size_t contents_ = 0;
    std::size_t levels_ = 0;
};

struct OldStyleList {
    PropertyListValue value;
    bool hasOuterBraces = true;  ///< or the value needs none
};

/// The whole file, signature included. Offsets of failures are into it.
PropertyListValue readBinary(std::string_view bytes);

/// `text` is UTF-8 without U+0000. Offsets of failures are into it.
PropertyListValue readXML(std::string_view text, PassedText& passed);
OldStyleList readOldStyle(std::string_view text);

}  // namespace QRVPlatform::PropertyLists
