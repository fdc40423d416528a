// SPDX-License-Identifier: MIT
// Saves of the real tool are taken back.

#include "Dialogs/HistoryDialog.h"

#include <gmock/gmock.h>

#include <QAbstractItemView>

#include "Window/DialogSupport.h"
#include "Window/WindowSupport.h"

#if QRV_HAS_HISTORY
using DialogSupport::linesOf;
using DialogSupport::press;
using DialogSupport::storedByTool;
using QRVWindow::HistoryDialog;
using testing::HasSubstr;

namespace {

class HistoryDialogTest : public DialogSupport::DialogTest {
  public:
    /// Opens the dialog and selects saves, counted from the latest.
    void open(const std::vector<int>& rows) {
        start();
        WindowSupport::show(dialog);
        auto* const saves = dialog.findChild<QAbstractItemView*>(QStringLiteral("historySaves"));
        ASSERT_TRUE(WindowSupport::waitUntil(
            [saves, &rows] { return saves->model()->rowCount() > rows.back(); }));
        saves->clearSelection();
        for (const int row : rows)
            saves->selectionModel()->select(
                saves->model()->index(row, 0),
                QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    [[nodiscard]] std::string cell(std::size_t line, int column) {
        return linesOf(dialog).at(line).at(column).toStdString();
    }
    [[nodiscard]] std::string state() {
        return DialogSupport::labelText(dialog, QStringLiteral("historyState")).toStdString();
    }
    HistoryDialog dialog{session};
};

}  // namespace

TEST_F(HistoryDialogTest, TakesBackSeveralSavesTogether) {
    WindowSupport::setByTool("Some.Value", "1");
    WindowSupport::setByTool("Some.Value", "2");
    WindowSupport::setByTool("Some.Value", "3");
    open({0, 1});
    ASSERT_EQ(linesOf(dialog).size(), 1U);
    EXPECT_EQ(cell(0, HistoryDialog::Setting), "Some.Value");
    EXPECT_EQ(cell(0, HistoryDialog::Before), "1");
    EXPECT_EQ(cell(0, HistoryDialog::After), "3");
    EXPECT_EQ(cell(0, HistoryDialog::InFile), "3");
    press(dialog, QStringLiteral("Take back"));
    EXPECT_EQ(storedByTool("Some.Value"), "3") << "taking back writes nothing";
    EXPECT_EQ(applyAll().state, Tool::ApplyOutcome::State::Applied);
    EXPECT_EQ(storedByTool("Some.Value"), "1");
}

TEST_F(HistoryDialogTest, SaysWhatWasChangedSinceAndTakesItBackOnRequest) {
    WindowSupport::setByTool("Some.Value", "1");
    WindowSupport::setByTool("Some.Value", "2");
    WindowSupport::setByTool("Some.Value", "3");
    open({1});
    EXPECT_THAT(cell(0, HistoryDialog::Note), HasSubstr("Changed since"));
    EXPECT_EQ(state(), "1 setting was changed since. It stays as it is.");
    press(dialog, QStringLiteral("Take back"));
    EXPECT_TRUE(session.pending().edits().empty());
    press(dialog, QStringLiteral("Take back what was changed since, too"));
    press(dialog, QStringLiteral("Take back"));
    EXPECT_EQ(session.valueWithEdits("Some.Value"), PropertyListValue(1));
}

TEST_F(HistoryDialogTest, ShowsSavesOfOthersWhileItIsOpen) {
    WindowSupport::setByTool("Some.Value", "1");
    open({0});
    auto* const saves = dialog.findChild<QAbstractItemView*>(QStringLiteral("historySaves"));
    const int count = saves->model()->rowCount();
    WindowSupport::setByTool("Some.Value", "2");
    EXPECT_TRUE(WindowSupport::waitUntil(
        [saves, count] { return saves->model()->rowCount() == count + 1; }));
}

TEST_F(HistoryDialogTest, LooksGood) {
    WindowSupport::setByTool("Some.Value", "1");
    WindowSupport::setByTool("Network.Menubar.Mode.Status.NoIP.Color", "1 0.2 0 0.5");
    WindowSupport::setByTool("Network.Menubar.Mode.Status.NoIP.Color", "0 0.2 0 1");
    open({0, 1});
    DialogSupport::expectGoodLooks(dialog, QStringLiteral("history"));
    DialogSupport::expectEscapeCloses(dialog);
}
#endif
