// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// Inner header of this folder.

/// How many saves of this process have ended so far, whatever became of them.
std::uint64_t countOfEndedSaves();

/// Whether a save is queued or under way. Exact on the thread that writes, for what it has written
/// itself.
bool isSavePending();
