// SPDX-License-Identifier: MIT
// What the menus and buttons of the window do: mostly dialogs, which do not block it.
#include <QAction>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QUrl>

#include "Dialogs/CompareDialog.h"
#include "Dialogs/HistoryDialog.h"
#include "Dialogs/ImportExport.h"
#include "Dialogs/KeysDialog.h"
#include "Dialogs/ReviewDialog.h"
#include "Main/MainWindow.h"
#include "Main/RowActions.h"
#include "Main/StatusLine.h"
#include "Panes/ChangesPane.h"
#include "Panes/DetailsPane.h"
#include "Table/FilterBar.h"
#include "Table/RowView.h"

namespace QRVWindow {
namespace {

void showOnce(QDialog& dialog) {
    dialog.setAttribute(Qt::WA_DeleteOnClose);
    dialog.show();
    dialog.raise();
    dialog.activateWindow();
}

}  // namespace

// -------------------------------------------------------------------------------------- dialogs

void MainWindow::review() {
    if (review_ == nullptr) {
        review_ = new ReviewDialog(session_, this);
        review_->resize(size() * 9 / 10);
    }
    review_->show();
    review_->raise();
    review_->activateWindow();
}

void MainWindow::compare() {
    showOnce(*new CompareDialog(session_, this));
}

void MainWindow::compareWithDefaults() {
    auto* const dialog = new CompareDialog(session_, this);
    dialog->compareWith(CompareDialog::Side::Defaults);
    showOnce(*dialog);
}

void MainWindow::showHistory() {
    showOnce(*new HistoryDialog(session_, this));
}

void MainWindow::importSettings() {
    auto* const dialog = new QFileDialog(this, tr("Import settings"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this, &MainWindow::importFile);
    dialog->open();
}

void MainWindow::importFile(const QString& path) {
    showOnce(*new ImportDialog(session_, path, this));
}

void MainWindow::exportSettings() {
    showOnce(*new ExportDialog(session_, view_->selectedKeyPaths(), this));
}

void MainWindow::showKeys() {
    const QList<QAction*> actions = findChildren<QAction*>();
    const std::vector<KeysDialog::Key> ofRows{
        {tr("Enter, F2"), tr("Edit the value, or open and close the level")},
        {tr("Escape"), tr("Go back: editor, rows, filter")},
        {tr("Left, Right"), tr("Close and open a level")},
        {tr("Tab"), tr("Go to the next control")},
    };
    showOnce(*new KeysDialog(actions, ofRows, this));
}

void MainWindow::newProfile() {
    auto* const dialog = new QInputDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("New profile"));
    dialog->setLabelText(tr("Name of the profile, which exists as soon as it has a setting:"));
    connect(dialog, &QInputDialog::textValueSelected, this, [this](const QString& name) {
        if (name.isEmpty() || name.contains(QLatin1Char('.')))
            return status_->say(tr("The name of a profile has at least one letter and no dot."));
        session_.setProfile(name);
    });
    dialog->open();
}

// ----------------------------------------------------------------------------------------- file

void MainWindow::reload() {
    session_.reload();
}

void MainWindow::openFolder(const QString& folder) {
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        status_->say(tr("No program opens the folder %1.").arg(folder));
}

void MainWindow::startAnew() {
    auto* const question = new QMessageBox(
        QMessageBox::Warning, tr("Start anew"),
        tr("The damaged file is replaced by one with the pending edits only. Its bytes are kept "
           "beside it."),
        QMessageBox::Cancel, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    const QPushButton* const replace =
        question->addButton(tr("&Replace the file"), QMessageBox::DestructiveRole);
    connect(replace, &QPushButton::clicked, this, [this] {
        Session::ApplyOptions options;
        options.replacesDamagedFile = true;
        session_.apply(options);
    });
    // Somebody may have repaired the file meanwhile.
    connect(&session_, &Session::fileStateChanged, question, [this, question] {
        if (!session_.fileState().isDamaged()) question->reject();
    });
    question->open();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!draggedFile(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    importFile(draggedFile(*event->mimeData()));
}

// ----------------------------------------------------------------------------------------- view

void MainWindow::showTree() {
    setForm(Tool::RowList::Form::Tree);
}

void MainWindow::showFlatList() {
    setForm(Tool::RowList::Form::Flat);
}

void MainWindow::showDetails() {
    tabs_->setCurrentWidget(details_);
    details_->setFocus();
}

void MainWindow::showChanges() {
    tabs_->setCurrentWidget(changes_);
    changes_->setFocus();
}

// ---------------------------------------------------------------------------------------- close

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!mayClose_ && !view_->takeTyped()) {
        event->ignore();
        return;
    }
    if (!mayClose_ && !session_.pending().edits().empty()) {
        event->ignore();
        return askBeforeClosing();
    }
    writeWindowState(state(), before_);
    QMainWindow::closeEvent(event);
}

void MainWindow::askBeforeClosing() {
    const auto count = static_cast<int>(session_.pending().edits().size());
    auto* const question = new QMessageBox(
        QMessageBox::Question, tr("Close"),
        count == 1 ? tr("1 edit is pending and not in the settings file.")
                   : tr("%n edits are pending and not in the settings file.", "", count),
        QMessageBox::Cancel, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    const QPushButton* const discard =
        question->addButton(tr("&Discard"), QMessageBox::DestructiveRole);
    QPushButton* const reviewed = question->addButton(tr("&Review\u2026"), QMessageBox::ActionRole);
    question->setDefaultButton(reviewed);
    connect(discard, &QPushButton::clicked, this, [this] {
        mayClose_ = true;
        close();
    });
    connect(reviewed, &QPushButton::clicked, this, &MainWindow::review);
    question->open();
}

}  // namespace QRVWindow
