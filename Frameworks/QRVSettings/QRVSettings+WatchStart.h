// SPDX-License-Identifier: MIT
#pragma once

namespace QRVInside {

/// Makes the store the presenter of its file, for good, and queues a reload when others have
/// changed the file since this process first read it.
void beginToWatchTheFile();

}  // namespace QRVInside
