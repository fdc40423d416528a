// SPDX-License-Identifier: MIT
#pragma once

/// The bar below the table: how many edits are pending, which conflicts they have, and what became
/// of the last apply. Hidden while there is nothing to say.

#include <QWidget>

#include "Session/Session.h"

class QAction;
class QLabel;
class QLayout;

namespace QRVWindow {

class ApplyProgress;

class PendingBar : public QWidget {
    Q_OBJECT

  public:
    /// `session` must outlive the bar.
    explicit PendingBar(Session& session, QWidget* parent = nullptr);

    /// @name What the buttons do, for menus too
    /// Enabled only while they can do something.
    /// @{
    [[nodiscard]] QAction* applyAction() const { return apply_; }
    [[nodiscard]] QAction* reviewAction() const { return review_; }
    [[nodiscard]] QAction* discardAction() const { return discard_; }
    [[nodiscard]] QAction* stopAction() const { return stop_; }
    /// @}

    /// All that the bar says now, a line each; empty while it is hidden.
    [[nodiscard]] QString text() const;

  Q_SIGNALS:
    /// Somebody wants to see the edits, or tries to apply them while there are conflicts.
    void reviewWanted();

  private:
    void makeActions();
    void arrange();
    void addButton(QLayout* layout, QAction* action);
    void apply();
    void showState();
    void showActions();
    [[nodiscard]] QStringList lines() const;
    [[nodiscard]] QString pendingText() const;
    [[nodiscard]] QString conflictText() const;
    [[nodiscard]] QString obstacleText() const;

    Session& session_;
    ApplyProgress* progress_ = nullptr;
    QAction* apply_ = nullptr;
    QAction* review_ = nullptr;
    QAction* discard_ = nullptr;
    QAction* stop_ = nullptr;
    QAction* dismiss_ = nullptr;
    QLabel* line_ = nullptr;
    QLabel* details_ = nullptr;
};

}  // namespace QRVWindow
