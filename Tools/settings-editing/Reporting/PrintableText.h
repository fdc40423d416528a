// SPDX-License-Identifier: MIT
#pragma once

// Text that a terminal shows and does not obey.

#include <string>
#include <string_view>

namespace Tool {

/// Whether the text holds control characters (U+0000 to U+001F, U+007F to U+009F) or bytes that are
/// not UTF-8.
bool holdsControls(std::string_view text);

/// The text with these written as `\x1b`, those of two bytes as `\u009b`. What is in `kept` stays.
std::string printable(std::string_view text, std::string_view kept = "");

}  // namespace Tool
