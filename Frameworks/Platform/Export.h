// SPDX-License-Identifier: MIT
#pragma once

/// Marks what the shared library shows to its users; everything else in it is hidden.
#define QRV_EXPORT __attribute__((visibility("default")))
