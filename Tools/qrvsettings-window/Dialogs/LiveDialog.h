// SPDX-License-Identifier: MIT
#pragma once

/// A dialog that does not block the window and shows what the session says as long as it is open:
/// several changes of one moment are shown at once.

#include <QDialog>
#include <QString>

#include "Session/Session.h"

class QLabel;

namespace QRVWindow {

class LiveDialog : public QDialog {
    Q_OBJECT

  public:
    /// `session` must outlive the dialog.
    explicit LiveDialog(Session& session, QWidget* parent = nullptr);

    void setVisible(bool isVisible) override;

  protected:
    /// Shows all of the session. Called before the dialog is shown, and after changes while it is.
    virtual void showSession() = 0;
    /// Calls `showSession` when the event loop runs.
    void follow();

    [[nodiscard]] Session& session() const { return session_; }
    /// A text of several lines that can be selected.
    QLabel* makeLabel(const QString& name);
    /// Says the text of a label to a screen reader.
    static void announce(QLabel* label);

  private:
    Session& session_;
    bool isFollowing_ = false;
};

}  // namespace QRVWindow
