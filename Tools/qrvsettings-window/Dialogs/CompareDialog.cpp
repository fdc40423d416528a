// SPDX-License-Identifier: MIT
#include "Dialogs/CompareDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>

#include "Dialogs/ChangeView.h"
#include "Dialogs/HistoryDialog.h"
#include "Dialogs/SettingsFile.h"
#include "Dialogs/ValueCells.h"
#include "Edits/EditCommands.h"
#include "Look/Text.h"
#include "Text/PastTime.h"

namespace QRVWindow {
namespace {

QString signText(Tool::ComparedSetting::Sign sign) {
    switch (sign) {
        case Tool::ComparedSetting::Sign::OnlyHere:
            return CompareDialog::tr("only here");
        case Tool::ComparedSetting::Sign::OnlyThere:
            return CompareDialog::tr("only there");
        default:
            return CompareDialog::tr("differs");
    }
}

bool isLetThrough(const ChangeLine& line, const QString& filter) {
    return filter.isEmpty() ||
           std::any_of(line.cells.begin(), line.cells.end(), [&filter](const ChangeCell& cell) {
               return cell.text.contains(filter, Qt::CaseInsensitive);
           });
}

QStringList headers() {
    return {CompareDialog::tr("Setting"), CompareDialog::tr("Difference"),
            CompareDialog::tr("Here"), CompareDialog::tr("There")};
}

}  // namespace

CompareDialog::CompareDialog(Session& theSession, QWidget* parent)
    : LiveDialog(theSession, parent),
      model_(headers(), this, ChangeModel::AtFirst::Unchecked),
      saves_(this) {
    setWindowTitle(tr("Compare settings"));
    setObjectName(QStringLiteral("compareDialog"));
    reader_ = new SavesReader(this);
    arrange();
    connect(reader_, &SavesReader::ended, this,
            [this](const auto& saves, const QString& failure) { showMoments(saves, failure); });
    connect(&model_, &ChangeModel::checkedChanged, this, [this] { showState(); });
    connect(filter_, &QLineEdit::textChanged, this, [this] { showSession(); });
    connect(time_, &QLineEdit::textChanged, this, [this] { showSession(); });
    connect(savesView_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { showSession(); });
    connect(sides_, &QComboBox::currentIndexChanged, this, [this] { followChoice(); });
    fillSides();
}

void CompareDialog::arrange() {
    auto* const layout = new QVBoxLayout(this);
    auto* const form = new QFormLayout;
    auto* const row = new QHBoxLayout;
    sides_ = new QComboBox(this);
    sides_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    sides_->setObjectName(QStringLiteral("compareSide"));
    browse_ = new QPushButton(tr("&Browse\u2026"), this);
    browse_->setAutoDefault(false);
    connect(browse_, &QPushButton::clicked, this, [this] { chooseFile(); });
    row->addWidget(sides_, 1);
    row->addWidget(browse_);
    form->addRow(tr("Compare &with:"), row);
    static_cast<QLabel*>(form->labelForField(row))->setBuddy(sides_);
    layout->addLayout(form);
    momentPart_ = makeMomentPart();
    layout->addWidget(momentPart_, 1);
    filter_ = new QLineEdit(this);
    filter_->setClearButtonEnabled(true);
    filter_->setPlaceholderText(tr("Filter by setting or value"));
    filter_->setAccessibleName(tr("Filter"));
    layout->addWidget(filter_);
    view_ = new ChangeView(model_, this);
    view_->setAccessibleName(tr("Differences"));
    layout->addWidget(view_, 2);
    layout->addWidget(makeCheckBoxForAll(model_, this));
    state_ = makeLabel(QStringLiteral("compareState"));
    layout->addWidget(state_);
    makeButtons(*layout);
}

QWidget* CompareDialog::makeMomentPart() {
    auto* const part = new QWidget(this);
    auto* const layout = new QFormLayout(part);
    layout->setContentsMargins({});
    time_ = new QLineEdit(part);
    time_->setObjectName(QStringLiteral("compareTime"));
    time_->setPlaceholderText(tr("10 minutes ago, yesterday, 09:30, 2026-11-22 09:30"));
    time_->setClearButtonEnabled(true);
    layout->addRow(tr("As it was at this &time:"), time_);
    savesView_ = makeSavesView(saves_, part);
    savesView_->setObjectName(QStringLiteral("compareSaves"));
    layout->addRow(tr("Or before this &save:"), savesView_);
    auto* const history = new QPushButton(tr("Take bac&k saves\u2026"), part);
    history->setAutoDefault(false);
    connect(history, &QPushButton::clicked, this, [this] {
        auto* const dialog = new HistoryDialog(session(), parentWidget());
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->show();
    });
    layout->addRow(QString(), history);
    return part;
}

void CompareDialog::makeButtons(QLayout& layout) {
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    copy_ = buttons->addButton(tr("&Copy as commands"), QDialogButtonBox::ActionRole);
    take_ = buttons->addButton(tr("&Take their values"), QDialogButtonBox::ApplyRole);
    copy_->setAutoDefault(false);
    copy_->setToolTip(tr("Commands that take their values for the checked lines"));
    take_->setToolTip(tr("Makes pending edits of the checked lines. Nothing is written yet."));
    take_->setDefault(true);
    connect(copy_, &QPushButton::clicked, this, [this] { copyCommands(); });
    connect(take_, &QPushButton::clicked, this, [this] { take(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout.addWidget(buttons);
}

void CompareDialog::fillSides() {
    const QVariant chosen = sides_->currentData();
    const QString chosenText = sides_->currentText();
    const QSignalBlocker blocker(sides_);
    sides_->clear();
    const auto add = [this](const QString& text, Side side, const QString& profile = QString()) {
        sides_->addItem(text, QVariantList{static_cast<int>(side), profile});
    };
    add(tr("Defaults"), Side::Defaults);
    if (!session().profile().isEmpty()) add(tr("Settings of the application"), Side::Application);
    for (const QString& profile : session().profileNames())
        if (profile != session().profile())
            add(tr("Profile %1").arg(profile), Side::Profile, profile);
    add(tr("The settings when the window started"), Side::AtStart);
    add(tr("A moment of the history"), Side::Moment);
    add(filePath_.isEmpty() ? tr("Another file")
                            : tr("File %1").arg(leftToRight(QFileInfo(filePath_).fileName())),
        Side::File);
    const int index = sides_->findData(chosen);
    sides_->setCurrentIndex(std::max(index, 0));
}

CompareDialog::Side CompareDialog::side() const {
    return static_cast<Side>(sides_->currentData().toList().value(0).toInt());
}

void CompareDialog::compareWith(Side side, const QString& profile) {
    fillSides();
    const int index = sides_->findData(QVariantList{static_cast<int>(side), profile});
    if (index >= 0) sides_->setCurrentIndex(index);
}

void CompareDialog::compareWithFile(const QString& path) {
    filePath_ = path;
    const SettingsFile file = readSettingsFile(path);
    fileTree_ = file.settings;
    fileFault_ = file.fault;
    compareWith(Side::File);
    showSession();
}

void CompareDialog::chooseFile() {
    const QString path = QFileDialog::getOpenFileName(this, tr("Compare with a file"), filePath_);
    if (!path.isEmpty()) compareWithFile(path);
}

void CompareDialog::followChoice() {
    if (side() == Side::Moment && saves_.saves().empty()) reader_->read();
    if (side() == Side::File && filePath_.isEmpty())
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (isVisible()) chooseFile();
            },
            Qt::QueuedConnection);
    showSession();
}

void CompareDialog::showMoments(const std::vector<QRVHistorySave>& saves, const QString& failure) {
    historyFault_ = failure;
    saves_.setSaves(saves);
    if (saves_.rowCount() > 0) savesView_->setCurrentIndex(saves_.index(0, 0));
    showSession();
}

CompareDialog::Comparison CompareDialog::comparisonWithTree(const NSDictionary& other) const {
    const std::string profile = toText(session().profile());
    return {Tool::comparedWithTree(Tool::treeOfScope(session().stored(), profile),
                                   Tool::treeOfScope(other, profile)),
            {}};
}

CompareDialog::Comparison CompareDialog::comparisonWithMoment() const {
    if (!historyFault_.isEmpty()) return {{}, historyFault_};
    const std::string text = toText(time_->text().trimmed());
    if (!text.empty()) {
        const auto time = Tool::pastTimeFromText(text, NSDate::now());
        if (!time) return {{}, fromText(Tool::objectionToPastTime(text))};
        return comparisonWithTree(Tool::treeBefore(saves_.savesSince(*time), session().stored()));
    }
    const QModelIndex chosen = savesView_->currentIndex();
    if (!chosen.isValid()) return {{}, tr("The history has no saves.")};
    return comparisonWithTree(Tool::treeBefore(saves_.savesFrom(chosen.row()), session().stored()));
}

CompareDialog::Comparison CompareDialog::comparison() const {
    const std::string profile = toText(session().profile());
    const std::string other = toText(sides_->currentData().toList().value(1).toString());
    switch (side()) {
        case Side::Defaults:
            return {Tool::comparedWithDefaults(session().snapshot(), profile), {}};
        case Side::Application:
        case Side::Profile:
            return {Tool::comparedWithProfile(session().snapshot(), profile, other), {}};
        case Side::AtStart:
            return comparisonWithTree(session().storedAtStart());
        case Side::File:
            if (filePath_.isEmpty()) return {{}, tr("No file is chosen.")};
            return fileFault_.isEmpty() ? comparisonWithTree(fileTree_)
                                        : Comparison{{}, fileFault_};
        default:
            return comparisonWithMoment();
    }
}

ChangeLine CompareDialog::lineOf(const Tool::ComparedSetting& setting) const {
    const KindShown kinds = kindShownFor({setting.here, setting.there});
    return {.place = session().placeOf(setting.keyPath),
            .cells = {keyPathCell(setting.keyPath), wordsCell(signText(setting.sign)),
                      valueCell(session(), setting.keyPath, setting.here, kinds),
                      valueCell(session(), setting.keyPath, setting.there, kinds)}};
}

void CompareDialog::showSession() {
    fillSides();
    browse_->setVisible(side() == Side::File);
    momentPart_->setVisible(side() == Side::Moment);
    Comparison compared = comparison();
    fault_ = compared.fault;
    differenceCount_ = compared.settings.size();
    settings_.clear();
    std::vector<ChangeLine> lines;
    const QString filter = filter_->text().trimmed();
    for (Tool::ComparedSetting& setting : compared.settings) {
        ChangeLine line = lineOf(setting);
        if (!isLetThrough(line, filter)) continue;
        lines.push_back(std::move(line));
        settings_.push_back(std::move(setting));
    }
    model_.setLines(std::move(lines));
    showState();
}

QString CompareDialog::stateText() const {
    if (!fault_.isEmpty()) return fault_;
    const std::size_t shown = settings_.size();
    if (differenceCount_ == 0) return tr("Both sides are equal.");
    if (shown < differenceCount_)
        return tr("The filter shows %1 of %2 differences.")
            .arg(QLocale().toString(qulonglong{shown}),
                 QLocale().toString(qulonglong{differenceCount_}));
    return shown == 1 ? tr("1 difference.") : tr("%n differences.", "", static_cast<int>(shown));
}

void CompareDialog::showState() {
    state_->setText(stateText());
    const bool isAnyChecked = !model_.checkedPlaces().empty();
    take_->setEnabled(isAnyChecked);
    copy_->setEnabled(isAnyChecked);
}

std::vector<Tool::ComparedSetting> CompareDialog::checkedSettings() const {
    std::vector<Tool::ComparedSetting> chosen;
    for (std::size_t index = 0; index < settings_.size(); ++index)
        if (model_.isChecked(model_.lines()[index].place)) chosen.push_back(settings_[index]);
    return chosen;
}

void CompareDialog::take() {
    session().edit(
        Tool::requestsToTake(checkedSettings(), toText(session().profile()), session().snapshot()),
        tr("Take values of the other side"));
}

void CompareDialog::copyCommands() {
    std::vector<Tool::PendingEdit> edits;
    for (const Tool::ComparedSetting& setting : checkedSettings())
        edits.push_back({.place = session().placeOf(setting.keyPath),
                         .base = setting.here,
                         .value = side() == Side::Defaults ? nullptr : setting.there});
    QApplication::clipboard()->setText(fromText(Tool::commandsOfEdits(edits)));
}

}  // namespace QRVWindow
