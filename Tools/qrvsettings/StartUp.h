// SPDX-License-Identifier: MIT
#pragma once

namespace Tool {

/// The start-up sequence that every process of the application goes through before its first read.
/// What it changes in the settings, such as the record of the machine, stays in the memory of this
/// process: the store is in a batch from here on. Throws Failure (WrongValue) when a stored value
/// is in the way.
void startUp();

}  // namespace Tool
