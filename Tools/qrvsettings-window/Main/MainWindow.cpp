// SPDX-License-Identifier: MIT
#include "Main/MainWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>

#include "Edits/EditTable.h"
#include "Look/Text.h"
#include "Main/RowActions.h"
#include "Main/ScopeBar.h"
#include "Main/StatusLine.h"
#include "Panes/ChangesPane.h"
#include "Panes/DetailsPane.h"
#include "Panes/Findings.h"
#include "Panes/PendingBar.h"
#include "Panes/TroubleBanner.h"
#include "Settings/KnownKeyPaths.h"
#include "Table/FilterBar.h"
#include "Table/RowView.h"

namespace QRVWindow {

MainWindow::MainWindow(Session& session, QWidget* parent)
    : QMainWindow(parent), session_(session), model_(session), before_(readWindowState()) {
    makeWidgets();
    makeFileMenu();
    makeEditMenu();
    makeViewMenu();
    makeHelpMenu();
    status_ = new StatusLine(session_, keys_, this);
    setStatusBar(status_);
    arrange();
    connectRows();
    connectPanes();
    connectBanner();
    setAcceptDrops(true);
    restoreState();
    followFile();
    followEdits();
    view_->setFocus();
}

MainWindow::~MainWindow() = default;

void MainWindow::makeWidgets() {
    scope_ = new ScopeBar(session_, this);
    filter_ = new FilterBar(model_, this);
    findings_ = new Findings(this);
    banner_ = new TroubleBanner(session_, *findings_, this);
    view_ = new RowView(model_, this);
    view_->setAccessibleName(tr("Settings"));
    actions_ = new RowActions(session_, model_, *view_);
    details_ = new DetailsPane(session_, this);
    changes_ = new ChangesPane(session_, this);
    pending_ = new PendingBar(session_, this);
    tabs_ = new QTabWidget(this);
    tabs_->addTab(details_, tr("Details"));
    tabs_->addTab(changes_, tr("Changes"));
    tabs_->setDocumentMode(true);
    split_ = new QSplitter(Qt::Vertical, this);
    split_->addWidget(view_);
    split_->addWidget(tabs_);
    split_->setChildrenCollapsible(false);
    constexpr int partOfRows = 3;
    constexpr int partOfDetails = 2;
    split_->setStretchFactor(0, partOfRows);
    split_->setStretchFactor(1, partOfDetails);
}

void MainWindow::arrange() {
    auto* const middle = new QWidget(this);
    auto* const lines = new QVBoxLayout(middle);
    for (QWidget* const part : std::initializer_list<QWidget*>{scope_, filter_, banner_})
        lines->addWidget(part);
    lines->addWidget(split_, 1);
    lines->addWidget(pending_);
    setCentralWidget(middle);
}

void MainWindow::connectRows() {
    connect(view_, &RowView::selectedKeyPathsChanged, this,
            [this] { details_->setKeyPaths(view_->selectedKeyPaths()); });
    connect(view_, &RowView::currentKeyPathChanged, this, [this](const QString& keyPath) {
        if (view_->selectedKeyPaths().size() <= 1) details_->setKeyPath(toText(keyPath));
    });
    connect(filter_, &FilterBar::tableWanted, view_, &RowView::enter);
    connect(actions_, &RowActions::said, status_, &StatusLine::say);
    connect(scope_, &ScopeBar::formChanged, this, &MainWindow::setForm);
    connect(scope_, &ScopeBar::newProfileWanted, this, &MainWindow::newProfile);
    connect(scope_, &ScopeBar::comparisonWanted, this, &MainWindow::compare);
    connect(&session_, &Session::fileStateChanged, this, &MainWindow::followFile);
    connect(&session_, &Session::pendingChanged, this, &MainWindow::followEdits);
    connect(&session_, &Session::applied, this, &MainWindow::followEdits);
    connect(&session_, &Session::tableReset, this, &MainWindow::followFindings);
    connect(&session_, &Session::changesChanged, this, &MainWindow::followChanges);
}

void MainWindow::connectPanes() {
    connect(details_, &DetailsPane::takeBackWanted, this,
            [this](const Tool::SettingPlace& place, const PropertyListValue& value) {
                const Tool::SettingRow* const row = session_.table().at(place.keyPath);
                session_.edit({{place, value, row == nullptr ? nullptr : row->byDefault}},
                              tr("take back a change of %1").arg(fromText(place.keyPath)));
            });
    connect(details_, &DetailsPane::resetWanted, this, [this](const QStringList& keyPaths) {
        std::vector<std::string> all;
        for (const QString& keyPath : keyPaths) all.push_back(toText(keyPath));
        session_.reset(all);
    });
    connect(details_, &DetailsPane::copyCommandsWanted, this, [this](const QStringList& keyPaths) {
        std::vector<std::string> all;
        for (const QString& keyPath : keyPaths) all.push_back(toText(keyPath));
        actions_->copyCommands(all);
    });
    connect(changes_, &ChangesPane::placeWanted, this, &MainWindow::showPlace);
    connect(pending_, &PendingBar::reviewWanted, this, &MainWindow::review);
}

void MainWindow::connectBanner() {
    connect(findings_, &Findings::changed, this, &MainWindow::followFindings);
    connect(banner_, &TroubleBanner::placeWanted, this, &MainWindow::showPlace);
    connect(banner_, &TroubleBanner::startAnewWanted, this, &MainWindow::startAnew);
    connect(banner_, &TroubleBanner::importWanted, this, &MainWindow::importSettings);
    connect(banner_, &TroubleBanner::folderWanted, this, &MainWindow::openFolder);
}

void MainWindow::restoreState() {
    constexpr QSize sizeAtFirst(1100, 760);
    if (before_.geometry.isEmpty() || !restoreGeometry(before_.geometry)) resize(sizeAtFirst);
    split_->restoreState(before_.split);
    if (!before_.columns.isEmpty()) view_->header()->restoreState(before_.columns);
    filter_->setHistory(before_.filters);
    setForm(before_.isFlat ? Tool::RowList::Form::Flat : Tool::RowList::Form::Tree);
}

WindowState MainWindow::state() const {
    WindowState state;
    state.geometry = saveGeometry();
    state.split = split_->saveState();
    state.columns = view_->header()->saveState();
    state.isFlat = model_.form() == Tool::RowList::Form::Flat;
    state.filters = filter_->history();
    return state;
}

void MainWindow::setForm(Tool::RowList::Form form) {
    if (model_.form() != form) model_.setForm(form);
    scope_->setForm(form);
    (form == Tool::RowList::Form::Flat ? flat_ : tree_)->setChecked(true);
}

void MainWindow::followFile() {
    const QString name = session_.fileName().isEmpty() ? QStringLiteral(QRV_APPLICATION_IDENTIFIER)
                                                       : QFileInfo(session_.fileName()).fileName();
    setWindowTitle(tr("Settings of %1[*]").arg(name));
    findings_->examineSoon();
    showWanted();
}

void MainWindow::followEdits() {
    setWindowModified(!session_.pending().edits().empty());
    const Tool::PendingEdits& pending = session_.pending();
    undo_->setEnabled(pending.canUndo());
    redo_->setEnabled(pending.canRedo());
    undo_->setText(pending.canUndo() ? tr("&Undo: %1").arg(fromText(pending.undoName()))
                                     : tr("&Undo"));
    redo_->setText(pending.canRedo() ? tr("&Redo: %1").arg(fromText(pending.redoName()))
                                     : tr("&Redo"));
}

void MainWindow::followFindings() {
    std::map<std::string, QString> sentences;
    for (const Tool::Finding& finding : findings_->all()) {
        const Tool::SettingPlace place = Tool::placeOfStored(finding.keyPath);
        if (!place.keyPath.empty() && place.profile == toText(session_.profile()))
            sentences.emplace(place.keyPath, fromText(finding.message));
    }
    model_.setFindings(std::move(sentences));
}

void MainWindow::followChanges() {
    const auto count = static_cast<int>(session_.changes().size());
    tabs_->setTabText(tabs_->indexOf(changes_),
                      count == 0 ? tr("Changes") : tr("Changes (%1)").arg(count));
}

void MainWindow::open(const std::string& keyPath) {
    wanted_ = keyPath;
    showWanted();
}

void MainWindow::showWanted() {
    if (wanted_.empty() || session_.fileState().kind == FileState::Kind::NotRead) return;
    const std::string keyPath = std::exchange(wanted_, {});
    if (view_->reveal(keyPath)) return view_->enter();
    const auto meant = Tool::KnownKeyPaths(session_.lists()).meantBy(keyPath);
    const QString name = keyPathInSentence(keyPath);
    status_->say(
        meant.has_value()
            ? tr("There is no setting %1. Did you mean %2?").arg(name, keyPathInSentence(*meant))
            : tr("There is no setting %1.").arg(name));
}

void MainWindow::showPlace(const Tool::SettingPlace& place) {
    session_.setProfile(fromText(place.profile));
    if (!view_->reveal(place.keyPath)) {
        // The filter hides it, or it is one of the hidden records.
        filter_->setText(QString());
        if (const Tool::SettingRow* const row = session_.table().at(place.keyPath))
            if (row->isRecord) model_.setShowsRecords(true);
        view_->reveal(place.keyPath);
    }
    view_->setFocus();
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return QMainWindow::keyPressEvent(event);
    if (view_->hasFocus())
        filter_->focusField();
    else
        view_->setFocus();
}

}  // namespace QRVWindow
