// SPDX-License-Identifier: MIT
#include "Reporting/Failure.h"

namespace Tool {
namespace {

bool continuesCharacter(char character) {
    return (static_cast<unsigned char>(character) & 0xC0U) == 0x80;
}

}  // namespace

std::string shortened(std::string_view text) {
    constexpr std::size_t most = 80;
    if (text.size() <= most) return std::string(text);
    std::size_t end = most;
    while (end > 0 && continuesCharacter(text[end])) --end;
    return std::string(text.substr(0, end)) + "...";
}

}  // namespace Tool
