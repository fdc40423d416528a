// SPDX-License-Identifier: MIT
#include "Panes/DetailsPane.h"

#include <QApplication>
#include <QClipboard>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <algorithm>

#include "Edits/EditCommands.h"
#include "Look/Text.h"
#include "Panes/FactText.h"
#include "Panes/HistoryList.h"
#include "Panes/SwatchLabel.h"
#include "Text/KeyPaths.h"

namespace QRVWindow {
namespace {

using About = SettingFact::About;

enum GridColumn { NameColumn, SwatchColumn, TextColumn, ButtonColumn };
/// Facts lie between the head and what follows them.
constexpr int firstFactRow = 1;
constexpr int commandNameRow = firstFactRow + SettingFact::aboutCount;
constexpr int commandRow = commandNameRow + 1;
constexpr int actionsRow = commandRow + 1;
constexpr int historyNameRow = actionsRow + 1;
constexpr int historyRow = historyNameRow + 1;
constexpr int lastRow = historyRow + 1;

QStringList textsOf(const std::vector<std::string>& keyPaths) {
    QStringList texts;
    for (const std::string& keyPath : keyPaths) texts.append(fromText(keyPath));
    return texts;
}

bool contains(const std::vector<std::string>& sorted, const std::string& keyPath) {
    return std::find(sorted.begin(), sorted.end(), keyPath) != sorted.end();
}

QLabel* makeName(const QString& text, QWidget* parent) {
    auto* const name = new QLabel(text, parent);
    name->setTextFormat(Qt::PlainText);
    name->setAlignment(Qt::AlignTop | Qt::AlignLeading);
    name->setContentsMargins(0, 2, 0, 0);
    return name;
}

QPushButton* makeCopyButton(const QString& accessibleName, const FactText* text, QWidget* parent) {
    auto* const button = new QPushButton(DetailsPane::tr("Copy"), parent);
    button->setAccessibleName(accessibleName);
    QObject::connect(button, &QPushButton::clicked, text,
                     [text] { QApplication::clipboard()->setText(text->toPlainText()); });
    return button;
}

}  // namespace

DetailsPane::DetailsPane(Session& session, QWidget* parent)
    : QScrollArea(parent), session_(session) {
    setAccessibleName(tr("Details"));
    setWidgetResizable(true);
    setFrameStyle(QFrame::NoFrame);
    auto* const page = new QWidget;
    grid_ = new QGridLayout(page);
    grid_->setColumnStretch(TextColumn, 1);
    grid_->setRowStretch(lastRow, 1);
    nothing_ = makeName(tr("No setting is chosen."), page);
    grid_->addWidget(nothing_, lastRow, 0, 1, ButtonColumn + 1);
    makeHeader(grid_);
    makeCommand(grid_);
    makeActions(grid_);
    makeHistory(grid_);
    setWidget(page);
    followSession();
    refresh();
}

void DetailsPane::makeHeader(QGridLayout* grid) {
    head_ = new FactText(this);
    head_->setAccessibleName(tr("Key path"));
    QFont font = head_->font();
    font.setBold(true);
    head_->setFont(font);
    copyHead_ = makeCopyButton(tr("Copy the key path"), head_, this);
    grid->addWidget(head_, 0, 0, 1, ButtonColumn);
    grid->addWidget(copyHead_, 0, ButtonColumn, Qt::AlignTop);
}

void DetailsPane::makeCommand(QGridLayout* grid) {
    commandName_ = makeName(tr("Command"), this);
    command_ = new FactText(this);
    command_->setAccessibleName(tr("Command that sets it"));
    command_->setFont(codeFont());
    copyCommand_ = makeCopyButton(tr("Copy the command"), command_, this);
    grid->addWidget(commandName_, commandNameRow, 0, 1, ButtonColumn + 1);
    grid->addWidget(command_, commandRow, 0, 1, ButtonColumn);
    grid->addWidget(copyCommand_, commandRow, ButtonColumn, Qt::AlignTop);
}

void DetailsPane::makeActions(QGridLayout* grid) {
    actions_ = new QWidget(this);
    auto* const layout = new QHBoxLayout(actions_);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const reset = new QPushButton(tr("Back to defaults"), actions_);
    auto* const copy = new QPushButton(tr("Copy as commands"), actions_);
    layout->addWidget(reset);
    layout->addWidget(copy);
    layout->addStretch();
    connect(reset, &QPushButton::clicked, this, [this] { Q_EMIT resetWanted(textsOf(keyPaths_)); });
    connect(copy, &QPushButton::clicked, this,
            [this] { Q_EMIT copyCommandsWanted(textsOf(keyPaths_)); });
    grid->addWidget(actions_, actionsRow, 0, 1, ButtonColumn + 1);
}

void DetailsPane::makeHistory(QGridLayout* grid) {
    historyName_ = makeName(tr("Last changes"), this);
    history_ = new HistoryList(this);
    grid->addWidget(historyName_, historyNameRow, 0, 1, ButtonColumn + 1);
    grid->addWidget(history_, historyRow, 0, 1, ButtonColumn + 1);
    connect(history_, &HistoryList::takeBackWanted, this, &DetailsPane::takeBackWanted);
    connect(history_, &HistoryList::shown, this, &DetailsPane::historyShown);
}

void DetailsPane::followSession() {
    connect(&session_, &Session::tableChanged, this, &DetailsPane::followTable);
    connect(&session_, &Session::tableReset, this, [this] {
        if (!level_.empty()) keyPaths_ = keyPathsBelow(session_, level_);
        refresh();
        showHistory();
    });
    connect(&session_, &Session::pendingChanged, this, [this] { refresh(); });
    connect(&session_, &Session::profilesChanged, this, [this] { refresh(); });
    connect(&session_, &Session::marksChanged, this, &DetailsPane::followMarks);
    connect(&session_, &Session::changesChanged, this, &DetailsPane::followMarks);
    connect(&session_, &Session::applied, this, &DetailsPane::lookAgain);
}

void DetailsPane::setKeyPath(const std::string& keyPath) {
    std::vector<std::string> below;
    if (!keyPath.empty() && session_.table().at(keyPath) == nullptr)
        below = keyPathsBelow(session_, keyPath);
    level_ = below.empty() ? "" : keyPath;
    keyPaths_ = std::move(below);
    if (level_.empty() && !keyPath.empty()) keyPaths_ = {keyPath};
    refresh();
    showHistory();
}

void DetailsPane::setKeyPaths(const std::vector<std::string>& keyPaths) {
    if (keyPaths.size() < 2) {
        setKeyPath(keyPaths.empty() ? "" : keyPaths.front());
        return;
    }
    level_.clear();
    keyPaths_ = keyPaths;
    refresh();
    showHistory();
}

void DetailsPane::followTable(const Tool::SettingsTable::Change& change) {
    const bool hasOtherRows = !change.added.empty() || !change.removed.empty();
    if (!level_.empty() && hasOtherRows) keyPaths_ = keyPathsBelow(session_, level_);
    const bool isConcerned =
        hasOtherRows || std::any_of(keyPaths_.begin(), keyPaths_.end(), [&change](const auto& one) {
            return contains(change.changed, one);
        });
    if (!isConcerned) return;
    refresh();
    lookAgain();
}

void DetailsPane::followMarks() {
    if (!isSetting()) return;
    refresh();
    const LiveChange* const live = session_.liveChangeOf(keyPaths_.front());
    if (live == nullptr || (live->number == lastLive_ && live->program == lastProgram_)) return;
    lastLive_ = live->number;
    lastProgram_ = live->program;
    lookAgain();
}

void DetailsPane::lookAgain() {
    if (isVisible() && isSetting()) history_->lookAgain();
}

void DetailsPane::refresh() {
    isStale_ = !isVisible();
    if (isStale_) return;
    const bool hasAny = !keyPaths_.empty();
    nothing_->setVisible(!hasAny);
    showHead();
    SettingFacts facts;
    if (isSetting())
        facts = factsOfSetting(session_, keyPaths_.front());
    else if (hasAny)
        facts = factsOfRows(session_, keyPaths_);
    showFacts(facts);
    showCommand();
    actions_->setVisible(hasAny && !isSetting());
}

void DetailsPane::showEvent(QShowEvent* event) {
    QScrollArea::showEvent(event);
    if (!isStale_) return;
    refresh();
    showHistory();
    lookAgain();
}

void DetailsPane::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    fitNames();
}

void DetailsPane::changeEvent(QEvent* event) {
    QScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange) fitNames();
}

void DetailsPane::fitNames() {
    int width = 0;
    for (const Row& row : rows_)
        if (row.name != nullptr && !row.name->isHidden())
            width = std::max(width, row.name->fontMetrics().horizontalAdvance(row.name->text()));
    // Long names wrap rather than push their values aside.
    grid_->setColumnMinimumWidth(NameColumn, std::min(width + 1, viewport()->width() * 2 / 5));
}

void DetailsPane::showHead() {
    const bool hasHead = isSetting() || !level_.empty();
    if (hasHead)
        head_->setFact(fromText(level_.empty() ? keyPaths_.front() : level_), true);
    else if (!keyPaths_.empty())
        head_->setFact(tr("%n settings", "", static_cast<int>(keyPaths_.size())), false);
    head_->setVisible(!keyPaths_.empty());
    copyHead_->setVisible(hasHead);
}

void DetailsPane::showFacts(const SettingFacts& facts) {
    std::array<bool, SettingFact::aboutCount> isShown{};
    for (const SettingFact& fact : facts) {
        Row& row = rowAbout(fact.about);
        isShown[static_cast<std::size_t>(fact.about)] = true;
        row.name->setText(fact.name);
        row.text->setAccessibleName(fact.name);
        row.text->setFact(fact.text, fact.isCode);
        row.swatch->setVisible(fact.color.isColor());
        if (fact.color.isColor()) row.swatch->setColor(fact.color.color());
    }
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].name == nullptr) continue;
        rows_[i].name->setVisible(isShown[i]);
        rows_[i].text->setVisible(isShown[i]);
        if (!isShown[i]) rows_[i].swatch->hide();
    }
    fitNames();
}

DetailsPane::Row& DetailsPane::rowAbout(SettingFact::About about) {
    const auto index = static_cast<std::size_t>(about);
    Row& row = rows_[index];
    if (row.name != nullptr) return row;
    QWidget* const page = widget();
    row = {makeName(QString(), page), new SwatchLabel(page), new FactText(page)};
    row.name->setWordWrap(true);
    row.name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    const int line = firstFactRow + static_cast<int>(index);
    grid_->addWidget(row.name, line, NameColumn);
    grid_->addWidget(row.swatch, line, SwatchColumn, Qt::AlignTop);
    grid_->addWidget(row.text, line, TextColumn, 1, 2, Qt::AlignTop);
    // Facts appear in any order, and are read in theirs.
    QWidget* before = copyHead_;
    for (const Row& one : rows_) {
        if (one.text == nullptr) continue;
        setTabOrder(before, one.text);
        before = one.text;
    }
    return row;
}

void DetailsPane::showCommand() {
    QString text;
    if (isSetting()) {
        const std::string& keyPath = keyPaths_.front();
        const bool isPending = session_.pendingAt(keyPath) != nullptr;
        text = fromText(Tool::commandOfSetting(
            session_.placeOf(keyPath),
            isPending ? session_.pending().appliedTo(session_.stored()) : session_.stored(),
            session_.valueWithEdits(keyPath)));
    }
    for (QWidget* const widget :
         {static_cast<QWidget*>(commandName_), static_cast<QWidget*>(command_),
          static_cast<QWidget*>(copyCommand_)})
        widget->setVisible(!text.isEmpty());
    command_->setFact(text, true);
}

void DetailsPane::showHistory() {
    if (isStale_) return;
    historyName_->setVisible(isSetting());
    history_->setVisible(isSetting());
    if (isSetting())
        history_->setStoredKeyPath(session_.placeOf(keyPaths_.front()).storedKeyPath());
}

QString DetailsPane::textAbout(SettingFact::About about) const {
    const Row& row = rows_[static_cast<std::size_t>(about)];
    return row.text == nullptr || row.text->isHidden() ? QString() : row.text->toPlainText();
}

QString DetailsPane::command() const {
    return command_->toPlainText();
}

QStringList DetailsPane::historyLines() const {
    return history_->lines();
}

}  // namespace QRVWindow
