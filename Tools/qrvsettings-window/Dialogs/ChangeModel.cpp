// SPDX-License-Identifier: MIT
#include "Dialogs/ChangeModel.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPixmap>
#include <algorithm>

#include "Look/Swatch.h"
#include "Look/Text.h"

namespace QRVWindow {
namespace {

QPixmap swatchOf(const NSColor& color) {
    const int height = QFontMetrics(QApplication::font()).height();
    const QSize size(2 * height, height);
    const qreal ratio = qApp->devicePixelRatio();
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paintSwatch(painter, QRect(QPoint(0, 0), size), color, QApplication::palette());
    return pixmap;
}

}  // namespace

ChangeModel::ChangeModel(QStringList headers, QObject* parent, AtFirst atFirst)
    : QAbstractTableModel(parent), headers_(std::move(headers)), atFirst_(atFirst) {}

bool ChangeModel::hasSamePlaces(const std::vector<ChangeLine>& lines) const {
    return std::equal(lines.begin(), lines.end(), lines_.begin(), lines_.end(),
                      [](const auto& one, const auto& other) { return one.place == other.place; });
}

void ChangeModel::setLines(std::vector<ChangeLine> lines) {
    if (hasSamePlaces(lines)) {
        lines_ = std::move(lines);
        if (!lines_.empty())
            Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
        return;
    }
    beginResetModel();
    lines_ = std::move(lines);
    rows_.clear();
    for (const ChangeLine& line : lines_) rows_.emplace(line.place, static_cast<int>(rows_.size()));
    endResetModel();
    Q_EMIT checkedChanged();
}

void ChangeModel::forgetMarksOfOthers() {
    std::erase_if(toggled_, [this](const auto& place) { return !rows_.contains(place); });
}

int ChangeModel::rowOf(const Tool::SettingPlace& place) const {
    const auto found = rows_.find(place);
    return found == rows_.end() ? -1 : found->second;
}

bool ChangeModel::isChecked(const Tool::SettingPlace& place) const {
    return toggled_.contains(place) == (atFirst_ == AtFirst::Unchecked);
}

void ChangeModel::setChecked(const std::vector<Tool::SettingPlace>& places, bool isChecked) {
    for (const Tool::SettingPlace& place : places) {
        if (isChecked == (atFirst_ == AtFirst::Checked))
            toggled_.erase(place);
        else
            toggled_.insert(place);
    }
    if (!lines_.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::CheckStateRole});
    Q_EMIT checkedChanged();
}

std::vector<Tool::SettingPlace> ChangeModel::checkedPlaces() const {
    std::vector<Tool::SettingPlace> places;
    for (const ChangeLine& line : lines_)
        if (isChecked(line.place)) places.push_back(line.place);
    return places;
}

int ChangeModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

int ChangeModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(headers_.size());
}

QVariant ChangeModel::ofCell(const ChangeCell& cell, int role) const {
    switch (role) {
        case Qt::DisplayRole:
            return cell.isLeftToRight && !cell.text.isEmpty() ? leftToRight(cell.text) : cell.text;
        case plainTextRole:
        case Qt::ToolTipRole:
        case Qt::AccessibleTextRole:
            return cell.text;
        case Qt::DecorationRole:
            return cell.color ? QVariant(swatchOf(*cell.color)) : QVariant();
        default:
            return {};
    }
}

QVariant ChangeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const ChangeLine& line = lineAt(index.row());
    if (role == Qt::CheckStateRole)
        return index.column() == 0 ? QVariant(isChecked(line.place) ? Qt::Checked : Qt::Unchecked)
                                   : QVariant();
    if (role == Qt::FontRole && line.isMarked) {
        QFont font = QApplication::font();
        font.setBold(true);
        return font;
    }
    return ofCell(line.cells[static_cast<std::size_t>(index.column())], role);
}

bool ChangeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || !index.isValid()) return false;
    setChecked({lineAt(index.row()).place}, value.toInt() == Qt::Checked);
    return true;
}

QVariant ChangeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return headers_.value(section);
}

Qt::ItemFlags ChangeModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == 0) flags |= Qt::ItemIsUserCheckable;
    if (index.column() == editableColumn_ && lineAt(index.row()).isMarked)
        flags |= Qt::ItemIsEditable;
    return flags;
}

}  // namespace QRVWindow
