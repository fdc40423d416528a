// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>
#include <QWidget>

#include "Table/RowModel.h"

class QAction;
class QCheckBox;
class QCompleter;
class QLabel;
class QLineEdit;
class QMenu;
class QTimer;
class QToolButton;

namespace QRVWindow {

/// The field for the filter of a list of settings, with check boxes for its most frequent words,
/// what is wrong with it, and how many rows it lets through. It filters at each letter.
class FilterBar : public QWidget {
    Q_OBJECT

  public:
    static constexpr qsizetype maximumHistory = 20;

    /// `model` must outlive the bar.
    explicit FilterBar(RowModel& model, QWidget* parent = nullptr);
    ~FilterBar() override;

    [[nodiscard]] QString text() const;
    void setText(const QString& text);
    /// Goes to the field and selects what is in it.
    void focusField();
    /// The same with its keys, `/` and Ctrl+F, which hold in the whole window.
    [[nodiscard]] QAction* focusAction() const { return focusAction_; }

    /// The filters of before, the latest first. One is taken in when somebody goes from the field
    /// to the table.
    [[nodiscard]] QStringList history() const { return history_; }
    void setHistory(const QStringList& history);

  Q_SIGNALS:
    /// The model has the new filter already.
    void filterChanged(const QString& text);
    void historyChanged();
    /// The focus is to go to the table: Down, Enter, or Escape in an empty field.
    void tableWanted();

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    void setUpField();
    void setUpHistory();
    void setUpLayout();
    [[nodiscard]] QCheckBox* makeBox(const QString& word);
    void takeText(const QString& text);
    void showFaults();
    void showCounts();
    void complete();
    void takeCompletion(const QString& word);
    bool handleKey(int key, Qt::KeyboardModifiers modifiers);
    void keepInHistory();
    void fillHistoryMenu();

    RowModel& model_;
    QLineEdit* field_;
    QCompleter* completer_;
    QToolButton* historyButton_;
    QMenu* historyMenu_;
    QCheckBox* modified_;
    QCheckBox* records_;
    QCheckBox* live_;
    QLabel* count_;
    QLabel* faults_;
    QAction* focusAction_;
    QTimer* announcement_;  ///< so that not every letter interrupts a screen reader
    QStringList history_;
};

}  // namespace QRVWindow
