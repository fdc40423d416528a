// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>
#include <QTreeView>
#include <string>
#include <utility>
#include <vector>

#include "Table/RowModel.h"

namespace QRVWindow {

class ValueEditor;

/// The list of settings. What a person is at stays where it is while lines change, come and go: the
/// line at the top, the current one, the selected ones, and an editor with what is typed in it.
///
/// Enter and F2 edit the value of the current row, and open or close a level. Left and Right close
/// and open levels, and go to the level above or the line below; + and - open and close; * opens
/// all below. Escape, and every other key that means nothing here, is passed on.
///
/// A value is taken when somebody goes elsewhere, unless it is wrong or unusual: then the editor
/// keeps the current row until Enter or Escape.
class RowView : public QTreeView {
    Q_OBJECT

  public:
    /// `model` must outlive the view.
    explicit RowView(RowModel& model, QWidget* parent = nullptr);
    ~RowView() override;

    /// Of a row or level; empty when there is none.
    [[nodiscard]] std::string currentKeyPath() const;
    /// The rows that are selected; a level gives all below it.
    [[nodiscard]] std::vector<std::string> selectedKeyPaths() const;
    /// Makes it the current row, whatever levels must be opened for that. Returns whether there is
    /// one that the filter lets through.
    bool reveal(const std::string& keyPath);
    /// Takes the focus, and makes the first line the current one when there is none.
    void enter();
    /// Whether somebody is editing a value here.
    [[nodiscard]] bool isEditing() const { return editor_ != nullptr; }
    /// Makes an edit of what somebody types here, and closes the editor. Returns false when that is
    /// no value that can be taken as it is: the editor stays and says why.
    [[nodiscard]] bool takeTyped();

  Q_SIGNALS:
    /// Empty when there is no current line.
    void currentKeyPathChanged(const QString& keyPath);
    void selectedKeyPathsChanged();
    /// A person wants to edit a value for which a cell is too small.
    void dialogWanted(const QString& keyPath);
    /// A person asks for the menu of the current row, at this place of the screen.
    void menuWanted(const QPoint& position);

  protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void changeEvent(QEvent* event) override;
    void drawBranches(QPainter* painter, const QRect& rect,
                      const QModelIndex& index) const override;

  protected Q_SLOTS:
    /// Screen readers hear the new name of a row that has changed before their user's eyes.
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;

  private:
    [[nodiscard]] std::pair<int, int> visibleLines() const;
    void keepPlace();
    void restorePlace();
    void restoreSelection();
    void setUpColumns();
    void announceCurrent();
    void goTo(int line);
    bool handleLevelKey(int key);
    void goOut(int line);
    void goIn(int line);
    [[nodiscard]] static bool isWhole(const ValueEditor& editor);
    void leaveEditor(const QWidget* from, const QWidget* to);
    [[nodiscard]] bool isHeldByEditor();
    [[nodiscard]] int levelWithArrowAt(const QPoint& position) const;
    [[nodiscard]] QModelIndex valueOf(const QModelIndex& index) const;

    /// Where a person was before lines move.
    struct Place {
        /// Those on show, from the top: the first that is still there stays at its height.
        std::vector<std::string> visible;
        std::vector<std::string> selected;
    };

    RowModel& rows_;
    Place place_;
    std::string wanted_;  ///< the last current line, also while a filter hides it
    QString announced_;   ///< what `currentKeyPathChanged` said last
    bool isRearranging_ = false;
    QPointer<QWidget> editor_;
};

}  // namespace QRVWindow
