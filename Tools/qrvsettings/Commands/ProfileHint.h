// SPDX-License-Identifier: MIT
#pragma once

// The application reads some settings in its profile. A person who names no profile may not know.

#include <string>

#include "Settings/ProfileScope.h"

namespace Tool {

/// Says that the application does not read what was stored here, where that is so, and which
/// profiles there are; or that the store keeps it for itself.
void hintAfterWrite(const std::string& keyPath, const ProfileScope& scope);

/// Says what the application reads in each profile, where it does not read what was printed.
void hintAfterRead(const std::string& keyPath, const ProfileScope& scope);

}  // namespace Tool
