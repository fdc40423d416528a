// SPDX-License-Identifier: MIT
#pragma once

// Every public header includes this one. A missing header is the only error after which all
// compilers stop, so its name is the message; `#error` would be followed by hundreds of others.
#if defined(__cplusplus) && __cplusplus < 202002L
#include "QRVSettings needs C++20: compile with -std=c++20 or later"
#endif

/// Marks what the shared library shows to its users; everything else in it is hidden.
#define QRV_EXPORT __attribute__((visibility("default")))

/// Keeps a class's inner parts hidden although the class around them is shown.
#define QRV_HIDDEN __attribute__((visibility("hidden")))
