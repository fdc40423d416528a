// SPDX-License-Identifier: MIT
// The bar of pending edits, with a real file, the real tool beside it and real applies.

#include "Panes/PendingBar.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>

#include <QAction>
#include <QTest>
#include <QVBoxLayout>
#include <filesystem>

#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Tool/ToolSupport.h"
#include "Window/DialogSupport.h"
#include "Window/WindowSupport.h"

using DialogSupport::press;
using QRVWindow::PendingBar;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";

std::filesystem::path lockFile() {
    return QRVPlatform::filesBeside(ToolSupport::settingsFile()).lock;
}

/// Another process that has the lock of the settings file until it is killed.
class LockHolder {
  public:
    LockHolder() { EXPECT_TRUE(held_.wait()); }
    void release() { process_.send(SIGKILL); }
    [[nodiscard]] pid_t pid() const { return process_.pid(); }

  private:
    Gate held_;
    ChildProcess process_{[this] {
        std::filesystem::create_directories(lockFile().parent_path());
        const int file = open(lockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (file < 0 || flock(file, LOCK_EX) != 0) return false;
        held_.open();
        return pause() == 0;
    }};
};

class PendingBarTest : public DialogSupport::DialogTest {
  public:
    void show() {
        start();
        layout.addWidget(&bar);
        window.resize(900, 100);
        WindowSupport::show(window);
    }
    [[nodiscard]] std::string text() const { return bar.text().toStdString(); }

    QWidget window;
    QVBoxLayout layout{&window};
    PendingBar bar{session};
};

}  // namespace

TEST_F(PendingBarTest, IsHiddenWithoutEditsAndCountsThem) {
    show();
    EXPECT_FALSE(bar.isVisible());
    session.edit(width, 60);
    EXPECT_TRUE(bar.isVisible());
    EXPECT_EQ(text(), "1 setting is pending.");
    session.edit("CPU.Menubar.Enabled", false);
    EXPECT_EQ(text(), "2 settings are pending.");
    press(bar, QStringLiteral("Discard"));
    EXPECT_FALSE(bar.isVisible());
    session.undo();
    EXPECT_EQ(text(), "2 settings are pending.");
}

TEST_F(PendingBarTest, ControlEnterAppliesAndTheBarSaysWhatReachedTheFile) {
    show();
    session.edit(width, 60);
    session.edit("CPU.Menubar.Enabled", false);
    QTest::keyClick(&window, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(session.isApplying());
    EXPECT_THAT(text(), StartsWith("Applying\u2026"));
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return !session.isApplying(); }));
    EXPECT_EQ(text(), "Applied 2 settings.");
    EXPECT_EQ(DialogSupport::storedByTool(width), "60");
    press(bar, QStringLiteral("Close"));
    EXPECT_FALSE(bar.isVisible());
}

TEST_F(PendingBarTest, AnEditAfterAnApplyReplacesItsOutcome) {
    show();
    session.edit(width, 60);
    applyAll();
    EXPECT_EQ(text(), "Applied 1 setting.");
    session.edit(width, 61);
    EXPECT_EQ(text(), "1 setting is pending.");
}

TEST_F(PendingBarTest, NamesAConflictAndWantsAReviewInsteadOfAnApply) {
    show();
    session.edit(width, 60);
    WindowSupport::setByTool(width, "77");
    waitForStored(width, 77);
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return !session.conflicts().empty(); }));
    EXPECT_EQ(text(), std::string("1 setting is pending.\n1 conflict: ") + width +
                          " was changed by another process since you edited it.");
    bool isReviewWanted = false;
    QObject::connect(&bar, &PendingBar::reviewWanted, &window, [&] { isReviewWanted = true; });
    press(bar, QStringLiteral("Apply"));
    EXPECT_TRUE(isReviewWanted);
    EXPECT_FALSE(session.isApplying());
}

TEST_F(PendingBarTest, SaysWhatAnApplyWaitsForAndStopsIt) {
    WindowSupport::setByTool(width, "50");
    show();
    LockHolder holder;
    session.edit(width, 60);
    press(bar, QStringLiteral("Apply"));
    ASSERT_TRUE(WindowSupport::waitUntil([&] {
        return text().find("It waits for") != std::string::npos;
    })) << text();
    EXPECT_THAT(text(), AllOf(HasSubstr("lock"), HasSubstr(std::to_string(holder.pid()))));
    press(bar, QStringLiteral("Stop"));
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return !session.isApplying(); }));
    EXPECT_THAT(text(), AllOf(StartsWith("Not applied: "),
                              HasSubstr("Nothing is lost: 1 setting is still pending.")));
    holder.release();
    EXPECT_EQ(DialogSupport::storedByTool(width), "50");
    press(bar, QStringLiteral("Try again"));
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return !session.isApplying(); }));
    EXPECT_EQ(text(), "Applied 1 setting.");
    EXPECT_EQ(DialogSupport::storedByTool(width), "60");
}

TEST_F(PendingBarTest, AConflictThatOnlyTheApplyFindsWritesNothing) {
    WindowSupport::setByTool(width, "50");
    show();
    session.edit(width, 60);
    session.edit("CPU.Menubar.Enabled", false);
    WindowSupport::setByTool(width, "77");  // the session has not seen it yet
    press(bar, QStringLiteral("Apply"));
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return !session.isApplying(); }));
    EXPECT_THAT(text(), AllOf(StartsWith("Not applied: another process has changed"),
                              HasSubstr("2 settings are still pending")));
    EXPECT_EQ(DialogSupport::storedByTool(width), "77");
    EXPECT_EQ(DialogSupport::storedByTool("CPU.Menubar.Enabled"), "");
}

TEST_F(PendingBarTest, LooksGood) {
    show();
    session.edit(width, 60);
    session.edit("CPU.Menubar.Enabled", false);
    WindowSupport::setByTool(width, "77");
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return !session.conflicts().empty(); }));
    DialogSupport::expectGoodLooks(window, QStringLiteral("pending-bar"));
}
