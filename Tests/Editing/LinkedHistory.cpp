// SPDX-License-Identifier: MIT
// The history as a part of a test program, whose store it shares.
#include "History/HistoryLibrary.h"

namespace Tool {

const QRVHistoryTable& history() {
    return *QRVHistoryFunctions();
}

bool isHistoryLoaded() {
    return true;
}

}  // namespace Tool
