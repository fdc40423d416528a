// SPDX-License-Identifier: MIT
#pragma once

/// What can be done with the selected rows, as actions for menus and keys.

#include <QObject>
#include <QStringList>
#include <string>
#include <vector>

#include "Session/Session.h"
#include "Table/RowModel.h"
#include "Table/RowView.h"

class QAction;
class QMenu;

namespace QRVWindow {

class RowActions : public QObject {
    Q_OBJECT

  public:
    /// All of these must outlive the object, which is a child of the view.
    RowActions(Session& session, RowModel& model, RowView& view);

    void addEditingTo(QMenu& menu) const;
    void addCopyingTo(QMenu& menu) const;
    void addLevelsTo(QMenu& menu) const;
    /// At a place of the screen.
    void showMenu(const QPoint& position);

    /// Copies the commands that make another file hold what these settings have.
    void copyCommands(const std::vector<std::string>& keyPaths);

  Q_SIGNALS:
    /// A sentence about what has happened.
    void said(const QString& sentence);

  private:
    QAction* make(const QString& text, void (RowActions::*function)());
    void makeEditing();
    void makeCopying();
    void makeLevels();
    void update();
    void edit();
    void reset();
    void setToOneValue();
    void copyToProfile();
    void addSetting();
    void copyValues();
    void copyKeyPaths();
    void copyCommandsOfRows();
    void copyCommandsOfEdits();
    void expandAll();
    void collapseAll();
    void copy(const QString& text, const QString& sentence);

    Session& session_;
    RowModel& model_;
    RowView& view_;
    QAction* edit_ = nullptr;
    QAction* reset_ = nullptr;
    QAction* setToOneValue_ = nullptr;
    QAction* copyToProfile_ = nullptr;
    QAction* newSetting_ = nullptr;
    QAction* copyValues_ = nullptr;
    QAction* copyKeyPaths_ = nullptr;
    QAction* copyCommands_ = nullptr;
    QAction* copyEdits_ = nullptr;
    QAction* expandAll_ = nullptr;
    QAction* collapseAll_ = nullptr;
};

}  // namespace QRVWindow
