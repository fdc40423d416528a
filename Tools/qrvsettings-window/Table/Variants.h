// SPDX-License-Identifier: MIT
#pragma once

// The colours that stand in a row: its own, and where there is one, the colour for the other
// appearance.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/NSColor.h"
#include "Rows/SettingsTable.h"

namespace QRVWindow {

class Session;

struct Variant {
    NSColor color;
    bool isOwn = true;  ///< of the row itself
};

/// The light one first. Empty when the value is no colour. With `ofDefault` those of the defaults,
/// otherwise what the settings will be once their edits are applied.
std::vector<Variant> variantsOf(const Session& session, const Tool::SettingRow& row,
                                bool ofDefault);

/// The setting with "Dark" for "Light" in its key path, or the other way round, where that is one
/// of the last two names.
struct OtherVariant {
    std::string keyPath;
    bool isDark = false;
};
std::optional<OtherVariant> otherVariant(std::string_view keyPath);

}  // namespace QRVWindow
