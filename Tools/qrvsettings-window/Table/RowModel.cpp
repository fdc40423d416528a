// SPDX-License-Identifier: MIT
#include "Table/RowModel.h"

#include <QFont>
#include <algorithm>
#include <functional>
#include <unordered_map>

#include "Look/Text.h"
#include "Reporting/PrintableText.h"

namespace QRVWindow {
namespace {

/// With more separate stretches of changed lines, all between the first and the last are announced
/// at once: a signal costs every listener more than a line does.
constexpr std::size_t maximumStretches = 8;

QString nameOf(const Tool::RowLine& line) {
    return fromText(Tool::printable(line.name));
}

/// The characters of text that a tooltip would take for markup stay as they are.
QString asToolTip(const QString& text) {
    return text.isEmpty()
               ? text
               : QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(text.toHtmlEscaped());
}

int asInt(std::size_t number) {
    return static_cast<int>(number);
}

}  // namespace

RowModel::RowModel(Session& session, QObject* parent)
    : QAbstractTableModel(parent), session_(session), list_(session.table()), text_(session) {
    list_.setMarks([this](const std::string& keyPath) { return session_.marksOf(keyPath); });
    list_.arrange();
    lineCount_ = asInt(list_.lines().size());
    hasOther_ = session_.otherTable() != nullptr;
    isDamaged_ = session_.fileState().isDamaged();
    isWritable_ = session_.fileState().isWritable();
    text_.update();
    updateCounts();
    connect(&session_, &Session::tableChanged, this, &RowModel::followTable);
    connect(&session_, &Session::tableReset, this, &RowModel::resetRows);
    connect(&session_, &Session::pendingChanged, this, &RowModel::followMarks);
    connect(&session_, &Session::marksChanged, this, &RowModel::followMarks);
    connect(&session_, &Session::otherTableChanged, this, &RowModel::followOther);
    connect(&session_, &Session::fileStateChanged, this, &RowModel::followFileState);
}

// -------------------------------------------------------------------------------- what there is

int RowModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : lineCount_;
}

int RowModel::columnCount(const QModelIndex& parent) const {
    if (parent.isValid()) return 0;
    return hasOther_ ? Other + 1 : int{Other};
}

const Tool::RowLine& RowModel::lineAt(int line) const {
    return list_.lines()[static_cast<std::size_t>(line < gap_.first ? line : line + gap_.count)];
}

const Tool::SettingRow* RowModel::rowAt(int line) const {
    const std::size_t row = lineAt(line).row;
    const std::vector<Tool::SettingRow>& rows = session_.table().rows();
    return row < rows.size() ? &rows[row] : nullptr;
}

std::optional<int> RowModel::lineOf(const std::string& keyPath) const {
    const std::optional<std::size_t> line = list_.lineOf(keyPath);
    return line ? std::optional(asInt(*line)) : std::nullopt;
}

std::vector<std::string> RowModel::keyPathsBelow(int line) const {
    return list_.keyPathsBelow(static_cast<std::size_t>(line));
}

QVariant RowModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= lineCount_ ||
        static_cast<std::size_t>(index.row()) >= list_.lines().size())
        return {};
    const Tool::RowLine& line = lineAt(index.row());
    if (role == KeyPathRole) return QString::fromStdString(line.keyPath);
    if (role == IsLevelRole) return line.isLevel();
    if (role == Qt::TextAlignmentRole)
        return QVariant((index.column() == Sign ? Qt::AlignHCenter : Qt::AlignLeading) |
                        Qt::AlignVCenter);
    if (line.isLevel()) return levelData(line, index.column(), role);
    const Tool::SettingRow* row = rowAt(index.row());
    return row != nullptr ? rowData(line, *row, index.column(), role) : QVariant();
}

QVariant RowModel::levelData(const Tool::RowLine& line, int column, int role) const {
    if (column != Setting) return {};
    const int count = asInt(line.count);
    const auto text = [&](const QString& name) {
        return count == 1 ? tr("%1, 1 setting").arg(name)
                          : tr("%1, %n settings", "", count).arg(name);
    };
    switch (role) {
        case Qt::DisplayRole:
            return text(nameOf(line));
        case Qt::AccessibleTextRole:
            return text(fromText(Tool::printable(line.keyPath)));
        case Qt::AccessibleDescriptionRole:
            return line.isExpanded ? tr("open") : tr("closed");
        default:
            return {};
    }
}

QVariant RowModel::rowData(const Tool::RowLine& line, const Tool::SettingRow& row, int column,
                           int role) const {
    switch (role) {
        case Qt::DisplayRole:
            return cellText(line, row, column);
        case Qt::ToolTipRole:
            return asToolTip(toolTip(row, column));
        case Qt::AccessibleTextRole:
            return column == Setting ? text_.spoken(row) : cellText(line, row, column);
        case Qt::AccessibleDescriptionRole:
            return column == Setting ? text_.description(row) : QString();
        case Qt::FontRole:
            if (row.isModified && (column == Setting || column == Value)) {
                QFont font;
                font.setBold(true);
                return font;
            }
            return {};
        default:
            return {};
    }
}

QString RowModel::cellText(const Tool::RowLine& line, const Tool::SettingRow& row,
                           int column) const {
    switch (column) {
        case Setting:
            return nameOf(line);
        case Sign:
            return text_.signs(row);
        case Value:
            return text_.value(row);
        case Layer:
            return text_.layer(row);
        case Default:
            return text_.byDefault(row);
        case Seen:
            return text_.seen(row);
        default:
            return text_.other(row);
    }
}

QString RowModel::toolTip(const Tool::SettingRow& row, int column) const {
    switch (column) {
        case Setting: {
            const QString description = text_.description(row);
            const QString keyPath = fromText(Tool::printable(row.keyPath));
            return description.isEmpty() ? keyPath : keyPath + QLatin1Char('\n') + description;
        }
        case Sign: {
            QStringList lines;
            for (const RowState state : text_.states(row))
                lines.append(QStringLiteral("%1  %2").arg(signOf(state), wordOf(state)));
            return lines.join(QLatin1Char('\n'));
        }
        case Value:
            return text_.valueInFull(row);
        case Default:
            return text_.defaultInFull(row);
        case Seen:
            return text_.seen(row);
        case Other:
            return text_.otherInFull(row);
        default:
            return {};
    }
}

QVariant RowModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
        case Setting:
            return tr("Setting");
        case Sign:
            return tr("Sign");
        case Value:
            return tr("Value");
        case Layer:
            return tr("Layer");
        case Default:
            return tr("Default");
        case Seen:
            return tr("Seen");
        default:
            return tr("In profile %1").arg(session_.otherProfile());
    }
}

Qt::ItemFlags RowModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    const bool isEditable =
        index.column() == Value && isWritable_ && !lineAt(index.row()).isLevel();
    return isEditable ? flags | Qt::ItemIsEditable : flags;
}

// ------------------------------------------------------------------------------ what is chosen

void RowModel::setFilter(const QString& text) {
    const std::string words = toText(text);
    if (words == list_.filter().text()) return;
    rearrange([&] { list_.setFilter(Tool::RowFilter(words)); });
}

QString RowModel::filter() const {
    return fromText(list_.filter().text());
}

QStringList RowModel::filterFaults() const {
    QStringList faults;
    for (const std::string& fault : list_.filter().faults()) faults.append(fromText(fault));
    return faults;
}

void RowModel::setForm(Tool::RowList::Form form) {
    if (form != list_.form()) rearrange([&] { list_.setForm(form); });
}

void RowModel::setShowsRecords(bool showsRecords) {
    if (showsRecords == showsRecords_) return;
    showsRecords_ = showsRecords;
    rearrange([&] { list_.setShowsRecords(showsRecords); });
}

void RowModel::setExpanded(int line, bool isExpanded) {
    const Tool::RowLine& level = lineAt(line);
    if (!level.isLevel() || level.isExpanded == isExpanded) return;
    const std::string keyPath = level.keyPath;
    rearrange([&] { list_.setExpanded(keyPath, isExpanded); });
}

void RowModel::expandBelow(int line) {
    const std::string keyPath = lineAt(line).keyPath;
    if (!lineAt(line).isLevel()) return;
    rearrange([&] {
        list_.setExpanded(keyPath, true);
        for (const std::string& below : keyPathsBelow(line)) list_.reveal(below);
    });
}

void RowModel::setAllExpanded(bool areExpanded) {
    rearrange([&] { list_.setAllExpanded(areExpanded); });
}

std::optional<int> RowModel::reveal(const std::string& keyPath) {
    if (!lineOf(keyPath)) rearrange([&] { list_.reveal(keyPath); });
    return lineOf(keyPath);
}

void RowModel::setFindings(std::map<std::string, QString> findings) {
    text_.setFindings(std::move(findings));
    announceLines(0, lineCount_ - 1);
}

// ------------------------------------------------------------------------------- what changes

void RowModel::rearrange(const std::function<void()>& change) {
    Q_EMIT aboutToRearrange();
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<std::string> keyPaths;
    for (const QModelIndex& index : before) keyPaths.push_back(lineAt(index.row()).keyPath);
    change();
    list_.arrange();
    lineCount_ = asInt(list_.lines().size());
    QModelIndexList after;
    for (qsizetype i = 0; i < before.size(); ++i) {
        const std::optional<int> line = lineOf(keyPaths[static_cast<std::size_t>(i)]);
        after.append(line ? index(*line, before[i].column()) : QModelIndex());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, VerticalSortHint);
    Q_EMIT rearranged();
    updateCounts();
}

void RowModel::resetRows() {
    Q_EMIT aboutToRearrange();
    beginResetModel();
    text_.update();
    list_.arrange();
    lineCount_ = asInt(list_.lines().size());
    live_.clear();
    for (const Tool::SettingRow& row : session_.table().rows()) noteLive(row.keyPath);
    endResetModel();
    Q_EMIT rearranged();
    updateCounts();
}

void RowModel::followTable(const Tool::SettingsTable::Change& change) {
    text_.update();
    follow(change);
}

void RowModel::followMarks(const QStringList& keyPaths) {
    text_.update();
    Tool::SettingsTable::Change change;
    for (const QString& keyPath : keyPaths) change.changed.push_back(toText(keyPath));
    for (const std::string& keyPath : change.changed) noteLive(keyPath);
    std::sort(change.changed.begin(), change.changed.end(), Tool::standsBefore);
    follow(change);
}

void RowModel::follow(const Tool::SettingsTable::Change& change) {
    const bool mayRearrange = !list_.keepsLines(change);
    if (!mayRearrange) {
        list_.follow(change);
    } else {
        const std::vector<std::size_t> before = identities();
        Q_EMIT aboutToRearrange();
        if (list_.follow(change)) announceRearranged(before);
        Q_EMIT rearranged();
    }
    announce(change.changed);
    updateCounts();
}

/// A number for each line, by which it is recognised after a change.
std::vector<std::size_t> RowModel::identities() const {
    std::vector<std::size_t> numbers;
    numbers.reserve(list_.lines().size());
    for (const Tool::RowLine& line : list_.lines())
        numbers.push_back(std::hash<std::string>()(line.keyPath) + (line.isLevel() ? 1 : 0));
    return numbers;
}

/// After the list has changed: one stretch of new lines is an insertion, anything else a new
/// layout.
void RowModel::announceRearranged(const std::vector<std::size_t>& before) {
    const std::vector<std::size_t> now = identities();
    const auto firstOther = std::mismatch(before.begin(), before.end(), now.begin(), now.end());
    const auto tail = before.end() - firstOther.first;
    if (now.size() > before.size() &&
        std::equal(firstOther.first, before.end(), now.end() - tail)) {
        insert(asInt(static_cast<std::size_t>(firstOther.first - before.begin())),
               asInt(now.size() - before.size()));
    } else {
        Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
        std::unordered_map<std::size_t, int> lines;
        for (std::size_t line = 0; line < now.size(); ++line) lines.emplace(now[line], asInt(line));
        lineCount_ = asInt(now.size());
        QModelIndexList after;
        const QModelIndexList indexes = persistentIndexList();
        for (const QModelIndex& old : indexes) {
            const auto line = lines.find(before[static_cast<std::size_t>(old.row())]);
            after.append(line != lines.end() ? index(line->second, old.column()) : QModelIndex());
        }
        changePersistentIndexList(indexes, after);
        Q_EMIT layoutChanged({}, VerticalSortHint);
    }
    // Levels above have another count, and perhaps another name.
    if (lineCount_ > 0) Q_EMIT dataChanged(index(0, Setting), index(lineCount_ - 1, Setting));
}

void RowModel::insert(int first, int count) {
    gap_ = {first, count};
    beginInsertRows({}, first, first + count - 1);
    gap_ = {};
    lineCount_ += count;
    endInsertRows();
}

/// The lines of these settings, in as few signals as is cheap.
void RowModel::announce(const std::vector<std::string>& keyPaths) {
    std::vector<std::pair<int, int>> stretches;
    for (const std::string& keyPath : keyPaths) {
        const std::optional<int> line = lineOf(keyPath);
        if (!line) continue;
        if (!stretches.empty() && *line == stretches.back().second + 1)
            stretches.back().second = *line;
        else
            stretches.emplace_back(*line, *line);
    }
    if (stretches.size() > maximumStretches)
        stretches = {{stretches.front().first, stretches.back().second}};
    for (const auto& [first, last] : stretches) announceLines(first, last);
}

void RowModel::announceLines(int first, int last) {
    if (first <= last) Q_EMIT dataChanged(index(first, 0), index(last, columnCount() - 1));
}

void RowModel::followOther() {
    const bool hasOther = session_.otherTable() != nullptr;
    if (hasOther && !hasOther_) {
        beginInsertColumns({}, Other, Other);
        hasOther_ = true;
        endInsertColumns();
    } else if (!hasOther && hasOther_) {
        beginRemoveColumns({}, Other, Other);
        hasOther_ = false;
        endRemoveColumns();
    } else if (hasOther && lineCount_ > 0) {
        Q_EMIT headerDataChanged(Qt::Horizontal, Other, Other);
        Q_EMIT dataChanged(index(0, Other), index(lineCount_ - 1, Other));
    }
}

void RowModel::followFileState() {
    const FileState& state = session_.fileState();
    if (state.isDamaged() == isDamaged_ && state.isWritable() == isWritable_) return;
    isDamaged_ = state.isDamaged();
    isWritable_ = state.isWritable();
    announceLines(0, lineCount_ - 1);
}

void RowModel::noteLive(const std::string& keyPath) {
    const LiveChange* change = session_.liveChangeOf(keyPath);
    if (change != nullptr && !change->isRecord)
        live_.insert(keyPath);
    else
        live_.erase(keyPath);
}

void RowModel::updateCounts() {
    Counts counts;
    for (const Tool::SettingRow& row : session_.table().rows()) {
        if (row.isRecord) ++counts.records;
        if (row.isModified && !row.isRecord) ++counts.modified;
    }
    counts.all = asInt(list_.countOfAll());
    counts.matches = asInt(list_.matchCount());
    counts.live = asInt(live_.size());
    if (counts == counts_) return;
    counts_ = counts;
    Q_EMIT countsChanged();
}

}  // namespace QRVWindow
