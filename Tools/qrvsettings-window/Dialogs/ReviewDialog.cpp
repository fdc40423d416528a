// SPDX-License-Identifier: MIT
#include "Dialogs/ReviewDialog.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>
#include <map>

#include "Dialogs/ChangeView.h"
#include "Dialogs/ValueCells.h"
#include "Edits/EditCommands.h"
#include "Look/Signs.h"
#include "Look/Text.h"
#include "Session/ApplyProgress.h"

namespace QRVWindow {
namespace {

/// The editor of a conflict: whose value is to stand.
class ChoiceDelegate : public QStyledItemDelegate {
  public:
    using Settle = std::function<void(const Tool::SettingPlace&, bool isMine)>;
    ChoiceDelegate(ChangeModel& model, Settle settle, QObject* parent)
        : QStyledItemDelegate(parent), model_(model), settle_(std::move(settle)) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                          const QModelIndex& /*index*/) const override {
        auto* const box = new QComboBox(parent);
        box->addItems({ReviewDialog::tr("not settled"), ReviewDialog::tr("mine"),
                       ReviewDialog::tr("theirs")});
        box->setAccessibleName(ReviewDialog::tr("Whose value stands"));
        auto* const self = const_cast<ChoiceDelegate*>(this);
        connect(box, &QComboBox::activated, self, [self, box] {
            Q_EMIT self->commitData(box);
            Q_EMIT self->closeEditor(box);
        });
        return box;
    }
    void setEditorData(QWidget* /*editor*/, const QModelIndex& /*index*/) const override {}
    void setModelData(QWidget* editor, QAbstractItemModel* /*model*/,
                      const QModelIndex& index) const override {
        const int choice = qobject_cast<QComboBox*>(editor)->currentIndex();
        if (choice > 0) settle_(model_.lineAt(index.row()).place, choice == 1);
    }

  private:
    ChangeModel& model_;
    Settle settle_;
};

QString applyText(std::size_t count) {
    return count == 0 ? ReviewDialog::tr("&Apply")
                      : ReviewDialog::tr("&Apply %1").arg(QLocale().toString(qulonglong{count}));
}

QStringList headers() {
    return {ReviewDialog::tr("Setting"),         ReviewDialog::tr("Profile"),
            ReviewDialog::tr("In the file now"), ReviewDialog::tr("What you saw"),
            ReviewDialog::tr("Will be"),         ReviewDialog::tr("Note"),
            ReviewDialog::tr("Whose value")};
}

}  // namespace

ReviewDialog::ReviewDialog(Session& theSession, QWidget* parent)
    : LiveDialog(theSession, parent), model_(headers(), this) {
    setWindowTitle(tr("Review pending edits"));
    setObjectName(QStringLiteral("reviewDialog"));
    model_.setEditableColumn(Choice);
    progress_ = new ApplyProgress(session(), this);
    arrange();
    connect(progress_, &ApplyProgress::changed, this, [this] { showState(); });
    connect(progress_, &ApplyProgress::ended, this, [this] { announce(state_); });
    connect(&model_, &ChangeModel::checkedChanged, this, [this] { showState(); });
    connect(view_, &ChangeView::selectionChangedByAnyone, this, [this] { showState(); });
    view_->setFocus();
}

void ReviewDialog::arrange() {
    auto* const layout = new QVBoxLayout(this);
    summary_ = makeLabel(QStringLiteral("reviewSummary"));
    layout->addWidget(summary_);
    view_ = new ChangeView(model_, this);
    view_->setAccessibleName(tr("Pending edits"));
    view_->setItemDelegateForColumn(Choice,
                                    new ChoiceDelegate(
                                        model_,
                                        [this](const Tool::SettingPlace& place, bool isMine) {
                                            if (isMine)
                                                session().keepMine(place);
                                            else
                                                session().takeTheirs(place);
                                        },
                                        this));
    layout->addWidget(view_, 1);
    auto* const row = new QHBoxLayout;
    row->addWidget(makeCheckBoxForAll(model_, this));
    row->addStretch(1);
    mine_ = new QPushButton(tr("Keep &mine"), this);
    theirs_ = new QPushButton(tr("Take &theirs"), this);
    connect(mine_, &QPushButton::clicked, this, [this] { settle(true); });
    connect(theirs_, &QPushButton::clicked, this, [this] { settle(false); });
    row->addWidget(mine_);
    row->addWidget(theirs_);
    layout->addLayout(row);
    state_ = makeLabel(QStringLiteral("reviewState"));
    layout->addWidget(state_);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    makeButtons(*buttons);
    layout->addWidget(buttons);
}

void ReviewDialog::makeButtons(QDialogButtonBox& buttons) {
    copy_ = buttons.addButton(tr("&Copy as commands"), QDialogButtonBox::ActionRole);
    discard_ = buttons.addButton(tr("&Discard checked"), QDialogButtonBox::ActionRole);
    stop_ = buttons.addButton(tr("&Stop"), QDialogButtonBox::ActionRole);
    apply_ = buttons.addButton(applyText(0), QDialogButtonBox::ApplyRole);
    apply_->setDefault(true);
    for (QPushButton* const button : {copy_, discard_, stop_, mine_, theirs_})
        button->setAutoDefault(false);
    connect(copy_, &QPushButton::clicked, this, [this] { copyCommands(); });
    connect(discard_, &QPushButton::clicked, this,
            [this] { session().discard(model_.checkedPlaces()); });
    connect(stop_, &QPushButton::clicked, this, [this] { session().stopApplying(); });
    connect(apply_, &QPushButton::clicked, this, [this] { apply(); });
    connect(&buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto* const shortcut = new QAction(this);
    shortcut->setShortcuts(
        {QKeySequence(Qt::CTRL | Qt::Key_Return), QKeySequence(Qt::CTRL | Qt::Key_Enter)});
    connect(shortcut, &QAction::triggered, this, [this] { apply_->click(); });
    addAction(shortcut);
}

QString ReviewDialog::noteOn(const Tool::PendingEdit& edit, const PropertyListValue& inFile) const {
    if (valueAsText(inFile) == valueAsText(edit.value)) return tr("The file already holds it.");
    if (edit.value.isNull()) return {};
    return fromText(objections_->toValue(edit.place.storedKeyPath(), edit.value));
}

ChangeLine ReviewDialog::lineOf(const Tool::PendingEdit& edit,
                                const Tool::EditConflict* conflict) const {
    const PropertyListValue inFile = storedAt(session(), edit.place);
    const KindShown kinds = kindShownFor({inFile, edit.base, edit.value});
    const std::string& keyPath = edit.place.keyPath;
    const QString note = conflict == nullptr
                             ? noteOn(edit, inFile)
                             : tr("%1 Another process changed it since you edited it.")
                                   .arg(signOf(RowState::Conflict));
    return {.place = edit.place,
            .cells = {keyPathCell(keyPath), profileCell(edit.place.profile),
                      valueCell(session(), keyPath, inFile, kinds),
                      valueCell(session(), keyPath, edit.base, kinds),
                      resultCell(session(), edit.place, edit.value, kinds), wordsCell(note),
                      wordsCell(conflict == nullptr ? QString() : tr("not settled"))},
            .isMarked = conflict != nullptr};
}

void ReviewDialog::showSession() {
    if (!objections_) objections_.emplace();
    const std::vector<Tool::EditConflict> conflicts = session().conflicts();
    std::map<Tool::SettingPlace, const Tool::EditConflict*> byPlace;
    conflicts_.clear();
    for (const Tool::EditConflict& conflict : conflicts) {
        byPlace[conflict.edit.place] = &conflict;
        conflicts_.insert(conflict.edit.place);
    }
    std::vector<ChangeLine> lines;
    bool haveProfiles = false;
    for (const auto& [place, edit] : session().pending().edits()) {
        const auto found = byPlace.find(place);
        lines.push_back(lineOf(edit, found == byPlace.end() ? nullptr : found->second));
        haveProfiles = haveProfiles || !place.profile.empty();
    }
    view_->setColumnHidden(Profile, !haveProfiles);
    view_->setColumnHidden(Choice, conflicts.empty());
    model_.setLines(std::move(lines));
    model_.forgetMarksOfOthers();
    selectConflict();
    showState();
}

/// So that it can be settled at once.
void ReviewDialog::selectConflict() {
    if (conflicts_.empty() || !view_->selectedPlaces().empty()) return;
    const int row = model_.rowOf(*conflicts_.begin());
    if (row >= 0) view_->setCurrentIndex(model_.index(row, 0));
}

std::vector<Tool::SettingPlace> ReviewDialog::applicablePlaces() const {
    std::vector<Tool::SettingPlace> places = model_.checkedPlaces();
    std::erase_if(places, [this](const auto& place) { return conflicts_.contains(place); });
    return places;
}

std::vector<Tool::SettingPlace> ReviewDialog::selectedConflicts() const {
    std::vector<Tool::SettingPlace> places = view_->selectedPlaces();
    std::erase_if(places, [this](const auto& place) { return !conflicts_.contains(place); });
    return places;
}

QString ReviewDialog::stateText(std::size_t unsettled) const {
    QStringList lines = {progress_->line(), progress_->details()};
    const FileState& file = session().fileState();
    if (!file.isWritable() && !model_.lines().empty())
        lines.append(
            tr("Cannot be applied: %1").arg(file.readOnly.isEmpty() ? file.fault : file.readOnly));
    if (unsettled == 1)
        lines.append(
            tr("1 conflict is not settled: it stays pending. Keep your value or take "
               "theirs."));
    else if (unsettled > 1)
        lines.append(
            tr("%n conflicts are not settled: they stay pending. Keep your values or take "
               "theirs.",
               "", static_cast<int>(unsettled)));
    // A list has little room for a sentence.
    const auto selected = view_->selectedPlaces();
    if (selected.size() == 1 && !conflicts_.contains(selected.front()))
        lines.append(model_.lineAt(model_.rowOf(selected.front())).cells[Note].text);
    lines.removeAll(QString());
    return lines.join(QLatin1Char('\n'));
}

void ReviewDialog::showState() {
    const std::size_t count = model_.lines().size();
    summary_->setText(count == 0   ? tr("Nothing is pending.")
                      : count == 1 ? tr("1 setting is pending. One save brings it into the file.")
                                   : tr("%n settings are pending. One save brings those that are "
                                        "checked into the file.",
                                        "", static_cast<int>(count)));
    state_->setText(stateText(conflicts_.size()));
    state_->setVisible(!state_->text().isEmpty());
    const bool isApplying = session().isApplying();
    const std::size_t applicable = applicablePlaces().size();
    const bool isAnyChecked = !model_.checkedPlaces().empty();
    apply_->setText(applyText(applicable));
    apply_->setEnabled(applicable > 0 && !isApplying && session().fileState().isWritable());
    copy_->setEnabled(isAnyChecked);
    discard_->setEnabled(isAnyChecked && !isApplying);
    stop_->setVisible(isApplying);
    const bool canSettle = !selectedConflicts().empty() && !isApplying;
    mine_->setVisible(!conflicts_.empty());
    theirs_->setVisible(!conflicts_.empty());
    mine_->setEnabled(canSettle);
    theirs_->setEnabled(canSettle);
}

void ReviewDialog::settle(bool isMine) {
    for (const Tool::SettingPlace& place : selectedConflicts()) {
        if (isMine)
            session().keepMine(place);
        else
            session().takeTheirs(place);
    }
}

void ReviewDialog::apply() {
    const std::vector<Tool::SettingPlace> places = applicablePlaces();
    // Without places it would be all edits, also those that are not checked.
    if (!places.empty()) session().apply({.places = places});
}

void ReviewDialog::copyCommands() {
    std::vector<Tool::PendingEdit> edits;
    for (const Tool::SettingPlace& place : model_.checkedPlaces())
        if (const Tool::PendingEdit* const edit = session().pending().at(place))
            edits.push_back(*edit);
    QApplication::clipboard()->setText(fromText(Tool::commandsOfEdits(edits)));
}

void ReviewDialog::reveal(const Tool::SettingPlace& place) {
    showSession();
    const int row = model_.rowOf(place);
    if (row < 0) return;
    view_->setCurrentIndex(model_.index(row, 0));
    view_->scrollTo(model_.index(row, 0));
}

}  // namespace QRVWindow
