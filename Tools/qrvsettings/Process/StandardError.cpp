// SPDX-License-Identifier: MIT
#include "Process/StandardError.h"

#include <cstdio>
#include <string>

#include "Reporting/PrintableText.h"

namespace Tool {
namespace {

bool quiet = false;

}  // namespace

void say(std::string_view text) {
    const std::string line = "qrvsettings: " + printable(text) + "\n";
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
