// SPDX-License-Identifier: MIT
#include "Panes/WrappingRow.h"

#include <QEvent>
#include <QStyle>
#include <algorithm>

namespace QRVWindow {
namespace {

constexpr int spacing = 6;

}  // namespace

void WrappingRow::add(QWidget* widget) {
    widget->setParent(this);
    widgets_.append(widget);
    updateGeometry();
}

QSize WrappingRow::minimumSizeHint() const {
    int width = 0;
    for (const QWidget* const widget : widgets_)
        width = std::max(width, widget->sizeHint().width());
    return {width, height()};
}

QSize WrappingRow::sizeHint() const {
    int width = 0;
    for (const QWidget* const widget : widgets_) width += widget->sizeHint().width() + spacing;
    return {width, height()};
}

bool WrappingRow::event(QEvent* event) {
    const bool isUsed = QWidget::event(event);
    const bool hasOtherSizes =
        event->type() == QEvent::LayoutRequest || event->type() == QEvent::LayoutDirectionChange ||
        event->type() == QEvent::FontChange || event->type() == QEvent::Polish;
    if (hasOtherSizes) arrange();
    return isUsed;
}

void WrappingRow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange();
}

void WrappingRow::arrange() {
    QPoint next;
    int lineHeight = 0;
    for (QWidget* const widget : widgets_) {
        const QSize size = widget->sizeHint();
        if (next.x() > 0 && next.x() + size.width() > width())
            next = QPoint(0, next.y() + lineHeight + spacing);
        widget->setGeometry(QStyle::visualRect(layoutDirection(), rect(), QRect(next, size)));
        next.rx() += size.width() + spacing;
        lineHeight = size.height();
    }
    setFixedHeight(next.y() + lineHeight);
}

}  // namespace QRVWindow
