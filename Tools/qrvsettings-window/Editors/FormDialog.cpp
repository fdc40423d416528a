// SPDX-License-Identifier: MIT
#include "Editors/FormDialog.h"

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QLayout>

namespace QRVWindow {

bool FormDialog::event(QEvent* event) {
    const bool isHandled = QDialog::event(event);
    if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Resize) growToFit();
    return isHandled;
}

void FormDialog::takeStartSize() {
    constexpr int charactersOfLine = 70;
    const int width = fontMetrics().averageCharWidth() * charactersOfLine;
    resize(width, layout()->totalHeightForWidth(width));
}

void FormDialog::growToFit() {
    const int wanted = layout() == nullptr ? 0 : layout()->totalHeightForWidth(width());
    if (wanted > height()) resize(width(), wanted);
}

QLabel* makeWrappedLabel(const QString& text, QWidget* parent) {
    auto* const label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A key path is from left to right, and begins where the other texts do nevertheless.
    label->setAlignment((QGuiApplication::isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) |
                        Qt::AlignAbsolute | Qt::AlignVCenter);
    return label;
}

}  // namespace QRVWindow
