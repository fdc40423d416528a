// SPDX-License-Identifier: MIT
#include "Dialogs/LiveDialog.h"

#include <QAccessible>
#include <QLabel>
#include <QLayout>
#include <QScreen>
#include <algorithm>

namespace QRVWindow {

LiveDialog::LiveDialog(Session& session, QWidget* parent) : QDialog(parent), session_(session) {
    const auto followSession = [this] { follow(); };
    connect(&session_, &Session::pendingChanged, this, followSession);
    connect(&session_, &Session::tableChanged, this, followSession);
    connect(&session_, &Session::tableReset, this, followSession);
    connect(&session_, &Session::changesChanged, this, followSession);
    connect(&session_, &Session::profilesChanged, this, followSession);
    connect(&session_, &Session::fileStateChanged, this, followSession);
    connect(&session_, &Session::applyingChanged, this, followSession);
}

void LiveDialog::setVisible(bool isVisible) {
    if (isVisible && !this->isVisible()) {
        showSession();
        if (!testAttribute(Qt::WA_Resized)) {
            constexpr double mostOfScreen = 0.9;
            const QSize room = screen()->availableSize() * mostOfScreen;
            const int width = std::min(sizeHint().width(), room.width());
            resize(width, std::min(layout()->totalHeightForWidth(width), room.height()));
        }
    }
    QDialog::setVisible(isVisible);
}

void LiveDialog::follow() {
    if (isFollowing_ || !isVisible()) return;
    isFollowing_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            isFollowing_ = false;
            if (isVisible()) showSession();
        },
        Qt::QueuedConnection);
}

QLabel* LiveDialog::makeLabel(const QString& name) {
    auto* const label = new QLabel(this);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setObjectName(name);
    return label;
}

void LiveDialog::announce(QLabel* label) {
    QAccessibleEvent event(label, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

}  // namespace QRVWindow
