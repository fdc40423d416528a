// SPDX-License-Identifier: MIT
#include "Dialogs/KeysDialog.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QTreeWidget>

#include "Window/DialogSupport.h"
#include "Window/WindowSupport.h"

using QRVWindow::KeysDialog;

TEST(KeysDialog, ListsTheKeysThatTheActionsHave) {
    QAction save(QStringLiteral("&Apply\u2026"));
    save.setShortcuts(
        {QKeySequence(QStringLiteral("Ctrl+Return")), QKeySequence(QStringLiteral("Ctrl+Enter"))});
    QAction without(QStringLiteral("Without"));
    QAction both(QStringLiteral("Cut && &Paste"));
    both.setShortcut(QKeySequence(QStringLiteral("Ctrl+B")));
    KeysDialog dialog({&save, &without, &both},
                      {{QStringLiteral("Space"), QStringLiteral("Check a line")}});
    WindowSupport::show(dialog);
    const auto* const list = dialog.findChild<QTreeWidget*>();
    ASSERT_EQ(list->topLevelItemCount(), 3);
    EXPECT_EQ(list->topLevelItem(0)->text(0), QStringLiteral("Apply"));
    EXPECT_EQ(list->topLevelItem(0)->text(1), QStringLiteral("Ctrl+Return or Ctrl+Enter"));
    EXPECT_EQ(list->topLevelItem(1)->text(0), QStringLiteral("Cut & Paste"));
    EXPECT_EQ(list->topLevelItem(2)->text(1), QStringLiteral("Space"));
    DialogSupport::expectGoodLooks(dialog, QStringLiteral("keys"));
    DialogSupport::expectEscapeCloses(dialog);
}
