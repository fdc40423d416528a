// SPDX-License-Identifier: MIT
#pragma once

// Paints the cells of a list of settings, and makes the editors of values.

#include <QPointer>
#include <QStyledItemDelegate>
#include <optional>

#include "Table/RowColors.h"
#include "Table/RowModel.h"

namespace QRVWindow {

class ValueEditor;

class RowDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    /// Paints and edits what `model` holds, which must outlive this object.
    explicit RowDelegate(const RowModel& model, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    /// Leaves an editor as it is: it was made with its value, and what is half typed stays.
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    /// One edit of the session, if the value was changed.
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

    /// Where a click opens or closes the level in this cell.
    [[nodiscard]] static QRect arrowRect(const QRect& cell, std::size_t depth, const QWidget& view);

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    struct Cell;
    void paintSetting(QPainter& painter, const Cell& cell) const;
    void paintValue(QPainter& painter, const Cell& cell, bool isDefault) const;

    const RowModel& model_;
    mutable RowColors colors_;
    // Of the editor that was opened last, where no edit was pending then.
    mutable QPointer<QWidget> editor_;
    mutable std::optional<PropertyListValue> seen_;
};

}  // namespace QRVWindow
