// SPDX-License-Identifier: MIT
#pragma once

/// Makes the appearance of the menu bar that of the desktop, until the process is asked to end.
/// Returns an exit status. Only in builds with GIO.
int runAppearanceProcess();

inline constexpr bool hasAppearanceProcess = MENUBAR_HOST_HAS_GIO;
