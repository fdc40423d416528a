// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "Platform/System/Terminal.h"

bool standardOutputIsTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}
