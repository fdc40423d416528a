// SPDX-License-Identifier: MIT
// The menus of the window, and the keys that hold everywhere in it.
#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

#include "Main/MainWindow.h"
#include "Main/RowActions.h"
#include "Panes/PendingBar.h"
#include "Table/FilterBar.h"

namespace QRVWindow {

QAction* MainWindow::add(QMenu& menu, const QString& text, const QKeySequence& keys,
                         void (MainWindow::*function)()) {
    QAction* const action = menu.addAction(text);
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, function);
    return action;
}

void MainWindow::makeFileMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&File"));
    add(menu, tr("&Import\u2026"), QKeySequence::Open, &MainWindow::importSettings);
    add(menu, tr("&Export\u2026"), QKeySequence::SaveAs, &MainWindow::exportSettings);
    menu.addSeparator();
    add(menu, tr("Compare with &defaults\u2026"), Qt::CTRL | Qt::Key_D,
        &MainWindow::compareWithDefaults);
    add(menu, tr("&Compare\u2026"), Qt::CTRL | Qt::SHIFT | Qt::Key_D, &MainWindow::compare);
    add(menu, tr("&History\u2026"), Qt::CTRL | Qt::Key_H, &MainWindow::showHistory);
    menu.addSeparator();
    add(menu, tr("&Read again"), QKeySequence::Refresh, &MainWindow::reload);
    menu.addSeparator();
    QAction* const close = menu.addAction(tr("C&lose"));
    close->setShortcuts({Qt::CTRL | Qt::Key_W, Qt::CTRL | Qt::Key_Q});
    connect(close, &QAction::triggered, this, &QWidget::close);
}

void MainWindow::makeEditMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&Edit"));
    undo_ = menu.addAction(tr("&Undo"), &session_, &Session::undo);
    undo_->setShortcut(Qt::CTRL | Qt::Key_Z);
    redo_ = menu.addAction(tr("&Redo"), &session_, &Session::redo);
    redo_->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    menu.addSeparator();
    actions_->addEditingTo(menu);
    menu.addSeparator();
    actions_->addCopyingTo(menu);
    menu.addSeparator();
    menu.addActions({pending_->reviewAction(), pending_->applyAction(), pending_->discardAction(),
                     pending_->stopAction()});
}

void MainWindow::makeViewMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&View"));
    menu.addAction(filter_->focusAction());
    menu.addSeparator();
    auto* const forms = new QActionGroup(this);
    tree_ = add(menu, tr("&Tree"), {}, &MainWindow::showTree);
    flat_ = add(menu, tr("&Flat list"), {}, &MainWindow::showFlatList);
    for (QAction* const form : {tree_, flat_}) {
        form->setCheckable(true);
        forms->addAction(form);
    }
    actions_->addLevelsTo(menu);
    menu.addSeparator();
    add(menu, tr("&Details"), Qt::CTRL | Qt::Key_1, &MainWindow::showDetails);
    add(menu, tr("&Changes"), Qt::CTRL | Qt::Key_2, &MainWindow::showChanges);
}

void MainWindow::makeHelpMenu() {
    QMenu& menu = *menuBar()->addMenu(tr("&Help"));
    keys_ = add(menu, tr("&Keys"), QKeySequence::HelpContents, &MainWindow::showKeys);
}

}  // namespace QRVWindow
