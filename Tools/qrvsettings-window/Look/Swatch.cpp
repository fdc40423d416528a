// SPDX-License-Identifier: MIT
#include "Look/Swatch.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace QRVWindow {
namespace {

constexpr int largestByte = 255;
constexpr int smallestWithTwoLines = 8;

int byteOf(double component) {
    const double inRange = std::isnan(component) ? 0 : std::clamp(component, 0.0, 1.0);
    return static_cast<int>(std::lround(inRange * largestByte));
}

/// The text's colour, a little nearer to the ground.
QColor outerLine(const QPalette& palette) {
    constexpr double share = 0.85;
    const auto mixed = [](int text, int ground) {
        return static_cast<int>(std::lround(text * share + ground * (1 - share)));
    };
    const QColor text = palette.color(QPalette::Text);
    const QColor ground = palette.color(QPalette::Base);
    return {mixed(text.red(), ground.red()), mixed(text.green(), ground.green()),
            mixed(text.blue(), ground.blue())};
}

/// The same greys in light and dark windows, so that a colour looks the same in both.
void paintCheckerboard(QPainter& painter, const QRect& rect) {
    const int side = std::max(2, rect.height() / 4);
    const QColor light(0xff, 0xff, 0xff);
    const QColor dark(0xc0, 0xc0, 0xc0);
    for (int y = 0; y * side < rect.height(); ++y)
        for (int x = 0; x * side < rect.width(); ++x) {
            const QRect square(rect.left() + x * side, rect.top() + y * side, side, side);
            painter.fillRect(square.intersected(rect), (x + y) % 2 == 0 ? light : dark);
        }
}

int linesOf(const QRect& swatch) {
    return std::min(swatch.width(), swatch.height()) < smallestWithTwoLines ? 1 : 2;
}

}  // namespace

QColor qColorOf(const NSColor& color) {
    return {byteOf(color.redComponent), byteOf(color.greenComponent), byteOf(color.blueComponent),
            byteOf(color.alphaComponent)};
}

QRect colorArea(const QRect& swatch) {
    const int lines = linesOf(swatch);
    return swatch.adjusted(lines, lines, -lines, -lines);
}

void paintSwatch(QPainter& painter, const QRect& rect, const NSColor& color,
                 const QPalette& palette) {
    const QColor shown = qColorOf(color);
    const QRect area = colorArea(rect);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(rect, outerLine(palette));
    if (linesOf(rect) > 1)
        painter.fillRect(rect.adjusted(1, 1, -1, -1), palette.color(QPalette::Base));
    if (shown.alpha() < largestByte) paintCheckerboard(painter, area);
    painter.fillRect(area, shown);
    painter.restore();
}

}  // namespace QRVWindow
