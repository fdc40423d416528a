// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Export.h"

namespace QRVPlatform {

/// Whether what this process prints on standard output goes to a terminal.
QRV_EXPORT bool standardOutputIsTerminal();

}  // namespace QRVPlatform
