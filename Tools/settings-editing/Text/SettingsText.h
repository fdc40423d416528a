// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// What to do with keys of a root that hold a ".": no key path reaches them.
enum class DottedKeys { Refused, Kept };

/// All settings, from the bytes of a property list in any format or of JSON.
///
/// In JSON, keys of the root that hold dots are key paths, as `list --json` prints them: they are
/// expanded, and merged with the other entries. They are not where the root stands in
/// `{"$dictionary":{...}}`, as `jsonOfSettings` writes it, and where such keys are kept. In a
/// property list they are refused or kept.
///
/// Throws Failure (WrongValue) when the bytes are empty, neither a property list nor JSON, or
/// nothing that a settings file can hold; when two entries are for one key path, or one leads
/// through the value of another; and for a key that is refused, which `advice` follows.
NSDictionary settingsFromText(const std::string& bytes, DottedKeys dottedKeys = DottedKeys::Refused,
                              const std::string& advice = "");

/// JSON from which `settingsFromText` reads the same tree.
std::string jsonOfSettings(const NSDictionary& tree);

enum class SettingsForm { PropertyList, JSON };

/// A file of these settings: an XML property list, or a line of JSON as above. Throws Failure
/// (WrongValue) when no property list can hold them.
std::string fileOfSettings(const NSDictionary& tree, SettingsForm form);

}  // namespace Tool
