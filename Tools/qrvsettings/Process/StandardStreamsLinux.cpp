// SPDX-License-Identifier: MIT
#include "Process/StandardStreams.h"

#include <unistd.h>

namespace Tool {

bool standardOutputIsTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

bool standardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

}  // namespace Tool
