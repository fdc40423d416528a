// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "Platform/Files/Files.h"

// Inner header of this folder.

/// How many saves of this process have ended so far, whatever became of them.
std::uint64_t countOfEndedSaves();

/// Whether a save is queued or under way. Exact on the thread that writes, for what it has written
/// itself.
bool isSavePending();

/// Whether this is the file that a save of this process last left behind. For the store's queue.
bool isLastSave(const QRVPlatform::FileIdentity& file);
