// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

/// Whether a save is queued or under way. Exact on the thread that writes, for what it has written
/// itself.
bool isSavePending();
