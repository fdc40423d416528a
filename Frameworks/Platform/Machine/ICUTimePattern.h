// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace QRVPlatform::ICUTimePattern {

/// As `shortTimePattern`, by the installed ICU: it is loaded at the first call and stays. Empty
/// where it cannot be loaded, or must not be: in a privileged program (set-user-id, set-group-id,
/// file capabilities), because the environment says where its data is.
std::optional<std::string> of(const std::string& locale);

}  // namespace QRVPlatform::ICUTimePattern
