// SPDX-License-Identifier: MIT
#pragma once

/// The list of changes that the window has seen, with time, old and new value, and who made them.

#include <QWidget>

#include "Panes/ChangesModel.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeView;

namespace QRVWindow {

class ChangesPane : public QWidget {
    Q_OBJECT

  public:
    /// `session` must outlive the pane.
    explicit ChangesPane(Session& session, QWidget* parent = nullptr);

    [[nodiscard]] ChangesModel& model() { return model_; }
    /// What the line below the list says: "12 new while paused".
    [[nodiscard]] QString statusText() const;

  Q_SIGNALS:
    /// Somebody wants to see the row of a change.
    void placeWanted(const Tool::SettingPlace& place);

  private:
    void makeBar();
    void makeList();
    void showCounts();
    [[nodiscard]] QString countText() const;

    Session& session_;
    ChangesModel model_;
    QLineEdit* filter_ = nullptr;
    QCheckBox* records_ = nullptr;
    QPushButton* pause_ = nullptr;
    QPushButton* clear_ = nullptr;
    QTreeView* list_ = nullptr;
    QLabel* status_ = nullptr;
    bool isAtEnd_ = true;  ///< the list shows its last row, and goes on with new ones
};

}  // namespace QRVWindow
