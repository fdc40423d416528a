// SPDX-License-Identifier: MIT
#include "Process/StandardError.h"

#include <cstdio>
#include <string>

namespace Tool {
namespace {

bool quiet = false;

bool isControl(char character) {
    return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
}

std::string escaped(char character) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(character);
    return {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
}

}  // namespace

void say(std::string_view text) {
    std::string line = "qrvsettings: ";
    for (const char character : text)
        line += isControl(character) ? escaped(character) : std::string(1, character);
    line += '\n';
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

void remark(std::string_view text) {
    if (!isQuiet()) say(text);
}

void keepQuiet() {
    quiet = true;
}

bool isQuiet() {
    return quiet;
}

}  // namespace Tool
