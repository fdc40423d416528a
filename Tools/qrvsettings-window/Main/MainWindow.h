// SPDX-License-Identifier: MIT
#pragma once

/// The window: the rows of one scope, what there is to say of the current one, the changes of
/// others, and the edits that are pending. What others change never opens a dialog and never moves
/// the focus.

#include <QMainWindow>
#include <string>

#include "Main/WindowState.h"
#include "Rows/RowList.h"
#include "Session/Session.h"
#include "Table/RowModel.h"

class QAction;
class QMenu;
class QSplitter;
class QTabWidget;

namespace QRVWindow {

class ChangesPane;
class DetailsPane;
class FilterBar;
class Findings;
class PendingBar;
class ReviewDialog;
class RowActions;
class RowView;
class ScopeBar;
class StatusLine;
class TroubleBanner;

class MainWindow : public QMainWindow {
    Q_OBJECT

  public:
    /// `session` must outlive the window. What the last window kept is restored.
    explicit MainWindow(Session& session, QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Shows the setting, or the level, as soon as the file is read; says so when there is none.
    void open(const std::string& keyPath);

  protected:
    /// With pending edits it stays open, and asks what is to become of them.
    void closeEvent(QCloseEvent* event) override;
    /// Escape goes back: from a pane to the rows, from there to the filter.
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void makeWidgets();
    void arrange();
    void connectRows();
    void connectPanes();
    void connectBanner();
    void makeFileMenu();
    void makeEditMenu();
    void makeViewMenu();
    void makeHelpMenu();
    QAction* add(QMenu& menu, const QString& text, const QKeySequence& keys,
                 void (MainWindow::*function)());
    void restoreState();
    [[nodiscard]] WindowState state() const;

    void followFile();
    void followEdits();
    void followFindings();
    void followChanges();
    void showWanted();
    void showPlace(const Tool::SettingPlace& place);
    void setForm(Tool::RowList::Form form);

    void newProfile();
    void review();
    void compare();
    void compareWithDefaults();
    void showHistory();
    void importSettings();
    void importFile(const QString& path);
    void exportSettings();
    void showKeys();
    void showDetails();
    void showChanges();
    void showTree();
    void showFlatList();
    void reload();
    void openFolder(const QString& folder);
    void startAnew();
    void askBeforeClosing();

    Session& session_;
    RowModel model_;
    WindowState before_;
    std::string wanted_;  ///< to be shown when the file is read
    bool mayClose_ = false;

    ScopeBar* scope_ = nullptr;
    FilterBar* filter_ = nullptr;
    Findings* findings_ = nullptr;
    TroubleBanner* banner_ = nullptr;
    RowView* view_ = nullptr;
    RowActions* actions_ = nullptr;
    QSplitter* split_ = nullptr;
    QTabWidget* tabs_ = nullptr;
    DetailsPane* details_ = nullptr;
    ChangesPane* changes_ = nullptr;
    PendingBar* pending_ = nullptr;
    StatusLine* status_ = nullptr;
    QAction* undo_ = nullptr;
    QAction* redo_ = nullptr;
    QAction* keys_ = nullptr;
    QAction* tree_ = nullptr;
    QAction* flat_ = nullptr;
    ReviewDialog* review_ = nullptr;
};

}  // namespace QRVWindow
