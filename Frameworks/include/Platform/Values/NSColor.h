// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Export.h"

/// A colour in the sRGB space: four components, usually from 0 to 1 (they are not clamped). It
/// exists only in memory; no property list can hold it.
struct QRV_EXPORT NSColor {
    double redComponent = 0;
    double greenComponent = 0;
    double blueComponent = 0;
    double alphaComponent = 1;

    static constexpr NSColor colorWithSRGBRed(double red, double green, double blue, double alpha) {
        return NSColor{red, green, blue, alpha};
    }
    bool operator==(const NSColor&) const = default;
};
