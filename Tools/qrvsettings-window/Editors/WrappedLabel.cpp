// SPDX-License-Identifier: MIT
#include "Editors/WrappedLabel.h"

#include <QGuiApplication>
#include <algorithm>

namespace QRVWindow {

WrappedLabel::WrappedLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A key path is from left to right, and begins where the other texts do nevertheless.
    const bool isRightToLeft = QGuiApplication::isRightToLeft();
    setAlignment((isRightToLeft ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute |
                 Qt::AlignVCenter);
}

void WrappedLabel::setWrappedText(const QString& text) {
    setText(text);
    keepHeight();
}

void WrappedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    keepHeight();
}

void WrappedLabel::keepHeight() {
    setMinimumHeight(std::max(0, heightForWidth(width())));
}

}  // namespace QRVWindow
