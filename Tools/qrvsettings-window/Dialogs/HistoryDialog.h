// SPDX-License-Identifier: MIT
#pragma once

/// The saves of the history with their changes. Chosen saves are taken back as pending edits: their
/// settings are to have the values of before. What somebody has changed since is said, and left as
/// it is unless it is asked for.

#include <set>
#include <string>
#include <vector>

#include "Dialogs/ChangeModel.h"
#include "Dialogs/LiveDialog.h"
#include "Dialogs/SavesModel.h"

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace QRVWindow {

class ChangeView;

class HistoryDialog : public LiveDialog {
    Q_OBJECT

  public:
    enum Column { Setting, Profile, Before, After, InFile, Note };

    /// `session` must outlive the dialog.
    explicit HistoryDialog(Session& session, QWidget* parent = nullptr);

    void setVisible(bool isVisible) override;

  protected:
    void showSession() override;

  private:
    void arrange();
    void makeButtons(QLayout& layout);
    void showSaves(const std::vector<QRVHistorySave>& saves, const QString& failure);
    void showChanges();
    void showState();
    /// Without the changes of lines that are not checked.
    [[nodiscard]] std::vector<QRVHistorySave> chosenSaves() const;
    /// Stored key paths that somebody has changed since.
    [[nodiscard]] std::set<std::string> conflictsOf(const std::vector<QRVHistorySave>& saves) const;
    [[nodiscard]] QString stateText() const;
    void takeBack();

    QString failure_;
    bool isRead_ = false;
    std::size_t changeCount_ = 0;  ///< of the session, when the history was last read
    std::size_t conflictCount_ = 0;
    SavesModel saves_;
    SavesReader* reader_ = nullptr;
    ChangeModel model_;
    QLineEdit* filter_ = nullptr;
    QTreeView* savesView_ = nullptr;
    ChangeView* view_ = nullptr;
    QCheckBox* overwrites_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* take_ = nullptr;
};

}  // namespace QRVWindow
