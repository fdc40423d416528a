// SPDX-License-Identifier: MIT
#include "Main/RowActions.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QItemSelectionModel>
#include <QMenu>

#include "Dialogs/CopyToProfileDialog.h"
#include "Editors/EditDialog.h"
#include "Editors/NewSettingDialog.h"
#include "Edits/EditCommands.h"
#include "Look/Text.h"

namespace QRVWindow {

RowActions::RowActions(Session& session, RowModel& model, RowView& view)
    : QObject(&view), session_(session), model_(model), view_(view) {
    makeEditing();
    makeCopying();
    makeLevels();
    connect(&view_, &RowView::selectedKeyPathsChanged, this, &RowActions::update);
    connect(&view_, &RowView::currentKeyPathChanged, this, &RowActions::update);
    connect(&view_, &RowView::menuWanted, this, &RowActions::showMenu);
    connect(&view_, &RowView::dialogWanted, this, [this](const QString& keyPath) {
        editInDialog(session_, {toText(keyPath)}, view_.window());
    });
    connect(&session_, &Session::fileStateChanged, this, &RowActions::update);
    connect(&session_, &Session::pendingChanged, this, &RowActions::update);
    update();
}

QAction* RowActions::make(const QString& text, void (RowActions::*function)()) {
    auto* const action = new QAction(text, this);
    connect(action, &QAction::triggered, this, function);
    return action;
}

void RowActions::makeEditing() {
    // The view has these two keys itself; here they are for menus.
    edit_ = make(tr("&Edit value") + QLatin1Char('\t') + tr("Enter"), &RowActions::edit);
    reset_ = make(tr("&Reset to default"), &RowActions::reset);
    reset_->setShortcut(QKeySequence::Delete);
    reset_->setShortcutContext(Qt::WidgetShortcut);
    view_.addAction(reset_);
    setToOneValue_ = make(tr("&Set selected to one value\u2026"), &RowActions::setToOneValue);
    copyToProfile_ = make(tr("Copy to &profile\u2026"), &RowActions::copyToProfile);
    newSetting_ = make(tr("&New setting\u2026"), &RowActions::addSetting);
    newSetting_->setShortcut(QKeySequence::New);
}

void RowActions::makeCopying() {
    copyValues_ = make(tr("&Copy value"), &RowActions::copyValues);
    copyValues_->setShortcut(QKeySequence::Copy);
    copyValues_->setShortcutContext(Qt::WidgetShortcut);
    view_.addAction(copyValues_);
    copyKeyPaths_ = make(tr("Copy &key path"), &RowActions::copyKeyPaths);
    copyCommands_ = make(tr("Copy co&mmand"), &RowActions::copyCommandsOfRows);
    copyCommands_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    copyEdits_ = make(tr("Copy &all pending as commands"), &RowActions::copyCommandsOfEdits);
}

void RowActions::makeLevels() {
    expandAll_ = make(tr("E&xpand all"), &RowActions::expandAll);
    collapseAll_ = make(tr("Co&llapse all"), &RowActions::collapseAll);
}

void RowActions::addEditingTo(QMenu& menu) const {
    menu.addActions({edit_, reset_, setToOneValue_, copyToProfile_, newSetting_});
}

void RowActions::addCopyingTo(QMenu& menu) const {
    menu.addActions({copyValues_, copyKeyPaths_, copyCommands_, copyEdits_});
}

void RowActions::addLevelsTo(QMenu& menu) const {
    menu.addActions({expandAll_, collapseAll_});
}

void RowActions::showMenu(const QPoint& position) {
    auto* const menu = new QMenu(&view_);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    addEditingTo(*menu);
    menu->addSeparator();
    addCopyingTo(*menu);
    menu->addSeparator();
    addLevelsTo(*menu);
    menu->popup(position);
}

void RowActions::update() {
    const bool canEdit = session_.fileState().isWritable();
    const bool hasCurrent = !view_.currentKeyPath().empty();
    const bool hasRows = view_.selectionModel()->hasSelection();
    edit_->setEnabled(canEdit && hasCurrent);
    newSetting_->setEnabled(canEdit);
    for (QAction* const action : {reset_, setToOneValue_, copyToProfile_})
        action->setEnabled(canEdit && hasRows);
    for (QAction* const action : {copyValues_, copyKeyPaths_, copyCommands_})
        action->setEnabled(hasRows);
    copyEdits_->setEnabled(!session_.pending().edits().empty());
}

void RowActions::edit() {
    view_.setFocus();
    view_.QAbstractItemView::edit(view_.currentIndex());
}

void RowActions::reset() {
    const std::vector<std::string> keyPaths = view_.selectedKeyPaths();
    session_.reset(keyPaths);
}

void RowActions::setToOneValue() {
    editInDialog(session_, view_.selectedKeyPaths(), view_.window());
}

void RowActions::copyToProfile() {
    auto* const dialog =
        new CopyToProfileDialog(session_, view_.selectedKeyPaths(), view_.window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void RowActions::addSetting() {
    NewSettingDialog* const dialog = newSettingInDialog(session_, view_.window());
    connect(dialog, &QDialog::accepted, this, [this, dialog] { view_.reveal(dialog->keyPath()); });
}

void RowActions::copy(const QString& text, const QString& sentence) {
    QGuiApplication::clipboard()->setText(text);
    Q_EMIT said(sentence);
}

void RowActions::copyValues() {
    const std::vector<std::string> keyPaths = view_.selectedKeyPaths();
    QStringList lines;
    for (const std::string& keyPath : keyPaths) {
        const PropertyListValue value = session_.valueWithEdits(keyPath);
        const bool isText = value.isString() && keyPaths.size() == 1;
        const QString text = isText ? fromText(value.stringView()) : valueAsText(value);
        lines << (keyPaths.size() == 1 ? text : fromText(keyPath) + QLatin1Char('\t') + text);
    }
    copy(lines.join(QLatin1Char('\n')), tr("Copied values: %1").arg(lines.size()));
}

void RowActions::copyKeyPaths() {
    QStringList lines;
    for (const std::string& keyPath : view_.selectedKeyPaths()) lines << fromText(keyPath);
    copy(lines.join(QLatin1Char('\n')), tr("Copied key paths: %1").arg(lines.size()));
}

void RowActions::copyCommands(const std::vector<std::string>& keyPaths) {
    std::string lines;
    int count = 0;
    for (const std::string& keyPath : keyPaths) {
        const Tool::SettingRow* const row = session_.table().at(keyPath);
        // The store's own records belong to this machine; one that is asked for alone is meant.
        if (row == nullptr || (row->isRecord && keyPaths.size() > 1)) continue;
        std::string line =
            Tool::commandOfSetting(session_.placeOf(keyPath), session_.stored(), row->effective);
        if (line.empty()) continue;
        if (!line.ends_with('\n')) line += '\n';
        lines += line;
        ++count;
    }
    copy(fromText(lines), tr("Copied commands: %1").arg(count));
}

void RowActions::copyCommandsOfRows() {
    copyCommands(view_.selectedKeyPaths());
}

void RowActions::copyCommandsOfEdits() {
    std::vector<Tool::PendingEdit> edits;
    for (const auto& [place, edit] : session_.pending().edits()) edits.push_back(edit);
    copy(fromText(Tool::commandsOfEdits(edits)),
         tr("Edits copied as commands: %1").arg(edits.size()));
}

void RowActions::expandAll() {
    model_.setAllExpanded(true);
}

void RowActions::collapseAll() {
    model_.setAllExpanded(false);
}

}  // namespace QRVWindow
