// SPDX-License-Identifier: MIT
#include "Process/StandardStreams.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace Tool {

bool standardOutputIsTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

bool standardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

std::size_t widthOfStandardOutput() {
    constexpr std::size_t usual = 80;
    winsize size{};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : usual;
}

}  // namespace Tool
