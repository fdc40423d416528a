// SPDX-License-Identifier: MIT
#include "Dialogs/SavesModel.h"

#include <QHeaderView>
#include <QTreeView>
#include <algorithm>

#include "History/ToolHistory.h"
#include "Look/Text.h"
#include "Reporting/Failure.h"
#include "Settings/Records.h"
#include "Text/PastTime.h"

namespace QRVWindow {
namespace {

struct Reading {
    std::vector<QRVHistorySave> saves;
    QString failure;
};

Reading readHistory() {
    try {
        return {Tool::savesInHistory({}), {}};
    } catch (const Tool::Failure& failure) {
        return {{}, fromText(failure.what())};
    }
}

std::size_t settingsChangedBy(const QRVHistorySave& save) {
    return static_cast<std::size_t>(
        std::count_if(save.changes.begin(), save.changes.end(), [](const auto& change) {
            return !Tool::isOfStoreAlone(change.keyPath, change.before, change.after);
        }));
}

}  // namespace

SavesReader::SavesReader(QObject* parent) : QObject(parent) {
    thread_.setMaxThreadCount(1);
}

SavesReader::~SavesReader() {
    thread_.waitForDone();
}

void SavesReader::read() {
    thread_.start([this, number = ++number_] {
        const Reading reading = readHistory();
        QMetaObject::invokeMethod(
            this, [this, number, reading] { end(number, reading.saves, reading.failure); },
            Qt::QueuedConnection);
    });
}

void SavesReader::end(quint64 number, const std::vector<QRVHistorySave>& saves,
                      const QString& failure) {
    if (number == number_) Q_EMIT ended(saves, failure);
}

SavesModel::SavesModel(QObject* parent) : QAbstractTableModel(parent) {}

void SavesModel::setSaves(std::vector<QRVHistorySave> saves) {
    beginResetModel();
    saves_ = std::move(saves);
    choose();
    endResetModel();
}

void SavesModel::setFilter(const QString& text) {
    beginResetModel();
    filter_ = text;
    choose();
    endResetModel();
}

bool SavesModel::isLetThrough(const QRVHistorySave& save) const {
    const auto holdsIt = [this](const std::string& text) {
        return fromText(text).contains(filter_, Qt::CaseInsensitive);
    };
    return filter_.isEmpty() || holdsIt(save.program) ||
           std::any_of(save.changes.begin(), save.changes.end(),
                       [&holdsIt](const auto& change) { return holdsIt(change.keyPath); });
}

void SavesModel::choose() {
    shown_.clear();
    settings_.clear();
    for (std::size_t index = 0; index < saves_.size(); ++index) {
        const std::size_t count = settingsChangedBy(saves_[index]);
        if (count == 0 || !isLetThrough(saves_[index])) continue;
        shown_.push_back(index);
        settings_.push_back(count);
    }
}

std::vector<QRVHistorySave> SavesModel::savesFrom(int row) const {
    const auto last = static_cast<std::ptrdiff_t>(shown_[static_cast<std::size_t>(row)]);
    return {saves_.begin(), saves_.begin() + last + 1};
}

std::vector<QRVHistorySave> SavesModel::savesSince(NSDate time) const {
    const auto isEarlier = [time](const QRVHistorySave& save) { return save.time < time; };
    return {saves_.begin(), std::find_if(saves_.begin(), saves_.end(), isEarlier)};
}

int SavesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

int SavesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : Count + 1;
}

QVariant SavesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) return {};
    const QRVHistorySave& save = saveAt(index.row());
    switch (index.column()) {
        case Time:
            return fromText(Tool::localTimeText(save.time));
        case Program:
            return save.program.empty() ? tr("another program") : fromText(save.program);
        case Origin:
            return fromText(save.origin);
        default:
            return QLocale().toString(qulonglong{settings_[static_cast<std::size_t>(index.row())]});
    }
}

QVariant SavesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
        case Time:
            return tr("Time");
        case Program:
            return tr("Program");
        case Origin:
            return tr("Why");
        default:
            return tr("Settings changed");
    }
}

QTreeView* makeSavesView(SavesModel& model, QWidget* parent) {
    auto* const view = new QTreeView(parent);
    view->setRootIsDecorated(false);
    view->setItemsExpandable(false);
    view->setUniformRowHeights(true);
    view->setAllColumnsShowFocus(true);
    view->setModel(&model);
    view->setAccessibleName(SavesModel::tr("Saves"));
    view->header()->setStretchLastSection(false);
    view->header()->setResizeContentsPrecision(0);
    view->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    return view;
}

}  // namespace QRVWindow
