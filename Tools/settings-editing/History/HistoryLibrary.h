// SPDX-License-Identifier: MIT
#pragma once

#include "QRVHistory/QRVHistory.h"

namespace Tool {

/// The functions of the history. The first call loads its library, which stays. Throws Failure
/// (NotWritten) when that fails. Any thread.
const QRVHistoryTable& history();

/// Any thread.
bool isHistoryLoaded();

}  // namespace Tool
