// SPDX-License-Identifier: MIT
#pragma once

// Whose setting it is that lies at a key path of the file.

#include <string>

#include "Edits/PendingEdits.h"

namespace QRVWindow {

/// The place whose `storedKeyPath` this is.
Tool::SettingPlace placeOfStored(const std::string& storedKeyPath);

}  // namespace QRVWindow
