// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace QRVPlatform::Threads {

/// Names the current thread after the last dotted component of `label`, as much of it as fits.
void nameCurrentThread(const std::string& label);

/// From now on, calls the functions at every fork of this process: `before` in the reverse order of
/// these calls, the others in their order. A fork that is under way does not call them. Throws
/// std::system_error.
void observeForks(void (*before)(), void (*inParent)(), void (*inChild)());

/// From now on, calls the function at every fork of this process, before those of `observeForks`.
/// There is one such function.
void prepareForks(void (*function)());

/// How many forks lie between this process and the first one that used the library. What belongs to
/// one process compares it with the value of an earlier call.
unsigned forkCount() noexcept;

}  // namespace QRVPlatform::Threads
