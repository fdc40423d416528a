// SPDX-License-Identifier: MIT
#pragma once

/// The names of the appearances that the platform knows as dark.

#include <string_view>

#include "Platform/Export.h"

inline constexpr std::string_view NSAppearanceNameDarkAqua = "NSAppearanceNameDarkAqua";
inline constexpr std::string_view NSAppearanceNameVibrantDark = "NSAppearanceNameVibrantDark";
inline constexpr std::string_view NSAppearanceNameAccessibilityHighContrastDarkAqua =
    "NSAppearanceNameAccessibilityHighContrastDarkAqua";
inline constexpr std::string_view NSAppearanceNameAccessibilityHighContrastVibrantDark =
    "NSAppearanceNameAccessibilityHighContrastVibrantDark";
