// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Export.h"

/// Whether what this process prints on standard output goes to a terminal.
QRV_EXPORT bool standardOutputIsTerminal();
