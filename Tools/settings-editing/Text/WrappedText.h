// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tool {

/// The words of the text on lines of at most `width` bytes, each after `indent` blanks and before a
/// line end. A word that is longer has a line of its own.
std::string wrapped(std::string_view text, std::size_t indent, std::size_t width);

}  // namespace Tool
