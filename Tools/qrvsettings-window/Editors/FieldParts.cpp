// SPDX-License-Identifier: MIT
#include "Editors/FieldParts.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

#include "Look/Swatch.h"

namespace QRVWindow {

DragHandle::DragHandle(QWidget* parent) : QWidget(parent) {
    setCursor(Qt::SizeVerCursor);
    setFocusPolicy(Qt::NoFocus);
    setToolTip(tr("Drag up or down to change the number."));
    setAccessibleName(tr("Handle to drag the number up or down"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
}

QSize DragHandle::sizeHint() const {
    const int height = fontMetrics().height();
    return {height * 2 / 3, height};
}

void DragHandle::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const int side = width();
    QStyleOption option;
    option.initFrom(this);
    option.rect = QRect(0, height() / 2 - side, side, side);
    style()->drawPrimitive(QStyle::PE_IndicatorArrowUp, &option, &painter, this);
    option.rect = QRect(0, height() / 2, side, side);
    style()->drawPrimitive(QStyle::PE_IndicatorArrowDown, &option, &painter, this);
}

void DragHandle::mousePressEvent(QMouseEvent* event) {
    dragY_ = qRound(event->globalPosition().y());
}

void DragHandle::mouseMoveEvent(QMouseEvent* event) {
    constexpr int pixelsOfStep = 4;
    const int steps = (dragY_ - qRound(event->globalPosition().y())) / pixelsOfStep;
    if (steps == 0) return;
    dragY_ -= steps * pixelsOfStep;
    Q_EMIT stepped(steps);
}

SwatchButton::SwatchButton(QWidget* parent) : QAbstractButton(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    setFocusPolicy(Qt::StrongFocus);
}

void SwatchButton::setColor(const std::optional<NSColor>& color) {
    color_ = color;
    update();
}

QSize SwatchButton::sizeHint() const {
    const int height = fontMetrics().height();
    return {height * 2, height};
}

QRect SwatchButton::swatchRect() const {
    const int margin = 2;
    return rect().adjusted(margin, margin, -margin, -margin);
}

void SwatchButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRect swatch = swatchRect();
    if (color_) {
        paintSwatch(painter, swatch, *color_, palette());
    } else {
        painter.setPen(palette().color(QPalette::Text));
        painter.drawRect(swatch.adjusted(0, 0, -1, -1));
        painter.drawLine(swatch.topLeft(), swatch.bottomRight());
        painter.drawLine(swatch.bottomLeft(), swatch.topRight());
    }
    if (!hasFocus()) return;
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.rect = rect();
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}

}  // namespace QRVWindow
