// SPDX-License-Identifier: MIT
#pragma once

namespace Tool {

/// Whether a person reads what is written there.
bool standardOutputIsTerminal();
bool standardErrorIsTerminal();

}  // namespace Tool
