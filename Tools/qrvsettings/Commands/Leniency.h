// SPDX-License-Identifier: MIT
#pragma once

// Commands refuse what a person who writes it probably means otherwise, unless they are told to
// take it.

#include <string>

#include "Options/Option.h"
#include "Platform/Values/PropertyListValue.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingObjections.h"

namespace Tool {

struct Leniency {
    bool takesTypos = false;    ///< `--new`: a key path that looks like a typo is a new one
    bool takesAnyKind = false;  ///< `--any-kind`: also none of the choices, or out of range
};

/// The two options.
OptionList withLeniency(OptionList options, Leniency& leniency);

/// Throws Failure (WrongValue) where the setting is refused, with the option that takes it. Call it
/// before the change and after the store is prepared.
void requireUsual(const SettingObjections& objections, const std::string& keyPath,
                  const PropertyListValue& value, const ProfileScope& scope,
                  const Leniency& leniency);
/// The same for a colour.
void requireUsualColor(const std::string& keyPath, const ProfileScope& scope,
                       const Leniency& leniency);

}  // namespace Tool
