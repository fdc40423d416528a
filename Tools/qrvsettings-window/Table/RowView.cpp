// SPDX-License-Identifier: MIT
#include "Table/RowView.h"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <algorithm>
#include <array>

#include "Editors/ValueEditor.h"
#include "Look/Text.h"
#include "Table/RowDelegate.h"

namespace QRVWindow {

RowView::RowView(RowModel& model, QWidget* parent) : QTreeView(parent), rows_(model) {
    setModel(&model);
    auto* delegate = new RowDelegate(model, this);
    setItemDelegate(delegate);
    setUniformRowHeights(true);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setExpandsOnDoubleClick(false);
    setAllColumnsShowFocus(true);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(EditKeyPressed | DoubleClicked);
    setTabKeyNavigation(false);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    setAccessibleName(tr("Settings"));
    setUpColumns();
    connect(&model, &RowModel::aboutToRearrange, this, &RowView::keepPlace);
    connect(&model, &RowModel::rearranged, this, &RowView::restorePlace);
    connect(qApp, &QApplication::focusChanged, this, &RowView::leaveEditor);
}

/// The base class gives up the focus when this object is gone.
RowView::~RowView() {
    disconnect(qApp, nullptr, this, nullptr);
}

/// Sections have the width of a number of characters; their contents are never measured, which
/// would take as long as there are rows.
void RowView::setUpColumns() {
    constexpr std::array<int, RowModel::Other + 1> characters{44, 7, 34, 15, 24, 24, 24};
    header()->setSectionResizeMode(QHeaderView::Interactive);
    header()->setStretchLastSection(true);
    header()->setHighlightSections(false);
    header()->setSectionsMovable(true);
    header()->setFirstSectionMovable(false);
    const int width = fontMetrics().averageCharWidth();
    for (int column = 0; column < rows_.columnCount(); ++column)
        header()->resizeSection(column,
                                std::max(width * characters[static_cast<std::size_t>(column)],
                                         header()->sectionSizeHint(column)));
}

void RowView::changeEvent(QEvent* event) {
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) setAccessibleName(tr("Settings"));
}

// ------------------------------------------------------------------------- where a person is

std::string RowView::currentKeyPath() const {
    const QModelIndex index = currentIndex();
    return index.isValid() ? rows_.lineAt(index.row()).keyPath : std::string();
}

std::vector<std::string> RowView::selectedKeyPaths() const {
    std::vector<std::string> keyPaths;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int line = range.top(); line <= range.bottom(); ++line)
            if (const Tool::RowLine& about = rows_.lineAt(line); !about.isLevel())
                keyPaths.push_back(about.keyPath);
            else
                std::ranges::copy(rows_.keyPathsBelow(line), std::back_inserter(keyPaths));
    std::sort(keyPaths.begin(), keyPaths.end(), Tool::standsBefore);
    keyPaths.erase(std::unique(keyPaths.begin(), keyPaths.end()), keyPaths.end());
    return keyPaths;
}

bool RowView::reveal(const std::string& keyPath) {
    const std::optional<int> line = rows_.reveal(keyPath);
    if (line) goTo(*line);
    return line.has_value();
}

void RowView::enter() {
    setFocus(Qt::OtherFocusReason);
    if (!currentIndex().isValid() && rows_.rowCount() > 0) goTo(0);
}

void RowView::goTo(int line) {
    const QModelIndex index = rows_.index(line, RowModel::Setting);
    setCurrentIndex(index);
    scrollTo(index);
}

void RowView::announceCurrent() {
    const QString keyPath = QString::fromStdString(currentKeyPath());
    if (keyPath == announced_) return;
    announced_ = keyPath;
    Q_EMIT currentKeyPathChanged(keyPath);
}

void RowView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTreeView::currentChanged(current, previous);
    if (isRearranging_) return;
    if (current.isValid()) wanted_ = currentKeyPath();
    announceCurrent();
}

void RowView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTreeView::selectionChanged(selected, deselected);
    if (!isRearranging_) Q_EMIT selectedKeyPathsChanged();
}

/// The first and the last line on show.
std::pair<int, int> RowView::visibleLines() const {
    const int first = verticalScrollBar()->value();
    return {first, std::min(first + verticalScrollBar()->pageStep(), rows_.rowCount() - 1)};
}

void RowView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                          const QList<int>& roles) {
    const auto [first, last] = visibleLines();
    const int from = std::max(first, topLeft.row());
    const int to = std::min(last, bottomRight.row());
    if (from > to) return;
    // The base class asks for the place of each cell, on show or not.
    QTreeView::dataChanged(topLeft.siblingAtRow(from), bottomRight.siblingAtRow(to), roles);
    if (!QAccessible::isActive() || topLeft.column() == bottomRight.column()) return;
    for (int line = from; line <= to; ++line) {
        const bool isLive = rows_.session().liveChangeOf(rows_.lineAt(line).keyPath) != nullptr;
        if (!isLive) continue;
        QAccessibleEvent event(this, QAccessible::NameChanged);
        // Children are the cells from the heading on, row by row.
        event.setChild((line + 1) * rows_.columnCount() + RowModel::Setting);
        QAccessible::updateAccessibility(&event);
    }
}

void RowView::keepPlace() {
    isRearranging_ = true;
    place_ = {};
    const auto [first, last] = visibleLines();
    for (int line = first; line <= last; ++line)
        place_.visible.push_back(rows_.lineAt(line).keyPath);
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int line = range.top(); line <= range.bottom(); ++line)
            place_.selected.push_back(rows_.lineAt(line).keyPath);
    // A selection of all would become one of all the new lines.
    const QSignalBlocker blocker(selectionModel());
    selectionModel()->clearSelection();
}

void RowView::restorePlace() {
    executeDelayedItemsLayout();
    restoreSelection();
    if (!currentIndex().isValid())
        if (const std::optional<int> line = rows_.lineOf(wanted_))
            selectionModel()->setCurrentIndex(rows_.index(*line, RowModel::Setting),
                                              QItemSelectionModel::NoUpdate);
    for (std::size_t offset = 0; offset < place_.visible.size(); ++offset)
        if (const std::optional<int> line = rows_.lineOf(place_.visible[offset])) {
            verticalScrollBar()->setValue(*line - static_cast<int>(offset));
            break;
        }
    isRearranging_ = false;
    place_ = {};
    viewport()->update();
    announceCurrent();
}

void RowView::restoreSelection() {
    QItemSelection selection;
    std::size_t found = 0;
    std::pair<int, int> stretch(-1, -2);
    const auto take = [&] {
        if (stretch.first >= 0)
            selection.append(
                QItemSelectionRange(rows_.index(stretch.first, 0),
                                    rows_.index(stretch.second, rows_.columnCount() - 1)));
    };
    for (const std::string& keyPath : place_.selected) {
        const std::optional<int> line = rows_.lineOf(keyPath);
        if (!line) continue;
        ++found;
        if (*line != stretch.second + 1) {
            take();
            stretch.first = *line;
        }
        stretch.second = *line;
    }
    take();
    {
        const QSignalBlocker blocker(selectionModel());
        selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    }
    if (found != place_.selected.size()) Q_EMIT selectedKeyPathsChanged();
}

// ------------------------------------------------------------------------------------ editing

QModelIndex RowView::valueOf(const QModelIndex& index) const {
    return index.isValid() ? index.siblingAtColumn(RowModel::Value) : QModelIndex();
}

bool RowView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
    if (trigger != EditKeyPressed && trigger != DoubleClicked)
        return QTreeView::edit(index, trigger, event);
    const QModelIndex value = valueOf(index);
    if ((rows_.flags(value) & Qt::ItemIsEditable) == 0) return false;
    const Tool::SettingRow& row = *rows_.rowAt(value.row());
    const EditedSetting setting{row.known, row.keyPath, rows_.session().valueWithEdits(row.keyPath),
                                row.byDefault};
    if (needsDialog(setting)) {
        Q_EMIT dialogWanted(QString::fromStdString(row.keyPath));
        return true;
    }
    scrollTo(value);
    const bool isEditing = QTreeView::edit(value, trigger, event);
    if (isEditing) editor_ = indexWidget(value);
    return isEditing;
}

/// What can be taken as it is when somebody goes elsewhere. Anything else waits for its person.
bool RowView::isWhole(const ValueEditor& editor) {
    return editor.value().has_value() && editor.objection().isEmpty();
}

void RowView::leaveEditor(const QWidget* from, const QWidget* to) {
    auto* editor = qobject_cast<ValueEditor*>(editor_.data());
    if (editor == nullptr || from == nullptr || to == nullptr || to->window() != window()) return;
    const auto isInside = [&](const QWidget* widget) {
        return widget == editor || editor->isAncestorOf(widget);
    };
    if (!isInside(from) || isInside(to) || !isWhole(*editor)) return;
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
}

void RowView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    // The focus leaves it while the base class closes it: it must not be taken and closed twice.
    if (editor == editor_) editor_ = nullptr;
    QTreeView::closeEditor(editor, hint);
}

/// Another row would close an editor whose value is not whole, and lose it.
bool RowView::isHeldByEditor() {
    auto* editor = qobject_cast<ValueEditor*>(editor_.data());
    if (editor == nullptr || isWhole(*editor)) return false;
    editor->setFocus();
    editor->commit();
    return true;
}

bool RowView::takeTyped() {
    if (isHeldByEditor()) return false;
    if (auto* editor = qobject_cast<ValueEditor*>(editor_.data())) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
    return true;
}

// --------------------------------------------------------------------------- keys and the mouse

void RowView::keyPressEvent(QKeyEvent* event) {
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const int key = event->key();
    if (key == Qt::Key_Escape) {
        event->ignore();
        return;
    }
    if (isHeldByEditor()) return;
    if (isPlain && currentIndex().isValid()) {
        const int line = currentIndex().row();
        const bool isLevel = rows_.lineAt(line).isLevel();
        const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (isEnter && isLevel) {
            rows_.setExpanded(line, !rows_.lineAt(line).isExpanded);
            return;
        }
        if (isEnter) {
            edit(currentIndex(), EditKeyPressed, event);
            return;
        }
        if (handleLevelKey(key)) return;
    }
    QTreeView::keyPressEvent(event);
}

bool RowView::handleLevelKey(int key) {
    const int line = currentIndex().row();
    const bool isMirrored = isRightToLeft();
    switch (key) {
        case Qt::Key_Left:
            isMirrored ? goIn(line) : goOut(line);
            return true;
        case Qt::Key_Right:
            isMirrored ? goOut(line) : goIn(line);
            return true;
        case Qt::Key_Plus:
            rows_.setExpanded(line, true);
            return true;
        case Qt::Key_Minus:
            rows_.setExpanded(line, false);
            return true;
        case Qt::Key_Asterisk:
            rows_.expandBelow(line);
            return true;
        default:
            return false;
    }
}

void RowView::goOut(int line) {
    const Tool::RowLine& here = rows_.lineAt(line);
    if (here.isLevel() && here.isExpanded) {
        rows_.setExpanded(line, false);
        return;
    }
    for (int above = line - 1; above >= 0; --above)
        if (const Tool::RowLine& other = rows_.lineAt(above);
            other.isLevel() && other.depth < here.depth)
            return goTo(above);
}

void RowView::goIn(int line) {
    const Tool::RowLine& here = rows_.lineAt(line);
    if (!here.isLevel()) return;
    if (!here.isExpanded)
        rows_.setExpanded(line, true);
    else if (line + 1 < rows_.rowCount())
        goTo(line + 1);
}

int RowView::levelWithArrowAt(const QPoint& position) const {
    const QModelIndex index = indexAt(position);
    if (!index.isValid() || index.column() != RowModel::Setting) return -1;
    const Tool::RowLine& line = rows_.lineAt(index.row());
    const bool isOnArrow =
        RowDelegate::arrowRect(visualRect(index), line.depth, *this).contains(position);
    return line.isLevel() && isOnArrow ? index.row() : -1;
}

void RowView::mousePressEvent(QMouseEvent* event) {
    if (isHeldByEditor()) return;
    const int level = event->button() == Qt::LeftButton ? levelWithArrowAt(event->pos()) : -1;
    if (level < 0) {
        QTreeView::mousePressEvent(event);
        return;
    }
    rows_.setExpanded(level, !rows_.lineAt(level).isExpanded);
}

void RowView::mouseDoubleClickEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    if (event->button() == Qt::LeftButton && index.isValid() &&
        rows_.lineAt(index.row()).isLevel()) {
        rows_.setExpanded(index.row(), !rows_.lineAt(index.row()).isExpanded);
        return;
    }
    QTreeView::mouseDoubleClickEvent(event);
}

void RowView::contextMenuEvent(QContextMenuEvent* event) {
    QPoint position = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard)
        position = viewport()->mapToGlobal(visualRect(currentIndex()).center());
    Q_EMIT menuWanted(position);
}

/// The delegate paints them: all lines are at the top of the model.
void RowView::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const {
    Q_UNUSED(painter)
    Q_UNUSED(rect)
    Q_UNUSED(index)
}

}  // namespace QRVWindow
