// SPDX-License-Identifier: MIT
#pragma once

#include "QRVHistory/QRVHistory.h"

namespace Tool {

/// The functions of the history. The first call loads its library, which stays. Throws Failure
/// (NotWritten) when that fails. For the main thread.
const QRVHistoryTable& history();

bool isHistoryLoaded();

}  // namespace Tool
