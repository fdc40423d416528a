// SPDX-License-Identifier: MIT
#include "Table/RowDelegate.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <algorithm>

#include "Editors/ValueEditor.h"
#include "Look/Swatch.h"
#include "Look/Text.h"
#include "QRVSettings/QRVSettings.h"
#include "Table/Variants.h"
#include "Text/KeyPaths.h"

namespace QRVWindow {
namespace {

constexpr int padding = 4;

int indentationOf(const QWidget* view) {
    return QApplication::style()->pixelMetric(QStyle::PM_TreeViewIndentation, nullptr, view);
}

/// One line of text within a rectangle, from left to right where it is a key path or a value.
struct TextLine {
    QString text;
    QRect rect;
    Qt::TextElideMode elide = Qt::ElideRight;
    bool isLeftToRight = true;
    Qt::Alignment alignment = Qt::AlignLeft;
};

void paintText(QPainter& painter, const TextLine& line) {
    const QFontMetrics metrics = painter.fontMetrics();
    const int flags = static_cast<int>(line.alignment) | Qt::AlignAbsolute | Qt::AlignVCenter |
                      Qt::TextSingleLine | (line.isLeftToRight ? Qt::TextForceLeftToRight : 0);
    painter.drawText(line.rect, flags,
                     metrics.elidedText(line.text, line.elide, line.rect.width()));
}

/// Of the key path, what is the same in the line above: levels only.
qsizetype commonLevels(const QString& text, const QString& above) {
    const auto differs = std::mismatch(text.begin(), text.end(), above.begin(), above.end()).first;
    const qsizetype common = differs - text.begin();
    return common == 0 ? 0 : text.lastIndexOf(QLatin1Char('.'), common - 1) + 1;
}

}  // namespace

struct RowDelegate::Cell {
    const QStyleOptionViewItem& option;
    int line;
    const Tool::RowLine& about;
    const Tool::SettingRow* row;  ///< null at a level
    RowPaint paint;

    [[nodiscard]] bool isRightToLeft() const { return option.direction == Qt::RightToLeft; }
    [[nodiscard]] Qt::Alignment alignment() const {
        return isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
    }
    /// `from` pixels after the start of the cell.
    [[nodiscard]] QRect rectFrom(int from) const {
        return isRightToLeft() ? option.rect.adjusted(padding, 0, -from, 0)
                               : option.rect.adjusted(from, 0, -padding, 0);
    }
};

RowDelegate::RowDelegate(const RowModel& model, QObject* parent)
    : QStyledItemDelegate(parent), model_(model) {}

QSize RowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    Q_UNUSED(index)
    // Room for an editor, which has a frame.
    constexpr int frame = 8;
    return {option.fontMetrics.averageCharWidth(), option.fontMetrics.height() + frame};
}

QRect RowDelegate::arrowRect(const QRect& cell, std::size_t depth, const QWidget& view) {
    const int indentation = indentationOf(&view);
    const QRect rect(cell.left() + static_cast<int>(depth) * indentation, cell.top(), indentation,
                     cell.height());
    return QStyle::visualRect(view.layoutDirection(), cell, rect);
}

void RowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
    const Tool::SettingRow* row = model_.rowAt(index.row());
    const bool isSelected = (option.state & QStyle::State_Selected) != 0;
    const bool isActive = (option.state & QStyle::State_Active) != 0;
    QPalette palette = option.palette;
    palette.setCurrentColorGroup(isActive ? QPalette::Active : QPalette::Inactive);
    const std::vector<RowState> states =
        row != nullptr ? model_.text().states(*row) : std::vector<RowState>();
    const Cell cell{option, index.row(), model_.lineAt(index.row()), row,
                    colors_.paintOf(states, isSelected, palette)};

    painter->save();
    painter->setClipRect(option.rect, Qt::IntersectClip);
    if (cell.paint.ground.isValid()) painter->fillRect(option.rect, cell.paint.ground);
    painter->setPen(cell.paint.text);
    QFont font = option.font;
    const int column = index.column();
    font.setBold(column == RowModel::Sign ||
                 (row != nullptr && row->isModified &&
                  (column == RowModel::Setting || column == RowModel::Value)));
    painter->setFont(font);
    if (column == RowModel::Setting) {
        paintSetting(*painter, cell);
    } else if (row != nullptr && (column == RowModel::Value || column == RowModel::Default)) {
        paintValue(*painter, cell, column == RowModel::Default);
    } else {
        const bool isValue = column == RowModel::Sign || column == RowModel::Other;
        paintText(*painter,
                  {index.data().toString(), cell.rectFrom(padding), Qt::ElideRight, isValue,
                   column == RowModel::Sign ? Qt::AlignHCenter : cell.alignment()});
    }
    painter->restore();
}

namespace {

/// A triangle that points down where the level is open, and to its name where it is closed.
void paintArrow(QPainter& painter, const QRect& rect, bool isOpen, bool isRightToLeft) {
    const qreal half = std::min(rect.width(), rect.height()) / 5.0;
    QPolygonF arrow{{-half / 2, -half}, {half / 2, 0}, {-half / 2, half}};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect).center());
    painter.rotate(isOpen ? 90 : isRightToLeft ? 180 : 0);
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(arrow);
    painter.restore();
}

}  // namespace

void RowDelegate::paintSetting(QPainter& painter, const Cell& cell) const {
    const bool isTree = model_.form() == Tool::RowList::Form::Tree;
    const int indentation = indentationOf(cell.option.widget);
    if (cell.row == nullptr)
        paintArrow(painter, arrowRect(cell.option.rect, cell.about.depth, *cell.option.widget),
                   cell.about.isExpanded, cell.isRightToLeft());
    const int start = isTree ? (static_cast<int>(cell.about.depth) + 1) * indentation : padding;
    const QRect rect = cell.rectFrom(start);
    const QString text = model_.index(cell.line, RowModel::Setting).data().toString();
    qsizetype quiet = 0;
    if (!isTree && cell.line > 0)
        quiet =
            commonLevels(text, model_.index(cell.line - 1, RowModel::Setting).data().toString());
    const QFontMetrics metrics = painter.fontMetrics();
    if (quiet == 0 || metrics.horizontalAdvance(text) > rect.width()) {
        paintText(painter, {text, rect, isTree ? Qt::ElideRight : Qt::ElideMiddle,
                            cell.row != nullptr || !text.isRightToLeft(), cell.alignment()});
        return;
    }
    const QString first = text.left(quiet);
    const int width = metrics.horizontalAdvance(first);
    QRect at = rect;
    if (cell.isRightToLeft()) at.setLeft(rect.right() + 1 - metrics.horizontalAdvance(text));
    painter.setPen(cell.paint.quiet);
    paintText(painter, {first, at});
    painter.setPen(cell.paint.text);
    paintText(painter, {text.mid(quiet), at.adjusted(width, 0, 0, 0)});
}

void RowDelegate::paintValue(QPainter& painter, const Cell& cell, bool isDefault) const {
    const RowText& text = model_.text();
    const QString shown = isDefault ? text.byDefault(*cell.row) : text.value(*cell.row);
    int start = padding;
    for (const Variant& variant : variantsOf(model_.session(), *cell.row, isDefault)) {
        const int height = cell.option.rect.height() - (variant.isOwn ? 6 : 12);
        const int width = variant.isOwn ? height * 3 / 2 : height;
        const QRect swatch(cell.option.rect.left() + start,
                           cell.option.rect.center().y() + 1 - height / 2, width, height);
        paintSwatch(painter, QStyle::visualRect(cell.option.direction, cell.option.rect, swatch),
                    variant.color, cell.option.palette);
        start += width + padding;
    }
    // Of what is and what will be, the end says more.
    const bool isPending = !isDefault && model_.session().pendingAt(cell.row->keyPath) != nullptr;
    paintText(painter, {shown, cell.rectFrom(start), isPending ? Qt::ElideLeft : Qt::ElideRight,
                        true, cell.alignment()});
}

// --------------------------------------------------------------------------------- editing

QWidget* RowDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    Q_UNUSED(option)
    const Tool::SettingRow* row = model_.rowAt(index.row());
    if (row == nullptr) return nullptr;
    EditedSetting setting;
    setting.known = row->known;
    setting.keyPath = row->keyPath;
    setting.value = model_.session().valueWithEdits(row->keyPath);
    setting.byDefault = row->byDefault;
    ValueEditor* editor = makeValueEditor(setting, parent);
    editor_ = editor;
    seen_.reset();
    if (model_.session().pendingAt(row->keyPath) == nullptr)
        seen_ = Tool::valueAt(model_.session().stored(),
                              model_.session().placeOf(row->keyPath).storedKeyPath());
    auto* self = const_cast<RowDelegate*>(this);
    connect(editor, &ValueEditor::committed, self, [self, editor] {
        Q_EMIT self->commitData(editor);
        Q_EMIT self->closeEditor(editor);
    });
    connect(editor, &ValueEditor::cancelled, self,
            [self, editor] { Q_EMIT self->closeEditor(editor, RevertModelCache); });
    return editor;
}

void RowDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    Q_UNUSED(editor)
    Q_UNUSED(index)
}

void RowDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                               const QModelIndex& index) const {
    Q_UNUSED(model)
    const auto* valueEditor = qobject_cast<const ValueEditor*>(editor);
    if (valueEditor == nullptr || !valueEditor->isChanged()) return;
    const std::optional<PropertyListValue> value = valueEditor->value();
    if (!value || value->isNull()) return;
    model_.session().editSeen(toText(index.data(RowModel::KeyPathRole).toString()), *value,
                              editor == editor_ ? seen_ : std::nullopt);
}

void RowDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const {
    Q_UNUSED(index)
    editor->setGeometry(option.rect);
}

/// Keys and focus are the editor's own matter, which alone knows when a value is whole.
bool RowDelegate::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::FocusOut) return false;
    return QStyledItemDelegate::eventFilter(object, event);
}

}  // namespace QRVWindow
