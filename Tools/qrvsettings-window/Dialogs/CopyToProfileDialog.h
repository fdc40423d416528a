// SPDX-License-Identifier: MIT
#pragma once

/// Copies settings of the scope, as they are with the pending edits, to a profile: as pending edits
/// of that profile, in one step.

#include <QDialog>
#include <string>
#include <vector>

#include "Session/Session.h"

class QComboBox;
class QLabel;
class QPushButton;

namespace QRVWindow {

class CopyToProfileDialog : public QDialog {
    Q_OBJECT

  public:
    /// `session` must outlive the dialog. The store's records among the key paths are left out.
    CopyToProfileDialog(Session& session, std::vector<std::string> keyPaths,
                        QWidget* parent = nullptr);

    /// The profile that is named, if it may be; the dialog says why not.
    [[nodiscard]] QString profile() const;

    void accept() override;

  private:
    [[nodiscard]] QString objection() const;
    void showState();

    Session& session_;
    std::vector<std::string> keyPaths_;
    QComboBox* name_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* copy_ = nullptr;
};

}  // namespace QRVWindow
