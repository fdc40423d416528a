// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

namespace QRVInside {

/// Makes the store the presenter of its file, for good. What others have changed since this process
/// first read the file is published like a later change.
void beginToWatchTheFile();

}  // namespace QRVInside
