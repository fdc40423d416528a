// SPDX-License-Identifier: MIT
#include "Panes/HistoryList.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLocale>
#include <QPushButton>
#include <QTimer>

#include "Edits/EditTable.h"
#include "History/HistoryText.h"
#include "Look/Text.h"
#include "Panes/FactText.h"

namespace QRVWindow {
namespace {

constexpr qsizetype shownOfValue = 200;

QString timeText(NSDate time) {
    constexpr double millisecondsInSecond = 1000;
    const auto milliseconds =
        static_cast<qint64>(time.timeIntervalSince1970() * millisecondsInSecond);
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(milliseconds),
                              QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString valueText(const PropertyListValue& value) {
    return value.isNull() ? HistoryList::tr("not stored")
                          : leftToRight(valueAsText(value, shownOfValue));
}

QString programText(const QRVHistorySave& save) {
    return save.program.empty() ? HistoryList::tr("another program")
                                : leftToRight(fromText(Tool::programText(save)));
}

QString lineText(const QRVHistorySave& save, const QRVHistoryChange& change,
                 const std::string& keyPath) {
    if (change.keyPath == keyPath)
        return HistoryList::tr("%1, %2: was %3, is %4")
            .arg(timeText(save.time), programText(save), valueText(change.before),
                 valueText(change.after));
    return HistoryList::tr("%1, %2: %3 was %4, is %5")
        .arg(timeText(save.time), programText(save), keyPathInSentence(change.keyPath),
             valueText(change.before), valueText(change.after));
}

}  // namespace

HistoryList::HistoryList(QWidget* parent)
    : QWidget(parent), patience_(new QTimer(this)), note_(new FactText(this)) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    note_->setAccessibleName(tr("Last changes"));
    column->addWidget(note_);
    patience_->setSingleShot(true);
    patience_->setInterval(patienceMilliseconds);
    connect(patience_, &QTimer::timeout, this,
            [this] { showNote(tr("Looking into the history\u2026")); });
    connect(&lookup_, &HistoryLookup::found, this, &HistoryList::take);
}

void HistoryList::setStoredKeyPath(const std::string& storedKeyPath) {
    if (storedKeyPath == keyPath_) return;
    keyPath_ = storedKeyPath;
    isCurrent_ = false;
    patience_->start();
    lookup_.look(keyPath_);
}

void HistoryList::lookAgain() {
    if (!keyPath_.empty()) lookup_.look(keyPath_);
}

QStringList HistoryList::lines() const {
    QStringList lines;
    if (!note_->isHidden()) lines.append(note_->toPlainText());
    for (std::size_t i = 0; i < used_; ++i) lines.append(lines_[i].text->toPlainText());
    return lines;
}

void HistoryList::take(const HistoryAnswer& answer) {
    if (answer.keyPath != keyPath_) return;
    patience_->stop();
    isCurrent_ = true;
    if (!answer.whyNone.empty())
        showNote(fromText(answer.whyNone));
    else if (answer.saves.empty())
        showNote(tr("The history has no change of this setting."));
    else
        showLines(answer);
    Q_EMIT shown();
}

void HistoryList::showLines(const HistoryAnswer& answer) {
    used_ = 0;
    for (const QRVHistorySave& save : answer.saves)
        for (const QRVHistoryChange& change : save.changes) {
            if (used_ == HistoryLookup::maximumSaves) break;
            Line& line = lineAt(used_++);
            line.change = change;
            line.text->setFact(lineText(save, change, keyPath_), false);
            line.takeBack->setAccessibleName(tr("Take back to %1").arg(valueText(change.before)));
            line.row->show();
        }
    for (std::size_t i = used_; i < lines_.size(); ++i) lines_[i].row->hide();
    note_->hide();
}

void HistoryList::showNote(const QString& note) {
    note_->setFact(note, false);
    note_->show();
    used_ = 0;
    for (const Line& line : lines_) line.row->hide();
}

HistoryList::Line& HistoryList::lineAt(std::size_t index) {
    if (index < lines_.size()) return lines_[index];
    auto* const row = new QWidget(this);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const text = new FactText(row);
    text->setAccessibleName(tr("Last change"));
    auto* const takeBack = new QPushButton(tr("Take back"), row);
    takeBack->setToolTip(tr("Makes an edit with the value from before this change"));
    layout->addWidget(text, 1);
    layout->addWidget(takeBack, 0, Qt::AlignTop);
    static_cast<QVBoxLayout*>(this->layout())->addWidget(row);
    connect(takeBack, &QPushButton::clicked, this, [this, index] {
        const QRVHistoryChange& change = lines_[index].change;
        if (isCurrent_) Q_EMIT takeBackWanted(Tool::placeOfStored(change.keyPath), change.before);
    });
    return lines_.emplace_back(Line{row, text, takeBack, {}});
}

}  // namespace QRVWindow
