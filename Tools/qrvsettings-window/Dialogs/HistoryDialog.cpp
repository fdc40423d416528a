// SPDX-License-Identifier: MIT
#include "Dialogs/HistoryDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTreeView>
#include <QVBoxLayout>
#include <map>
#include <set>

#include "Dialogs/ChangeView.h"
#include "Dialogs/ValueCells.h"
#include "Edits/EditTable.h"
#include "Edits/HistoryEdits.h"
#include "History/ToolHistory.h"
#include "Look/Signs.h"
#include "Look/Text.h"

namespace QRVWindow {
namespace {

/// What several saves together have changed at one stored key path.
struct Change {
    PropertyListValue before;
    PropertyListValue after;
};

std::map<std::string, Change> changesOf(const std::vector<QRVHistorySave>& latestFirst) {
    std::map<std::string, Change> changes;
    for (const QRVHistorySave& save : latestFirst)
        for (const auto& [keyPath, before, after] : save.changes)
            changes.try_emplace(keyPath, Change{before, after}).first->second.before = before;
    return changes;
}

QStringList headers() {
    return {HistoryDialog::tr("Setting"),         HistoryDialog::tr("Profile"),
            HistoryDialog::tr("Before"),          HistoryDialog::tr("After"),
            HistoryDialog::tr("In the file now"), HistoryDialog::tr("Note")};
}

}  // namespace

HistoryDialog::HistoryDialog(Session& theSession, QWidget* parent)
    : LiveDialog(theSession, parent), saves_(this), model_(headers(), this) {
    setWindowTitle(tr("History"));
    setObjectName(QStringLiteral("historyDialog"));
    reader_ = new SavesReader(this);
    arrange();
    connect(reader_, &SavesReader::ended, this,
            [this](const auto& saves, const QString& failure) { showSaves(saves, failure); });
    connect(savesView_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { showChanges(); });
    connect(filter_, &QLineEdit::textChanged, this,
            [this](const QString& text) { saves_.setFilter(text.trimmed()); });
    connect(overwrites_, &QCheckBox::toggled, this, [this] { showChanges(); });
    connect(&model_, &ChangeModel::checkedChanged, this, [this] { showState(); });
    savesView_->setFocus();
}

void HistoryDialog::arrange() {
    auto* const layout = new QVBoxLayout(this);
    filter_ = new QLineEdit(this);
    filter_->setClearButtonEnabled(true);
    filter_->setPlaceholderText(tr("Filter by setting or program"));
    filter_->setAccessibleName(tr("Filter"));
    layout->addWidget(filter_);
    auto* const splitter = new QSplitter(Qt::Vertical, this);
    savesView_ = makeSavesView(saves_, splitter);
    savesView_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    savesView_->setObjectName(QStringLiteral("historySaves"));
    view_ = new ChangeView(model_, splitter);
    view_->setAccessibleName(tr("Changes of the selected saves"));
    splitter->addWidget(savesView_);
    splitter->addWidget(view_);
    splitter->setChildrenCollapsible(false);
    layout->addWidget(splitter, 1);
    layout->addWidget(makeCheckBoxForAll(model_, this));
    overwrites_ = new QCheckBox(tr("Take back what was changed since, &too"), this);
    layout->addWidget(overwrites_);
    state_ = makeLabel(QStringLiteral("historyState"));
    layout->addWidget(state_);
    makeButtons(*layout);
}

void HistoryDialog::makeButtons(QLayout& layout) {
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    take_ = buttons->addButton(tr("Take &back"), QDialogButtonBox::ApplyRole);
    take_->setToolTip(tr("Makes pending edits of the checked lines. Nothing is written yet."));
    take_->setDefault(true);
    connect(take_, &QPushButton::clicked, this, [this] { takeBack(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout.addWidget(buttons);
}

void HistoryDialog::setVisible(bool isVisible) {
    if (isVisible && !this->isVisible()) reader_->read();
    LiveDialog::setVisible(isVisible);
}

void HistoryDialog::showSession() {
    const auto& changes = session().changes();
    const std::size_t count = changes.empty() ? 0 : changes.back().number;
    // Somebody has saved: the history has more to tell, perhaps a moment later.
    if (std::exchange(changeCount_, count) != count) reader_->read();
    showChanges();
}

void HistoryDialog::showSaves(const std::vector<QRVHistorySave>& saves, const QString& failure) {
    isRead_ = true;
    failure_ = failure;
    std::set<std::int64_t> selected;
    for (const QModelIndex& index : savesView_->selectionModel()->selectedRows())
        selected.insert(saves_.saveAt(index.row()).id);
    saves_.setSaves(saves);
    QItemSelection selection;
    for (int row = 0; row < saves_.rowCount(); ++row)
        if (selected.contains(saves_.saveAt(row).id))
            selection.select(saves_.index(row, 0), saves_.index(row, saves_.columnCount() - 1));
    if (selection.isEmpty() && saves_.rowCount() > 0)
        savesView_->setCurrentIndex(saves_.index(0, 0));
    else
        savesView_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    showChanges();
}

std::vector<QRVHistorySave> HistoryDialog::chosenSaves() const {
    std::set<int> rows;
    for (const QModelIndex& index : savesView_->selectionModel()->selectedRows())
        rows.insert(index.row());
    std::vector<QRVHistorySave> saves;
    saves.reserve(rows.size());
    for (const int row : rows) saves.push_back(saves_.saveAt(row));
    return Tool::undoableSaves(std::move(saves), session().stored());
}

std::set<std::string> HistoryDialog::conflictsOf(const std::vector<QRVHistorySave>& saves) const {
    std::set<std::string> conflicts;
    if (saves.empty()) return conflicts;
    const QRVHistoryInverse inverse =
        Tool::inverseOfSaves(saves, session().stored(), QRVHistoryConflicts::LeaveOut);
    for (const QRVHistoryConflict& conflict : inverse.conflicts) conflicts.insert(conflict.keyPath);
    return conflicts;
}

void HistoryDialog::showChanges() {
    const std::vector<QRVHistorySave> saves = chosenSaves();
    const std::set<std::string> conflicts = conflictsOf(saves);
    conflictCount_ = conflicts.size();
    std::vector<ChangeLine> lines;
    bool haveProfiles = false;
    for (const auto& [keyPath, change] : changesOf(saves)) {
        const Tool::SettingPlace place = Tool::placeOfStored(keyPath);
        const PropertyListValue now = storedAt(session(), place);
        const KindShown kinds = kindShownFor({change.before, change.after, now});
        const bool isConflict = conflicts.contains(keyPath);
        const QString note = isConflict ? tr("%1 Changed since.").arg(signOf(RowState::Conflict))
                             : valueAsText(now) == valueAsText(change.before)
                                 ? tr("It has the value of before.")
                                 : QString();
        lines.push_back(
            {.place = place,
             .cells = {keyPathCell(place.keyPath), profileCell(place.profile),
                       valueCell(session(), place.keyPath, change.before, kinds),
                       valueCell(session(), place.keyPath, change.after, kinds),
                       valueCell(session(), place.keyPath, now, kinds), wordsCell(note)},
             .isMarked = isConflict});
        haveProfiles = haveProfiles || !place.profile.empty();
    }
    view_->setColumnHidden(Profile, !haveProfiles);
    model_.setLines(std::move(lines));
    showState();
}

QString HistoryDialog::stateText() const {
    if (!failure_.isEmpty()) return failure_;
    if (!isRead_) return tr("The history is read\u2026");
    if (saves_.saves().empty()) return tr("The history has no saves.");
    if (conflictCount_ == 0) return {};
    if (overwrites_->isChecked())
        return tr("What was changed since is taken back, too. Each such line says so.");
    return conflictCount_ == 1 ? tr("1 setting was changed since. It stays as it is.")
                               : tr("%n settings were changed since. They stay as they are.", "",
                                    static_cast<int>(conflictCount_));
}

void HistoryDialog::showState() {
    state_->setText(stateText());
    state_->setVisible(!state_->text().isEmpty());
    overwrites_->setVisible(conflictCount_ > 0);
    take_->setEnabled(!model_.checkedPlaces().empty());
}

void HistoryDialog::takeBack() {
    std::vector<QRVHistorySave> saves = chosenSaves();
    for (QRVHistorySave& save : saves)
        std::erase_if(save.changes, [this](const QRVHistoryChange& change) {
            return !model_.isChecked(Tool::placeOfStored(change.keyPath));
        });
    const auto conflicts =
        overwrites_->isChecked() ? QRVHistoryConflicts::Overwrite : QRVHistoryConflicts::LeaveOut;
    session().edit(Tool::requestsToTakeBack(saves, session().snapshot(), conflicts),
                   tr("Take back saves"));
}

}  // namespace QRVWindow
