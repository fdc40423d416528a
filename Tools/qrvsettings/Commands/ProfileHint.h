// SPDX-License-Identifier: MIT
#pragma once

// The application reads some settings in its profile. A person who names no profile may not know.

#include <string>

#include "Platform/Values/PropertyListValue.h"
#include "Settings/ProfileScope.h"

namespace Tool {

/// Says that the application does not read what was stored here, where that is so, and which
/// profiles there are; or that the store keeps it for itself.
void hintAfterWrite(const std::string& keyPath, const ProfileScope& scope);

/// Says what the application reads instead of the value that was printed, where that is another.
void hintAfterRead(const std::string& keyPath, const PropertyListValue& printed,
                   const ProfileScope& scope);

}  // namespace Tool
