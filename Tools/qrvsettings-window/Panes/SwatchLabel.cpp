// SPDX-License-Identifier: MIT
#include "Panes/SwatchLabel.h"

#include <QPainter>

#include "Look/Swatch.h"

namespace QRVWindow {

SwatchLabel::SwatchLabel(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SwatchLabel::setColor(const NSColor& color) {
    color_ = color;
    update();
}

QSize SwatchLabel::sizeHint() const {
    const int height = fontMetrics().height();
    return {2 * height, height};
}

void SwatchLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    paintSwatch(painter, rect(), color_, palette());
}

}  // namespace QRVWindow
