// SPDX-License-Identifier: MIT
#include <sys/utsname.h>

#include "Platform/System/KernelName.h"

std::string kernelMachineName() {
    utsname names{};
    return uname(&names) == 0 ? names.machine : "";
}
