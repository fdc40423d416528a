// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace QRVPlatform::Threads {

/// Names the current thread after the last dotted component of `label`, as much of it as fits.
void nameCurrentThread(const std::string& label);

/// From now on, calls the functions at every fork of this process. Throws std::system_error.
void observeForks(void (*before)(), void (*inParent)(), void (*inChild)());

}  // namespace QRVPlatform::Threads
