// SPDX-License-Identifier: MIT
#pragma once

// Settings that the site has locked: the tool refuses what the store would leave out.

#include <functional>
#include <string>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"

namespace Tool {

/// Runs `change`, which writes settings. Throws Failure (WrongValue) that names the file of the
/// lock when something that it writes is locked.
void changeUnlocked(const std::function<void()>& change);

/// The tree with what is stored at locked key paths in `stored`, to replace that as a whole. Throws
/// Failure (WrongValue) that names the file of the lock when the tree has another value there, and
/// that is not the locked one either. Call it after the store is prepared.
NSDictionary withLockedSettingsOf(const NSDictionary& stored, const NSDictionary& settings);

}  // namespace Tool
