// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "Platform/System/Terminal.h"

namespace QRVPlatform {

bool standardOutputIsTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

}  // namespace QRVPlatform
