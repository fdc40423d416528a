// SPDX-License-Identifier: MIT
#pragma once

/// Marks what the shared library shows to its users; everything else in it is hidden.
#define QRV_EXPORT __attribute__((visibility("default")))

/// Keeps a class's inner parts hidden although the class around them is shown.
#define QRV_HIDDEN __attribute__((visibility("hidden")))
