// SPDX-License-Identifier: MIT
#include "Table/RowColors.h"

namespace QRVWindow {
namespace {

QColor readableOn(const QColor& ground, const QColor& wanted) {
    if (contrastOf(wanted, ground) >= minimumContrast) return wanted;
    const QColor black(Qt::black);
    const QColor white(Qt::white);
    return contrastOf(black, ground) > contrastOf(white, ground) ? black : white;
}

}  // namespace

void RowColors::take(const QPalette& palette) {
    const QColor base = palette.color(QPalette::Base);
    const QColor text = readableOn(base, palette.color(QPalette::Text));
    plain_ = {QColor(), text, readableOn(base, quietText(palette))};
    const QColor highlight = palette.color(QPalette::Highlight);
    const QColor onHighlight = readableOn(highlight, palette.color(QPalette::HighlightedText));
    selected_ = {highlight, onHighlight, onHighlight};
    for (const RowState state : rowStates) {
        const QColor band = bandOf(state, palette);
        RowPaint& paint = banded_[static_cast<std::size_t>(state)];
        paint = plain_;
        if (!band.isValid()) continue;
        const QColor onBand = readableOn(band, text);
        paint = {band, onBand, readableOn(band, plain_.quiet)};
        if (paint.quiet != plain_.quiet) paint.quiet = onBand;
    }
}

RowPaint RowColors::paintOf(const std::vector<RowState>& states, bool isSelected,
                            const QPalette& palette) {
    if (palette.cacheKey() != palette_ || palette.currentColorGroup() != group_) {
        palette_ = palette.cacheKey();
        group_ = palette.currentColorGroup();
        take(palette);
    }
    if (isSelected) return selected_;
    for (const RowState state : states)
        if (const RowPaint& paint = banded_[static_cast<std::size_t>(state)];
            paint.ground.isValid())
            return paint;
    return plain_;
}

}  // namespace QRVWindow
