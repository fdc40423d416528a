// SPDX-License-Identifier: MIT
// The window as a whole: what it opens at, its keys, and its end.
#include "Main/MainWindow.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QStatusBar>
#include <QTest>
#include <filesystem>
#include <optional>

#include "Dialogs/ReviewDialog.h"
#include "Main/WindowState.h"
#include "Panes/TroubleBanner.h"
#include "Table/FilterBar.h"
#include "Table/RowView.h"
#include "Tool/ToolSupport.h"
#include "Window/WindowSupport.h"

using QRVWindow::FilterBar;
using QRVWindow::MainWindow;
using QRVWindow::RowModel;
using QRVWindow::RowView;
using QRVWindow::Session;
using WindowSupport::waitUntil;

namespace {

/// A window that has read its file.
class Opened {
  public:
    explicit Opened(const std::string& keyPath = "") {
        window.emplace(session);
        if (!keyPath.empty()) window->open(keyPath);
        WindowSupport::show(*window);
        session.start();
        EXPECT_TRUE(waitUntil(
            [&] { return session.fileState().kind != QRVWindow::FileState::Kind::NotRead; }));
        QApplication::setActiveWindow(&*window);
    }
    RowView& view() { return *window->findChild<RowView*>(); }
    FilterBar& filter() { return *window->findChild<FilterBar*>(); }
    [[nodiscard]] QAction* action(const QString& beginning) const {
        for (QAction* const action : window->findChildren<QAction*>())
            if (action->text().remove(QLatin1Char('&')).startsWith(beginning)) return action;
        return nullptr;
    }
    QModelIndex cell(const std::string& keyPath, RowModel::Column column) {
        const auto* const model = view().model();
        for (int row = 0; row < model->rowCount(); ++row) {
            const QVariant path = model->index(row, 0).data(RowModel::KeyPathRole);
            if (path.toString().toStdString() == keyPath) return model->index(row, column);
        }
        return {};
    }
    QString value(const std::string& keyPath) {
        return cell(keyPath, RowModel::Value).data().toString();
    }
    /// Empty when nobody is asked.
    QMessageBox* question() { return window->findChild<QMessageBox*>(); }

    Session session;
    std::optional<MainWindow> window;
};

void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
}

void clickButton(const QMessageBox& box, const QString& text) {
    for (QPushButton* const button : box.findChildren<QPushButton*>())
        if (button->text().remove(QLatin1Char('&')) == text) return button->click();
    ADD_FAILURE() << "no button " << text.toStdString();
}

/// What Tab, or Shift+Tab, visits until it comes to something again.
QList<QWidget*> visited(Qt::Key key) {
    QList<QWidget*> all;
    for (QWidget* at = QApplication::focusWidget(); !all.contains(at);
         at = QApplication::focusWidget()) {
        all << at;
        press(key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
    }
    return all;
}

QStringList namesOf(const QList<QWidget*>& widgets) {
    QStringList names;
    for (const QWidget* const widget : widgets)
        names << QString::fromLatin1(widget->metaObject()->className()) + QLatin1Char(' ') +
                     widget->accessibleName();
    return names;
}

/// Whoever takes the focus for it stands in its place.
QWidget* holderOf(QWidget* widget) {
    while (widget->focusProxy() != nullptr) widget = widget->focusProxy();
    return widget;
}

}  // namespace

TEST(MainWindow, ItsTitleNamesTheApplicationOrTheFileThatItWasGiven) {
    const Opened opened;
    EXPECT_EQ(opened.window->windowTitle().toStdString(),
              "Settings of " QRV_APPLICATION_IDENTIFIER "[*]");

    Session session;
    session.setFileName(QStringLiteral("/elsewhere/copy.plist"));
    const MainWindow window(session);
    EXPECT_EQ(window.windowTitle().toStdString(), "Settings of copy.plist[*]");
}

TEST(MainWindow, OpensAtAKeyPath) {
    WindowSupport::setByTool("CPU.Menubar.Enabled", "false");
    Opened opened("CPU.Menubar.Enabled");
    ASSERT_TRUE(waitUntil([&] { return opened.view().currentKeyPath() == "CPU.Menubar.Enabled"; }));
    EXPECT_EQ(opened.value("CPU.Menubar.Enabled"), QStringLiteral("false"));
    WindowSupport::grab(*opened.window, QStringLiteral("opened"));
}

TEST(MainWindow, SaysWhatAMistypedKeyPathMayMean) {
    Opened opened("CPU.Menubar.Enable");
    ASSERT_TRUE(waitUntil([&] { return !opened.window->statusBar()->currentMessage().isEmpty(); }));
    EXPECT_TRUE(opened.window->statusBar()->currentMessage().contains(
        QStringLiteral("CPU.Menubar.Enabled")));
}

TEST(MainWindow, ClosesWithoutAQuestionWhenNothingIsPending) {
    Opened opened;
    EXPECT_TRUE(opened.window->close());
    EXPECT_EQ(opened.question(), nullptr);
}

TEST(MainWindow, DoesNotAskToReplaceADamagedFileOnceItIsRepaired) {
    ToolSupport::writeSettings("damaged");
    Opened opened;
    ASSERT_TRUE(opened.session.fileState().isDamaged());
    Q_EMIT opened.window->findChild<QRVWindow::TroubleBanner*>()->startAnewWanted();
    ASSERT_NE(opened.question(), nullptr);
    const std::string repaired = ToolSupport::propertyList("<key>a</key><integer>1</integer>");
    ToolSupport::writeSettings(repaired);
    EXPECT_TRUE(waitUntil([&] { return opened.question() == nullptr; }));
    EXPECT_FALSE(opened.session.isApplying());
    EXPECT_EQ(ToolSupport::contentsOf(ToolSupport::settingsFile()), repaired);
}

TEST(MainWindow, AValueThatIsBeingTypedIsNotLostWhenItCloses) {
    Opened opened("CPU.Menubar.Mode.HistoryGraph.Width");
    press(Qt::Key_Return);
    press(Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("x"));
    EXPECT_FALSE(opened.window->close());
    EXPECT_EQ(opened.question(), nullptr) << "the editor says what is wrong";
    press(Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("61"));
    EXPECT_FALSE(opened.window->close());
    EXPECT_NE(opened.question(), nullptr);
    ASSERT_NE(opened.session.pendingAt("CPU.Menubar.Mode.HistoryGraph.Width"), nullptr);
    EXPECT_EQ(opened.session.pendingAt("CPU.Menubar.Mode.HistoryGraph.Width")->value, 61);
}

TEST(MainWindow, AsksBeforeItClosesWithPendingEdits) {
    Opened opened;
    opened.session.edit("CPU.Menubar.Enabled", false);
    EXPECT_FALSE(opened.window->close());
    ASSERT_NE(opened.question(), nullptr);
    clickButton(*opened.question(), QStringLiteral("Cancel"));
    ASSERT_TRUE(waitUntil([&] { return opened.question() == nullptr; }));
    EXPECT_TRUE(opened.window->isVisible());

    EXPECT_FALSE(opened.window->close());
    clickButton(*opened.question(), QStringLiteral("Review\u2026"));
    ASSERT_TRUE(waitUntil([&] { return opened.question() == nullptr; }));
    EXPECT_TRUE(opened.window->isVisible());
    auto* const review = opened.window->findChild<QRVWindow::ReviewDialog*>();
    ASSERT_NE(review, nullptr);
    EXPECT_TRUE(review->isVisible());
    review->close();

    EXPECT_FALSE(opened.window->close());
    clickButton(*opened.question(), QStringLiteral("Discard"));
    EXPECT_TRUE(waitUntil([&] { return !opened.window->isVisible(); }));
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::settingsFile()));
}

TEST(MainWindow, UndoAndRedoNameTheStep) {
    Opened opened;
    QAction* const undo = opened.action(QStringLiteral("Undo"));
    QAction* const redo = opened.action(QStringLiteral("Redo"));
    EXPECT_FALSE(undo->isEnabled());
    opened.session.edit("CPU.Menubar.Enabled", false);
    EXPECT_TRUE(undo->text().contains(QStringLiteral("CPU.Menubar.Enabled")))
        << undo->text().toStdString();
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(opened.session.pending().edits().empty());
    EXPECT_TRUE(redo->text().contains(QStringLiteral("CPU.Menubar.Enabled")));
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(opened.session.pending().edits().size(), 1U);
}

TEST(MainWindow, KeepsItsSizeAndFormForTheNextOne) {
    {
        Opened opened;
        opened.window->resize(900, 640);
        opened.action(QStringLiteral("Flat list"))->trigger();
        opened.window->close();
    }
    EXPECT_TRUE(QRVWindow::readWindowState().isFlat);
    Opened again;
    EXPECT_EQ(again.window->size(), QSize(900, 640));
    EXPECT_TRUE(again.action(QStringLiteral("Flat list"))->isChecked());
}

TEST(MainWindow, CopiesTheValueAndTheCommandOfARow) {
    WindowSupport::setByTool("CPU.Menubar.Enabled", "false");
    Opened opened("CPU.Menubar.Enabled");
    ASSERT_TRUE(waitUntil([&] { return opened.view().currentKeyPath() == "CPU.Menubar.Enabled"; }));
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("false"));
    press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    const std::string command = QGuiApplication::clipboard()->text().toStdString();
    WindowSupport::runTool({"unset", "CPU.Menubar.Enabled"});
    EXPECT_EQ(ToolSupport::runShell(command).exitCode, 0) << command;
    EXPECT_EQ(WindowSupport::runTool({"get", "CPU.Menubar.Enabled"}), "false\n");
}

TEST(MainWindow, DeleteResetsTheSelectedRow) {
    WindowSupport::setByTool("CPU.Menubar.Enabled", "false");
    Opened opened("CPU.Menubar.Enabled");
    ASSERT_TRUE(waitUntil([&] { return opened.view().currentKeyPath() == "CPU.Menubar.Enabled"; }));
    press(Qt::Key_Delete);
    const Tool::PendingEdit* const edit = opened.session.pendingAt("CPU.Menubar.Enabled");
    ASSERT_NE(edit, nullptr);
    EXPECT_TRUE(edit->value.isNull());
}

TEST(MainWindow, EscapeGoesFromTheEditorToTheRowToTheFilter) {
    Opened opened("CPU.Menubar.Mode");
    ASSERT_TRUE(waitUntil([&] { return !opened.view().currentKeyPath().empty(); }));
    opened.action(QStringLiteral("Flat list"))->trigger();
    opened.view().reveal("CPU.Menubar.Enabled");
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return opened.view().isEditing(); }));
    EXPECT_NE(QApplication::focusWidget(), &opened.view());
    press(Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([&] { return !opened.view().isEditing(); }));
    EXPECT_EQ(QApplication::focusWidget(), &opened.view());
    EXPECT_EQ(opened.view().currentKeyPath(), "CPU.Menubar.Enabled");
    press(Qt::Key_Escape);
    ASSERT_NE(qobject_cast<QLineEdit*>(QApplication::focusWidget()), nullptr);
    EXPECT_TRUE(opened.filter().isAncestorOf(QApplication::focusWidget()));
    press(Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget(), &opened.view());
    press(Qt::Key_Slash);
    EXPECT_TRUE(opened.filter().isAncestorOf(QApplication::focusWidget()));
}

TEST(MainWindow, TabReachesEveryControlAndLeavesIt) {
    WindowSupport::runTool({"set", "--any-kind", "CPU.Menubar.Enabled", "yes"});
    Opened opened("CPU.Menubar.Enabled");
    ASSERT_TRUE(waitUntil([&] { return opened.view().currentKeyPath() == "CPU.Menubar.Enabled"; }));
    opened.session.edit("CPU.Menubar.Mode.Percentage.Enabled", true);
    WindowSupport::spin(std::chrono::milliseconds(100));

    const QList<QWidget*> forward = visited(Qt::Key_Tab);
    const QList<QWidget*> backward = visited(Qt::Key_Backtab);
    for (QWidget* const widget : opened.window->findChildren<QWidget*>()) {
        const bool takesTab = (widget->focusPolicy() & Qt::TabFocus) != 0;
        if (!takesTab || !widget->isVisible() || !widget->isEnabled()) continue;
        // Of a group of radio buttons Tab visits the one that is checked; arrows go to the others.
        const auto* const radio = qobject_cast<QRadioButton*>(widget);
        if (radio != nullptr && !radio->isChecked()) continue;
        EXPECT_TRUE(forward.contains(holderOf(widget)))
            << namesOf({widget}).first().toStdString() << " is not reached; reached are "
            << namesOf(forward).join(QStringLiteral(", ")).toStdString();
        EXPECT_TRUE(backward.contains(holderOf(widget))) << namesOf({widget}).first().toStdString();
    }
    EXPECT_GT(forward.size(), 10);
}

TEST(MainWindow, EveryControlHasAName) {
    Opened opened;
    opened.session.edit("CPU.Menubar.Enabled", false);
    WindowSupport::spin(std::chrono::milliseconds(100));
    for (QWidget* const widget : opened.window->findChildren<QWidget*>()) {
        if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisible()) continue;
        if (holderOf(widget) != widget) continue;
        QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(face, nullptr);
        EXPECT_FALSE(face->text(QAccessible::Name).isEmpty())
            << widget->metaObject()->className() << " in "
            << widget->parentWidget()->metaObject()->className();
    }
}

TEST(MainWindow, AChangeOfAnotherProcessLeavesFocusScrollAndTypedText) {
    for (int number = 10; number < 90; ++number)
        WindowSupport::setByTool("Own.Row" + std::to_string(number), std::to_string(number));
    Opened opened;
    opened.action(QStringLiteral("Flat list"))->trigger();
    ASSERT_TRUE(waitUntil([&] { return opened.cell("Own.Row80", RowModel::Value).isValid(); }));
    opened.view().reveal("Own.Row80");
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return opened.view().isEditing(); }));
    QWidget* const editor = QApplication::focusWidget();
    QTest::keyClicks(editor, QStringLiteral("12"));
    const QString typed = qobject_cast<QLineEdit*>(editor)->text();
    const int scrolled = opened.view().verticalScrollBar()->value();
    ASSERT_GT(scrolled, 0);

    WindowSupport::setByTool("Own.Row79", "1979");
    WindowSupport::setByTool("Another.Row", "1");
    ASSERT_TRUE(waitUntil([&] { return opened.value("Own.Row79") == QStringLiteral("1979"); }));
    ASSERT_TRUE(waitUntil([&] { return opened.cell("Another.Row", RowModel::Value).isValid(); }));
    EXPECT_EQ(QApplication::focusWidget(), editor);
    EXPECT_EQ(qobject_cast<QLineEdit*>(editor)->text(), typed);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    // A row has come above: what a person looks at stays where it is, so one more line is above it.
    const QModelIndex current = opened.view().currentIndex();
    EXPECT_EQ(current.data(RowModel::KeyPathRole).toString(), QStringLiteral("Own.Row80"));
    EXPECT_TRUE(opened.view().viewport()->rect().contains(opened.view().visualRect(current)));
}
