// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace QRVPlatform {

/// The kernel's name of the hardware, such as `x86_64`; empty when it gives none.
std::string kernelMachineName();

}  // namespace QRVPlatform
