// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

#include <optional>

#include "Platform/Files/Files.h"
#include "Platform/Values/PropertyListValue.h"

/// The stored tree itself, of which QRVSettingsStoredValues is a copy; reads the file when this
/// process has not yet. Not to be kept: the next write makes another one.
NSDictionary storedTree();

/// The file as it was just before the stored tree was read from it; empty when it never was. For
/// the host's thread.
std::optional<QRVPlatform::FileIdentity> fileOfTheStoredTree();

/// Whether the stored tree was begun without the file's settings, because the file was there and
/// could not be read. Any thread.
bool storedTreeLacksTheFile();
/// From here on that does not matter: the file's bytes are kept.
void storedTreeNeedNotHaveTheFile();
