// SPDX-License-Identifier: MIT
#include "Editors/EditorMessage.h"

#include <QBoxLayout>
#include <QEvent>
#include <algorithm>

#include "Editors/FormDialog.h"

namespace QRVWindow {

EditorMessage::EditorMessage(QWidget* parent)
    : QFrame(parent),
      text_(makeWrappedLabel({}, this)),
      storeAnyway_(new QPushButton(tr("Store it anyway"), this)) {
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(text_, 1);
    row->addWidget(storeAnyway_, 0, Qt::AlignTop);
    storeAnyway_->setAutoDefault(false);
    connect(storeAnyway_, &QPushButton::clicked, this, &EditorMessage::storeAnyway);
    hide();
}

void EditorMessage::show(const QString& text, bool canBeStoredAnyway) {
    text_->setText(text);
    storeAnyway_->setVisible(canBeStoredAnyway);
    if (beside_ != nullptr) place();
    setHidden(text.isEmpty());
    if (beside_ != nullptr) raise();
}

void EditorMessage::standBeside(QWidget* widget) {
    beside_ = widget;
    setFrameShape(QFrame::Box);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    setForegroundRole(QPalette::Text);
    text_->setForegroundRole(QPalette::Text);
    constexpr int margin = 4;
    layout()->setContentsMargins(margin, margin, margin, margin);
    // The editor of a cell is closed when it loses the focus.
    storeAnyway_->setFocusPolicy(Qt::NoFocus);
    text_->setTextInteractionFlags(Qt::NoTextInteraction);
    widget->installEventFilter(this);
}

void EditorMessage::place() {
    constexpr int charactersOfLine = 60;
    const QWidget* const ground = parentWidget();
    const QPoint start = beside_->mapTo(ground, QPoint(0, 0));
    const int wanted = fontMetrics().averageCharWidth() * charactersOfLine;
    const int width = std::min(wanted, ground->width());
    const int height = std::max(layout()->totalHeightForWidth(width), fontMetrics().height());
    const bool isRightToLeft = layoutDirection() == Qt::RightToLeft;
    const int left = isRightToLeft ? start.x() + beside_->width() - width : start.x();
    const int below = start.y() + beside_->height();
    const bool hasRoomBelow = below + height <= ground->height();
    setGeometry(std::clamp(left, 0, ground->width() - width),
                hasRoomBelow ? below : std::max(0, start.y() - height), width, height);
}

bool EditorMessage::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
            if (!isHidden()) place();
            break;
        case QEvent::Hide:
            hide();
            break;
        default:
            break;
    }
    return QFrame::eventFilter(watched, event);
}

}  // namespace QRVWindow
