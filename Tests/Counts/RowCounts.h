// SPDX-License-Identifier: MIT
#pragma once

/// Counts what lists of many settings cost, for each of them: the first filling, an update with one
/// change, the lines of an open tree, and a letter of the filter. Changes the stored tree of this
/// process.
void countRows();
