// SPDX-License-Identifier: MIT
#pragma once

// What `loadDefaults` does before it builds the defaults.

namespace QRVInside {

/// The stored appearance, if there is one, becomes the current one.
void restoreAppearance();

/// Compares the machine with the one that last used the settings, and records it: on another
/// machine the primary network interface is reset, on another model the fans, and the sensors in
/// each profile's menu-bar item.
void checkMachineIdentity();

}  // namespace QRVInside
