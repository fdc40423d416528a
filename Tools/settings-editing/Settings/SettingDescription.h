// SPDX-License-Identifier: MIT
#pragma once

// What is known of a setting, in words.

#include <string>

#include "Platform/Values/PropertyListValue.h"
#include "Settings/KnownLists.h"

namespace Tool {

/// "integer", "colour"; "any kind" where it is not known.
std::string kindInWords(PropertyListValue::Kind kind);
/// "an integer", "a colour", "data".
std::string kindWithArticle(PropertyListValue::Kind kind);

/// The scope of any key path, known or not. Reads the lists.
QRVSettingScope scopeOf(const std::string& keyPath);
/// "application", "profile" or "record".
std::string scopeWord(QRVSettingScope scope);
/// "of each profile: default, travel".
std::string scopeInWords(QRVSettingScope scope);

/// "from 1 to 9 points", "1 or more"; empty where there are no limits.
std::string rangeInWords(const KnownSetting& setting);
/// The choices, with commas between them; empty where there are none.
std::string choicesInWords(const KnownSetting& setting);

/// The built-in default, otherwise that of a list; null where there is none. Call it after the
/// store is prepared.
PropertyListValue knownDefault(const KnownSetting& setting);

/// One paragraph: what it is, what it takes, its default, and whether each profile has its own.
std::string paragraphOn(const KnownSetting& setting);

}  // namespace Tool
