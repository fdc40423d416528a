// SPDX-License-Identifier: MIT
#pragma once

/// The pending edits line by line: what the file holds now, what it held when the setting was first
/// edited, and what it will hold. Here conflicts are settled, and chosen edits applied, copied as
/// commands or discarded.

#include <optional>

#include "Dialogs/ChangeModel.h"
#include "Dialogs/LiveDialog.h"
#include "Settings/SettingObjections.h"

class QDialogButtonBox;
class QPushButton;

namespace QRVWindow {

class ApplyProgress;
class ChangeView;

class ReviewDialog : public LiveDialog {
    Q_OBJECT

  public:
    enum Column { Setting, Profile, InFile, Seen, Result, Note, Choice };

    /// `session` must outlive the dialog.
    explicit ReviewDialog(Session& session, QWidget* parent = nullptr);

    /// Makes this edit the current one.
    void reveal(const Tool::SettingPlace& place);

  protected:
    void showSession() override;

  private:
    void arrange();
    void makeButtons(QDialogButtonBox& buttons);
    void selectConflict();
    void showState();
    [[nodiscard]] ChangeLine lineOf(const Tool::PendingEdit& edit,
                                    const Tool::EditConflict* conflict) const;
    [[nodiscard]] QString noteOn(const Tool::PendingEdit& edit,
                                 const PropertyListValue& inFile) const;
    [[nodiscard]] QString stateText(std::size_t unsettled) const;
    /// Checked edits without those that are in conflict.
    [[nodiscard]] std::vector<Tool::SettingPlace> applicablePlaces() const;
    [[nodiscard]] std::vector<Tool::SettingPlace> selectedConflicts() const;
    void settle(bool isMine);
    void apply();
    void copyCommands();

    std::optional<Tool::SettingObjections> objections_;
    std::set<Tool::SettingPlace> conflicts_;
    ChangeModel model_;
    ChangeView* view_ = nullptr;
    ApplyProgress* progress_ = nullptr;
    QLabel* summary_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* mine_ = nullptr;
    QPushButton* theirs_ = nullptr;
    QPushButton* copy_ = nullptr;
    QPushButton* discard_ = nullptr;
    QPushButton* stop_ = nullptr;
    QPushButton* apply_ = nullptr;
};

}  // namespace QRVWindow
