// SPDX-License-Identifier: MIT
// The review of pending edits: its buttons pressed, with real files, applies and other processes.

#include "Dialogs/ReviewDialog.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QTest>
#include <filesystem>
#include <sstream>

#include "Dialogs/ChangeView.h"
#include "Tool/ToolSupport.h"
#include "Window/DialogSupport.h"
#include "Window/WindowSupport.h"

using DialogSupport::linesOf;
using DialogSupport::press;
using DialogSupport::storedByTool;
using QRVWindow::ChangeView;
using QRVWindow::ReviewDialog;
using testing::HasSubstr;
using testing::SizeIs;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";
constexpr const char* color = "Network.Menubar.Mode.Status.NoIP.Color";

class ReviewDialogTest : public DialogSupport::DialogTest {
  public:
    void open() {
        dialog = std::make_unique<ReviewDialog>(session);
        WindowSupport::show(*dialog);
    }
    [[nodiscard]] std::string cell(std::size_t line, int column) const {
        return linesOf(*dialog).at(line).at(column).toStdString();
    }
    [[nodiscard]] std::string state() const {
        return DialogSupport::labelText(*dialog, QStringLiteral("reviewState")).toStdString();
    }
    /// Makes an edit of a setting that another process changes then.
    void makeConflict() {
        WindowSupport::setByTool(width, "50");
        start();
        session.edit(width, 60);
        open();
        WindowSupport::setByTool(width, "77");
        ASSERT_TRUE(
            WindowSupport::waitUntil([this] { return cell(0, ReviewDialog::InFile) == "77"; }));
    }
    void pressApply(const QString& text) {
        press(*dialog, text);
        ASSERT_TRUE(WindowSupport::waitUntil([this] { return !session.isApplying(); }));
    }
    std::unique_ptr<ReviewDialog> dialog;
};

}  // namespace

TEST_F(ReviewDialogTest, ShowsWhatIsInTheFileWhatWasSeenAndWhatWillBe) {
    WindowSupport::setByTool(width, "50");
    start();
    session.edit(width, 60);
    session.edit(color, "1 0.2 0 1");
    session.reset({width});
    session.edit("Some.New", 1.5);
    open();
    ASSERT_THAT(linesOf(*dialog), SizeIs(3));
    EXPECT_EQ(cell(0, ReviewDialog::Setting), width);
    EXPECT_EQ(cell(0, ReviewDialog::InFile), "50");
    EXPECT_EQ(cell(0, ReviewDialog::Seen), "50");
    EXPECT_THAT(cell(0, ReviewDialog::Result), HasSubstr("not stored: default"));
    EXPECT_EQ(cell(1, ReviewDialog::InFile), "not stored");
    EXPECT_EQ(cell(1, ReviewDialog::Result), R"("1 0.2 0 1")");
    EXPECT_TRUE(DialogSupport::modelOf(*dialog).lineAt(1).cells[ReviewDialog::Result].color);
    EXPECT_EQ(cell(2, ReviewDialog::Result), "1.5");
}

TEST_F(ReviewDialogTest, SaysTheObjectionThatSetHasAndAnotherKind) {
    WindowSupport::setByTool(width, "50");
    start();
    session.edit(width, "wide");
    open();
    EXPECT_EQ(cell(0, ReviewDialog::InFile), "50 (integer)");
    EXPECT_EQ(cell(0, ReviewDialog::Result), R"("wide" (string))");
    const ToolSupport::Outcome refused = ToolSupport::run({"set", width, "wide"});
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_FALSE(cell(0, ReviewDialog::Note).empty());
    EXPECT_THAT(refused.errors, HasSubstr(cell(0, ReviewDialog::Note)));
    dialog->findChild<ChangeView*>()->selectAll();
    EXPECT_THAT(state(), HasSubstr(cell(0, ReviewDialog::Note)));
}

TEST_F(ReviewDialogTest, KeepingMineSettlesAConflictAndTheApplyWritesIt) {
    makeConflict();
    EXPECT_EQ(cell(0, ReviewDialog::Seen), "50");
    EXPECT_THAT(cell(0, ReviewDialog::Note), HasSubstr("Another process changed it"));
    EXPECT_THAT(state(), HasSubstr("1 conflict is not settled"));
    EXPECT_FALSE(DialogSupport::buttonOf(*dialog, QStringLiteral("Apply"))->isEnabled());
    dialog->findChild<ChangeView*>()->selectAll();
    press(*dialog, QStringLiteral("Keep mine"));
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return state().empty(); }));
    pressApply(QStringLiteral("Apply 1"));
    EXPECT_EQ(storedByTool(width), "60");
    EXPECT_THAT(state(), HasSubstr("Applied 1 setting."));
    EXPECT_TRUE(WindowSupport::waitUntil([this] { return linesOf(*dialog).empty(); }));
}

TEST_F(ReviewDialogTest, TakingTheirsSettlesAConflictAndLeavesTheFile) {
    makeConflict();
    session.edit("CPU.Menubar.Enabled", false);
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return linesOf(*dialog).size() == 2; }));
    dialog->findChild<ChangeView*>()->selectAll();
    press(*dialog, QStringLiteral("Take theirs"));
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return linesOf(*dialog).size() == 1; }));
    pressApply(QStringLiteral("Apply 1"));
    EXPECT_EQ(storedByTool(width), "77");
    EXPECT_EQ(storedByTool("CPU.Menubar.Enabled"), "false");
}

TEST_F(ReviewDialogTest, AConflictIsSelectedSoThatItCanBeSettledAtOnce) {
    makeConflict();
    press(*dialog, QStringLiteral("Take theirs"));
    EXPECT_TRUE(WindowSupport::waitUntil([this] { return linesOf(*dialog).empty(); }));
}

TEST_F(ReviewDialogTest, AConflictIsSettledInItsLineByKeyboard) {
    makeConflict();
    auto* const view = dialog->findChild<ChangeView*>();
    view->setFocus();
    view->setCurrentIndex(view->model()->index(0, ReviewDialog::Choice));
    QTest::keyClick(view, Qt::Key_F2);
    auto* const box = view->findChild<QComboBox*>();
    ASSERT_NE(box, nullptr);
    QTest::keyClick(box, Qt::Key_Down);
    QTest::keyClick(box, Qt::Key_Return);
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return session.conflicts().empty(); }));
    EXPECT_NE(session.pendingAt(width), nullptr);
}

TEST_F(ReviewDialogTest, OnlyCheckedEditsAreAppliedAndAConflictStaysPending) {
    makeConflict();
    session.edit("CPU.Menubar.Enabled", false);
    session.edit("Some.New", 1);
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return linesOf(*dialog).size() == 3; }));
    auto* const view = dialog->findChild<ChangeView*>();
    view->setCurrentIndex(
        view->model()->index(DialogSupport::modelOf(*dialog).rowOf({"Some.New", ""}), 0));
    QTest::keyClick(view, Qt::Key_Space);
    pressApply(QStringLiteral("Apply 1"));
    EXPECT_EQ(storedByTool("CPU.Menubar.Enabled"), "false");
    EXPECT_EQ(storedByTool("Some.New"), "");
    EXPECT_EQ(storedByTool(width), "77");
    EXPECT_EQ(session.pending().edits().size(), 2U);
}

TEST_F(ReviewDialogTest, FiftyEditsReachTheFileInOneSave) {
    start();
    std::vector<Tool::PendingEdits::Request> requests;
    for (int index = 0; index < 50; ++index)
        requests.push_back({.place = {"Some.Level" + std::to_string(index), ""},
                            .value = index,
                            .byDefault = nullptr});
    session.edit(requests, QStringLiteral("many"));
    open();
    pressApply(QStringLiteral("Apply 50"));
    EXPECT_THAT(state(), HasSubstr("Applied 50 settings."));
    EXPECT_EQ(storedByTool("Some.Level49"), "49");
#if QRV_HAS_HISTORY
    std::istringstream history(WindowSupport::runTool({"history"}));
    int saves = 0;
    for (std::string line; std::getline(history, line);)
        if (!line.starts_with(' ')) ++saves;
    EXPECT_EQ(saves, 1) << history.str();
#endif
}

TEST_F(ReviewDialogTest, DiscardsCheckedEditsAndUndoBringsThemBack) {
    start();
    session.edit(width, 60);
    session.edit("Some.New", 1);
    open();
    auto* const view = dialog->findChild<ChangeView*>();
    view->setCurrentIndex(view->model()->index(0, 0));
    QTest::keyClick(view, Qt::Key_Space);
    press(*dialog, QStringLiteral("Discard checked"));
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return linesOf(*dialog).size() == 1; }));
    EXPECT_EQ(cell(0, ReviewDialog::Setting), width);
    session.undo();
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return linesOf(*dialog).size() == 2; }));
}

TEST_F(ReviewDialogTest, CopiedCommandsMakeAnotherFileHoldTheSame) {
    WindowSupport::setByTool(width, "50");
    start();
    session.edit("Some.It's \"quoted\" $HOME", "a 'b' \"c\" $d\n-e");
    session.edit("Some.Negative", -3);
    session.edit(width, 2.0);
    session.edit("CPU.Menubar.Enabled", false);
    open();
    press(*dialog, QStringLiteral("Copy as commands"));
    const std::string commands = QApplication::clipboard()->text().toStdString();
    EXPECT_EQ(applyAll().state, Tool::ApplyOutcome::State::Applied);
    const std::filesystem::path other = ToolSupport::configurationFolder() / "other";
    std::filesystem::create_directories(other);
    const auto exported = other / "exported.plist";
    WindowSupport::runTool({"export", exported.string()});
    const ToolSupport::Outcome ran =
        ToolSupport::runShell("export XDG_CONFIG_HOME='" + other.string() + "'\n" + commands +
                              "\nqrvsettings diff '" + exported.string() + "'\n");
    EXPECT_EQ(ran.exitCode, 0) << ran.errors << ran.output << commands;
}

TEST_F(ReviewDialogTest, EscapeClosesItAndLosesNothing) {
    start();
    session.edit(width, 60);
    open();
    DialogSupport::expectEscapeCloses(*dialog);
    EXPECT_EQ(session.pending().edits().size(), 1U);
}

TEST_F(ReviewDialogTest, LooksGood) {
    makeConflict();
    session.edit(color, "1 0.2 0 0.5");
    session.edit("CPU.Menubar.Enabled", "yes");
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return linesOf(*dialog).size() == 3; }));
    DialogSupport::expectGoodLooks(*dialog, QStringLiteral("review"));
}
