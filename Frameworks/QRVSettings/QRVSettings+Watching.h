// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

/// Makes the store the presenter of its file. What others have changed since this process first
/// read the file is published like a later change.
void beginToWatchTheFile();
