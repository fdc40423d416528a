// SPDX-License-Identifier: MIT
#include "Dialogs/KeysDialog.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QScrollBar>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace QRVWindow {
namespace {

/// What an action is called, without the marks of menus.
QString nameOf(const QAction& action) {
    QString name = action.text();
    name.replace(QStringLiteral("&&"), QStringLiteral("\u0001"));
    name.remove(QLatin1Char('&'));
    name.replace(QChar(1), QLatin1Char('&'));
    while (name.endsWith(QChar(0x2026)) || name.endsWith(QLatin1Char('.'))) name.chop(1);
    return name;
}

QString keysOf(const QAction& action) {
    return QKeySequence::listToString(action.shortcuts(), QKeySequence::NativeText)
        .replace(QStringLiteral("; "), KeysDialog::tr(" or ", "between two keys"));
}

}  // namespace

KeysDialog::KeysDialog(const QList<QAction*>& actions, const std::vector<Key>& others,
                       QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(tr("Keys"));
    setObjectName(QStringLiteral("keysDialog"));
    auto* const layout = new QVBoxLayout(this);
    list_ = new QTreeWidget(this);
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setAllColumnsShowFocus(true);
    list_->setHeaderLabels({tr("What it does"), tr("Keys")});
    list_->setAccessibleName(tr("Keys of the window"));
    for (const QAction* const action : actions)
        if (!action->shortcuts().isEmpty()) add(keysOf(*action), nameOf(*action));
    for (const Key& key : others) add(key.keys, key.text);
    layout->addWidget(list_);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(buttons);
    list_->header()->setStretchLastSection(false);
    list_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list_->setMinimumWidth(list_->header()->length() + 2 * list_->frameWidth() +
                           list_->verticalScrollBar()->sizeHint().width());
    list_->setFocus();
}

void KeysDialog::add(const QString& keys, const QString& text) {
    auto* const item = new QTreeWidgetItem(list_, {text, keys});
    item->setData(0, Qt::AccessibleTextRole, tr("%1: %2").arg(text, keys));
    if (list_->topLevelItemCount() == 1) list_->setCurrentItem(item);
}

}  // namespace QRVWindow
