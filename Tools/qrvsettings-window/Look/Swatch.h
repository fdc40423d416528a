// SPDX-License-Identifier: MIT
#pragma once

// Colours of settings, as pixels.

#include <QColor>
#include <QPalette>
#include <QRect>

#include "Platform/Values/NSColor.h"

class QPainter;

namespace QRVWindow {

/// The colour that a screen can show: components outside of 0 to 1 become the nearest end, a NaN 0.
/// For painting only: it says less than the colour itself.
QColor qColorOf(const NSColor& color);

/// Fills the rectangle with the colour, over a checkerboard where it is transparent. Two lines at
/// its edge, one of which differs from any ground, are no part of the colour; see `colorArea`.
void paintSwatch(QPainter& painter, const QRect& rect, const NSColor& color,
                 const QPalette& palette);

/// What `paintSwatch` fills with the colour itself.
QRect colorArea(const QRect& swatch);

}  // namespace QRVWindow
