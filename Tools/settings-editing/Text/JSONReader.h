// SPDX-License-Identifier: MIT
#pragma once

// JSON as a tree of what stands where, so that a fault of any kind can be named with its place.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Reporting/Failure.h"

namespace Tool {

/// Where and why a text is refused: "wrong JSON at line 3, column 5: REASON".
class JSONFault : public Failure {
  public:
    JSONFault(std::size_t line, std::size_t column, const std::string& reason);
    /// The same for a byte of a text.
    JSONFault(std::string_view text, std::size_t position, const std::string& reason);

    /// Both count from 1; a column is a character.
    [[nodiscard]] std::size_t line() const noexcept { return line_; }
    [[nodiscard]] std::size_t column() const noexcept { return column_; }
    [[nodiscard]] const std::string& reason() const noexcept { return reason_; }

  private:
    std::size_t line_;
    std::size_t column_;
    std::string reason_;
};

/// The number of characters of UTF-8, at least of those that begin in this text.
std::size_t characterCount(std::string_view text);

struct JSONNode {
    enum class Kind { Scalar, Array, Object };
    Kind kind = Kind::Scalar;
    std::size_t position = 0;       ///< of its first byte
    std::size_t end = 0;            ///< behind its last byte
    PropertyListValue scalar;       ///< a boolean, an integer, a real or a string
    std::vector<std::string> keys;  ///< of an object, one for each child and none twice
    std::vector<JSONNode> children;
};

/// Throws JSONFault for text that is not JSON in UTF-8 without a byte order mark, a key that an
/// object holds twice, null, a number out of range, and more than `maximumLevels` levels.
JSONNode nodeFromJSON(std::string_view text, std::size_t maximumLevels);

}  // namespace Tool
