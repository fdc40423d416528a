// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

#include "Platform/Values/PropertyListValue.h"

/// The stored tree itself, of which QRVSettingsStoredValues is a copy; reads the file when this
/// process has not yet. Not to be kept: the next write makes another one.
NSDictionary storedTree();
