// SPDX-License-Identifier: MIT
// The window as a whole: what it opens at, its keys, and its end.
#include "Main/MainWindow.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <optional>

#include "Main/WindowState.h"
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
        EXPECT_TRUE(waitUntil([&] {
            return session.fileState().kind != QRVWindow::FileState::Kind::NotRead;
        }));
        QApplication::setActiveWindow(&*window);
    }
    [[nodiscard]] RowView& view() const { return *window->findChild<RowView*>(); }
    [[nodiscard]] FilterBar& filter() const { return *window->findChild<FilterBar*>(); }
    [[nodiscard]] QAction* action(const QString& beginning) const {
        for (QAction* const action : window->findChildren<QAction*>())
            if (action->text().remove(QLatin1Char('&')).startsWith(beginning)) return action;
        return nullptr;
    }
    [[nodiscard]] QString value(const std::string& keyPath) const {
        const auto* const model = view().model();
        for (int row = 0; row < model->rowCount(); ++row)
            if (model->index(row, 0).data(RowModel::KeyPathRole).toString().toStdString() ==
                keyPath)
                return model->index(row, RowModel::Value).data().toString();
        return {};
    }

    Session session;
    std::optional<MainWindow> window;
};

void press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(&widget, key, modifiers);
}

QPushButton* buttonOf(const QMessageBox& box, const QString& text) {
    for (QPushButton* const button : box.findChildren<QPushButton*>())
        if (button->text().remove(QLatin1Char('&')) == text) return button;
    return nullptr;
}

}  // namespace

TEST(MainWindow, OpensAtAKeyPath) {
    WindowSupport::setByTool("CPU.Menubar.Enabled", "false");
    const Opened opened("CPU.Menubar.Enabled");
    ASSERT_TRUE(waitUntil([&] { return opened.view().currentKeyPath() == "CPU.Menubar.Enabled"; }));
    EXPECT_EQ(opened.value("CPU.Menubar.Enabled"), QStringLiteral("false"));
    WindowSupport::grab(*opened.window, QStringLiteral("opened"));
}

TEST(MainWindow, SaysWhatAMistypedKeyPathMayMean) {
    const Opened opened("CPU.Menubar.Enable");
    ASSERT_TRUE(waitUntil([&] { return !opened.window->statusBar()->currentMessage().isEmpty(); }));
    EXPECT_TRUE(opened.window->statusBar()->currentMessage().contains(
        QStringLiteral("CPU.Menubar.Enabled")));
}
