// SPDX-License-Identifier: MIT
#include "Table/FilterBar.h"

#include <QAbstractItemView>
#include <QAction>
#include <QBoxLayout>
#include <QCheckBox>
#include <QCompleter>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSignalBlocker>
#include <QStringListModel>
#include <QTimer>
#include <QToolButton>

#include "Look/Signs.h"
#include "Look/Text.h"
#include "Rows/RowFilter.h"
#include "Table/FilterWords.h"

namespace QRVWindow {
namespace {

const QString modifiedWord = QStringLiteral("is:modified");
const QString liveWord = QStringLiteral("is:live");
constexpr int announcementDelay = 500;  // milliseconds

}  // namespace

FilterBar::FilterBar(RowModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      field_(new QLineEdit(this)),
      completer_(new QCompleter(this)),
      historyButton_(new QToolButton(this)),
      historyMenu_(new QMenu(this)),
      modified_(makeBox(modifiedWord)),
      records_(new QCheckBox(this)),
      live_(makeBox(liveWord)),
      count_(new QLabel(this)),
      faults_(new QLabel(this)),
      focusAction_(new QAction(tr("Filter"), this)),
      announcement_(new QTimer(this)) {
    setUpField();
    setUpHistory();
    setUpLayout();
    connect(records_, &QCheckBox::toggled, this,
            [this](bool isOn) { model_.setShowsRecords(isOn); });
    records_->setToolTip(tr("What the store itself keeps, such as the name of this machine"));
    announcement_->setSingleShot(true);
    announcement_->setInterval(announcementDelay);
    connect(announcement_, &QTimer::timeout, this,
            [this] { count_->setAccessibleName(count_->text()); });
    connect(&model_, &RowModel::countsChanged, this, &FilterBar::showCounts);
    showCounts();
    showFaults();
}

FilterBar::~FilterBar() = default;

void FilterBar::setUpField() {
    field_->setPlaceholderText(tr("Words of a name or value, or for example: %1")
                                   .arg(QStringLiteral("color is:modified layer:stored")));
    field_->setClearButtonEnabled(true);
    field_->setAccessibleName(tr("Filter"));
    field_->setText(model_.filter());
    field_->installEventFilter(this);
    connect(field_, &QLineEdit::textChanged, this, &FilterBar::takeText);
    connect(field_, &QLineEdit::textEdited, this, &FilterBar::complete);

    QStringList words;
    for (const std::string& word : Tool::RowFilter::wordsWithMeaning())
        words.append(fromText(word));
    completer_->setModel(new QStringListModel(words, completer_));
    completer_->setCaseSensitivity(Qt::CaseInsensitive);
    completer_->setWidget(field_);
    connect(completer_, qOverload<const QString&>(&QCompleter::activated), this,
            &FilterBar::takeCompletion);

    focusAction_->setShortcuts({QKeySequence(Qt::Key_Slash), QKeySequence(Qt::CTRL | Qt::Key_F)});
    connect(focusAction_, &QAction::triggered, this, &FilterBar::focusField);
    addAction(focusAction_);
}

void FilterBar::setUpHistory() {
    historyButton_->setText(tr("History"));
    historyButton_->setToolTip(tr("Filters of before (Alt+Down)"));
    historyButton_->setAccessibleName(tr("History of filters"));
    historyButton_->setMenu(historyMenu_);
    historyButton_->setPopupMode(QToolButton::InstantPopup);
    historyButton_->setFocusPolicy(Qt::TabFocus);
    historyButton_->setEnabled(false);
    connect(historyMenu_, &QMenu::aboutToShow, this, &FilterBar::fillHistoryMenu);
}

void FilterBar::setUpLayout() {
    auto* label = new QLabel(tr("F&ilter:"), this);
    label->setBuddy(field_);
    auto* row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(field_, 1);
    for (QWidget* widget : {static_cast<QWidget*>(historyButton_), static_cast<QWidget*>(modified_),
                            static_cast<QWidget*>(records_), static_cast<QWidget*>(live_),
                            static_cast<QWidget*>(count_)})
        row->addWidget(widget);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addLayout(row);
    all->addWidget(faults_);
    faults_->setTextFormat(Qt::PlainText);
    faults_->setWordWrap(true);
    count_->setTextFormat(Qt::PlainText);
}

QCheckBox* FilterBar::makeBox(const QString& word) {
    auto* box = new QCheckBox(this);
    // A screen reader toggles a box without a click.
    connect(box, &QCheckBox::toggled, this, [this, word](bool isOn) {
        if (holdsWord(text(), word) == isOn) return;
        const QString rest = withoutWord(text(), word);
        setText(isOn ? withWord(rest, word) : rest);
    });
    box->setToolTip(word);
    return box;
}

// ------------------------------------------------------------------------------------- the text

QString FilterBar::text() const {
    return field_->text();
}

void FilterBar::setText(const QString& text) {
    field_->setText(text);
}

void FilterBar::focusField() {
    field_->setFocus(Qt::ShortcutFocusReason);
    field_->selectAll();
}

void FilterBar::takeText(const QString& text) {
    model_.setFilter(text);
    showFaults();
    showCounts();
    Q_EMIT filterChanged(text);
}

void FilterBar::showFaults() {
    const QStringList faults = model_.filterFaults();
    QStringList lines;
    for (const QString& fault : faults)
        lines.append(QStringLiteral("%1 %2").arg(signOf(RowState::Warning), fault));
    faults_->setText(lines.join(QLatin1Char('\n')));
    faults_->setVisible(!lines.isEmpty());
    field_->setAccessibleDescription(faults.join(QLatin1Char('\n')));
}

void FilterBar::showCounts() {
    const RowModel::Counts& counts = model_.counts();
    modified_->setText(tr("&Modified %1").arg(counts.modified));
    records_->setText(tr("&Store's records %1").arg(counts.records));
    live_->setText(tr("&Live %1").arg(counts.live));
    modified_->setChecked(holdsWord(text(), modifiedWord));
    live_->setChecked(holdsWord(text(), liveWord));
    records_->setChecked(model_.showsRecords());
    const QString text = counts.all == 1
                             ? tr("%1 of 1 setting").arg(counts.matches)
                             : tr("%1 of %n settings", "", counts.all).arg(counts.matches);
    if (text == count_->text()) return;
    count_->setText(text);
    announcement_->start();
}

// --------------------------------------------------------------------------------- completion

void FilterBar::complete() {
    const WordPlace place = wordBefore(text(), field_->cursorPosition());
    const QString word = text().mid(place.start, place.length);
    // One letter begins too many words.
    if (word.size() > 1) completer_->setCompletionPrefix(word);
    const bool isWhole = completer_->currentCompletion().compare(word, Qt::CaseInsensitive) == 0;
    if (word.size() > 1 && completer_->completionCount() > 0 && !isWhole)
        completer_->complete();
    else
        completer_->popup()->hide();
}

void FilterBar::takeCompletion(const QString& word) {
    const WordPlace place = wordBefore(text(), field_->cursorPosition());
    QString changed = text();
    changed.replace(place.start, place.length, word);
    field_->setText(changed);
    field_->setCursorPosition(static_cast<int>(place.start + word.size()));
}

// -------------------------------------------------------------------------------------- history

void FilterBar::setHistory(const QStringList& history) {
    history_ = history.mid(0, maximumHistory);
    historyButton_->setEnabled(!history_.isEmpty());
}

void FilterBar::keepInHistory() {
    const QString words = text().trimmed();
    if (words.isEmpty() || (!history_.isEmpty() && history_.front() == words)) return;
    QStringList history = history_;
    history.removeAll(words);
    history.prepend(words);
    setHistory(history);
    Q_EMIT historyChanged();
}

void FilterBar::fillHistoryMenu() {
    historyMenu_->clear();
    for (const QString& words : history_) {
        QString title = words;
        title.replace(QLatin1Char('&'), QStringLiteral("&&"));
        historyMenu_->addAction(title, this, [this, words] {
            setText(words);
            focusField();
        });
    }
}

// ----------------------------------------------------------------------------------------- keys

bool FilterBar::eventFilter(QObject* object, QEvent* event) {
    if (object == field_ && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (handleKey(key->key(), key->modifiers() & ~Qt::KeypadModifier)) return true;
    }
    return QWidget::eventFilter(object, event);
}

bool FilterBar::handleKey(int key, Qt::KeyboardModifiers modifiers) {
    if (key == Qt::Key_Down && modifiers == Qt::AltModifier) {
        if (historyButton_->isEnabled()) historyButton_->showMenu();
        return true;
    }
    if (modifiers != Qt::NoModifier) return false;
    const bool isDown = key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter;
    if (key == Qt::Key_Escape && !text().isEmpty()) {
        keepInHistory();
        field_->clear();
        return true;
    }
    if (!isDown && key != Qt::Key_Escape) return false;
    keepInHistory();
    Q_EMIT tableWanted();
    return true;
}

}  // namespace QRVWindow
