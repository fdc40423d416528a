// SPDX-License-Identifier: MIT
#pragma once

/// The line at the bottom: the state of the file, and what can be undone.

#include <QStatusBar>

#include "Session/Session.h"

class QAction;
class QLabel;

namespace QRVWindow {

class StatusLine : public QStatusBar {
    Q_OBJECT

  public:
    /// `session` must outlive the line. `keys` shows what keys there are.
    StatusLine(Session& session, QAction* keys, QWidget* parent = nullptr);

    /// What it says of the file.
    [[nodiscard]] QString fileText() const;
    /// Shows a sentence for some seconds, and says it to a screen reader.
    void say(const QString& sentence);

  private:
    void showFile();
    void showSteps();

    Session& session_;
    QLabel* file_ = nullptr;
    QLabel* watching_ = nullptr;
    QLabel* steps_ = nullptr;
};

}  // namespace QRVWindow
