// SPDX-License-Identifier: MIT
#include "Panes/FactText.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QTextOption>
#include <QWheelEvent>
#include <cmath>

namespace QRVWindow {

FactText::FactText(QWidget* parent) : QTextEdit(parent) {
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFocusPolicy(Qt::StrongFocus);
    setTabChangesFocus(true);
    setFrameStyle(QFrame::NoFrame);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(2);
    follow(false);
    connect(
        document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
        [this](const QSizeF& size) { setFixedHeight(static_cast<int>(std::ceil(size.height()))); });
}

void FactText::setFact(const QString& text, bool isCode) {
    if (isCode != isCode_) follow(isCode);
    if (text != toPlainText()) setPlainText(text);
}

void FactText::follow(bool isCode) {
    isCode_ = isCode;
    QTextOption option = document()->defaultTextOption();
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    // Texts that are not translated keep their own direction.
    option.setTextDirection(isCode ? Qt::LeftToRight : Qt::LayoutDirectionAuto);
    option.setAlignment(Qt::AlignAbsolute | (isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft));
    document()->setDefaultTextOption(option);
}

QSize FactText::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 30, height()};
}

QSize FactText::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 12, fontMetrics().height()};
}

void FactText::changeEvent(QEvent* event) {
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange) follow(isCode_);
}

void FactText::wheelEvent(QWheelEvent* event) {
    // The pane around it scrolls.
    event->ignore();
}

}  // namespace QRVWindow
