// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "StandardStreams.h"

namespace Tool {

bool standardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

}  // namespace Tool
