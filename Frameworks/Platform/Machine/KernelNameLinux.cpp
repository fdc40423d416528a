// SPDX-License-Identifier: MIT
#include <sys/utsname.h>

#include "Platform/Machine/KernelName.h"

namespace QRVPlatform {

std::string kernelMachineName() {
    utsname names{};
    return uname(&names) == 0 ? names.machine : "";
}

}  // namespace QRVPlatform
