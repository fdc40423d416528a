// SPDX-License-Identifier: MIT
#include "Panes/ChangesModel.h"

#include <QLocale>
#include <algorithm>

#include "Look/Text.h"

namespace QRVWindow {
namespace {

constexpr qsizetype shownOfValue = 200;

QString settingText(const Tool::SettingPlace& place) {
    if (place.profile.empty()) return fromText(place.keyPath);
    return ChangesModel::tr("%1 in profile %2")
        .arg(keyPathInSentence(place.keyPath), leftToRight(fromText(place.profile)));
}

QString valueText(const PropertyListValue& value) {
    return value.isNull() ? ChangesModel::tr("not stored") : valueAsText(value, shownOfValue);
}

QString timeText(const QDateTime& time) {
    return QLocale().toString(time.time(), QStringLiteral("HH:mm:ss"));
}

QString textOf(const LiveChange& change, int column) {
    switch (column) {
        case ChangesModel::Time:
            return timeText(change.time);
        case ChangesModel::Setting:
            return settingText(change.place);
        case ChangesModel::Before:
            return valueText(change.before);
        case ChangesModel::After:
            return valueText(change.after);
        default:
            return authorOf(change);
    }
}

}  // namespace

QString authorOf(const LiveChange& change) {
    if (change.by == LiveChange::By::ThisWindow) return ChangesModel::tr("this window");
    return change.program.isEmpty() ? ChangesModel::tr("another process") : change.program;
}

ChangesModel::ChangesModel(Session& session, QObject* parent)
    : QAbstractTableModel(parent), session_(session) {
    connect(&session_, &Session::changesChanged, this, &ChangesModel::follow);
    addNew();
}

void ChangesModel::setFilter(const QString& text) {
    const QStringList words = text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words == words_) return;
    words_ = words;
    showAnew();
}

void ChangesModel::setShowsRecords(bool showsRecords) {
    if (showsRecords == showsRecords_) return;
    showsRecords_ = showsRecords;
    showAnew();
}

void ChangesModel::setPaused(bool isPaused) {
    isPaused_ = isPaused;
    follow();
}

const LiveChange* ChangesModel::changeAt(int row) const {
    if (row < 0 || static_cast<std::size_t>(row) >= numbers_.size()) return nullptr;
    const quint64 number = numbers_[static_cast<std::size_t>(row)];
    const auto& changes = session_.changes();
    const auto found = std::lower_bound(
        changes.begin(), changes.end(), number,
        [](const LiveChange& change, quint64 wanted) { return change.number < wanted; });
    return found != changes.end() && found->number == number ? &*found : nullptr;
}

int ChangesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(numbers_.size());
}

int ChangesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ChangesModel::data(const QModelIndex& index, int role) const {
    const LiveChange* const change = index.isValid() ? changeAt(index.row()) : nullptr;
    if (change == nullptr) return {};
    switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return textOf(*change, index.column());
        case Qt::AccessibleTextRole:
            // The first cell says the whole line, for those who hear one cell at a time.
            return index.column() != Time
                       ? textOf(*change, index.column())
                       : tr("%1: %2 was %3 and is %4, by %5")
                             .arg(textOf(*change, Time), textOf(*change, Setting),
                                  textOf(*change, Before), textOf(*change, After),
                                  textOf(*change, Who));
        default:
            return {};
    }
}

QVariant ChangesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
        case Time:
            return tr("Time");
        case Setting:
            return tr("Setting");
        case Before:
            return tr("Before");
        case After:
            return tr("After");
        default:
            return tr("By");
    }
}

void ChangesModel::follow() {
    removeForgotten();
    addNew();
    // A program may have been filled in anywhere; views paint only the rows that are seen.
    if (!numbers_.empty())
        Q_EMIT dataChanged(index(0, Who), index(static_cast<int>(numbers_.size()) - 1, Who));
    Q_EMIT countsChanged();
}

void ChangesModel::removeForgotten() {
    const auto& changes = session_.changes();
    const auto kept = changes.empty() ? numbers_.end()
                                      : std::lower_bound(numbers_.begin(), numbers_.end(),
                                                         changes.front().number);
    if (kept == numbers_.begin()) return;
    beginRemoveRows({}, 0, static_cast<int>(kept - numbers_.begin()) - 1);
    numbers_.erase(numbers_.begin(), kept);
    endRemoveRows();
}

void ChangesModel::addNew() {
    const std::vector<quint64> added = matchesAfter(lastNumber_);
    newCount_ = isPaused_ ? static_cast<int>(added.size()) : 0;
    if (isPaused_) return;
    if (!session_.changes().empty()) lastNumber_ = session_.changes().back().number;
    if (added.empty()) return;
    const auto first = static_cast<int>(numbers_.size());
    beginInsertRows({}, first, first + static_cast<int>(added.size()) - 1);
    numbers_.insert(numbers_.end(), added.begin(), added.end());
    endInsertRows();
}

void ChangesModel::showAnew() {
    beginResetModel();
    std::vector<quint64> numbers = matchesAfter(0);
    newCount_ = 0;
    if (isPaused_) {
        const auto waiting = std::upper_bound(numbers.begin(), numbers.end(), lastNumber_);
        newCount_ = static_cast<int>(numbers.end() - waiting);
        numbers.erase(waiting, numbers.end());
    }
    numbers_ = std::move(numbers);
    endResetModel();
    Q_EMIT countsChanged();
}

bool ChangesModel::matches(const LiveChange& change) const {
    if (change.isRecord && !showsRecords_) return false;
    return std::all_of(words_.begin(), words_.end(), [&change](const QString& word) {
        for (const int column : {Setting, Before, After, Who})
            if (textOf(change, column).contains(word, Qt::CaseInsensitive)) return true;
        return false;
    });
}

std::vector<quint64> ChangesModel::matchesAfter(quint64 number) const {
    const auto& changes = session_.changes();
    auto change =
        std::upper_bound(changes.begin(), changes.end(), number,
                         [](quint64 wanted, const LiveChange& one) { return wanted < one.number; });
    std::vector<quint64> numbers;
    for (; change != changes.end(); ++change)
        if (matches(*change)) numbers.push_back(change->number);
    return numbers;
}

}  // namespace QRVWindow
