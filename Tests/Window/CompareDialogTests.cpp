// SPDX-License-Identifier: MIT
// The comparison with defaults, profiles, files and moments of the history, on real files.

#include "Dialogs/CompareDialog.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <filesystem>

#include "Dialogs/ChangeView.h"
#include "Tool/ToolSupport.h"
#include "Window/DialogSupport.h"
#include "Window/WindowSupport.h"

using DialogSupport::linesOf;
using DialogSupport::press;
using DialogSupport::storedByTool;
using QRVWindow::CompareDialog;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";

using Side = CompareDialog::Side;

class CompareDialogTest : public DialogSupport::DialogTest {
  public:
    void open(Side side, const QString& profile = QString()) {
        dialog.compareWith(side, profile);
        WindowSupport::show(dialog);
    }
    /// "setting|sign|here|there", a line each.
    [[nodiscard]] std::vector<std::string> lines() {
        std::vector<std::string> texts;
        for (const QStringList& cells : linesOf(dialog))
            texts.push_back(cells.join(QLatin1Char('|')).toStdString());
        return texts;
    }
    [[nodiscard]] bool waitForLines(const std::vector<std::string>& expected) {
        return WindowSupport::waitUntil([&] { return lines() == expected; });
    }
    [[nodiscard]] std::string state() {
        return DialogSupport::labelText(dialog, QStringLiteral("compareState")).toStdString();
    }
    void checkAll() { press(dialog, QStringLiteral("All lines")); }

    CompareDialog dialog{session};
};

std::string path(const std::string& name) {
    return (ToolSupport::configurationFolder() / name).string();
}

}  // namespace

TEST_F(CompareDialogTest, ShowsWhatDiffersFromTheDefaultsAndTakesThem) {
    WindowSupport::setByTool(width, "50");
    WindowSupport::setByTool("Some.New", "1");
    start();
    open(Side::Defaults);
    ASSERT_EQ(lines().size(), 2U);
    EXPECT_THAT(lines()[0], HasSubstr(std::string(width) + "|differs|50|"));
    EXPECT_EQ(lines()[1], "Some.New|only here|1|not stored");
    checkAll();
    press(dialog, QStringLiteral("Take their values"));
    EXPECT_EQ(session.pending().edits().size(), 2U);
    EXPECT_EQ(applyAll().state, Tool::ApplyOutcome::State::Applied);
    EXPECT_EQ(storedByTool(width), "");
    EXPECT_EQ(storedByTool("Some.New"), "");
    EXPECT_TRUE(waitForLines({}));
    EXPECT_EQ(state(), "Both sides are equal.");
}

TEST_F(CompareDialogTest, ComparesWithAProfileAndTakesChosenValues) {
    WindowSupport::setByTool("Some.Here", "1");
    DialogSupport::setInProfileByTool("travel", "Some.There", "2");
    DialogSupport::setInProfileByTool("travel", "Some.Both", "3");
    DialogSupport::setInProfileByTool("home", "Some.Both", "4");
    start();
    session.setProfile(QStringLiteral("travel"));
    open(Side::Profile, QStringLiteral("home"));
    EXPECT_EQ(lines(), (std::vector<std::string>{"Some.Both|differs|3|4",
                                                 "Some.There|only here|2|not stored"}));
    DialogSupport::modelOf(dialog).setChecked({{"Some.Both", "travel"}}, true);
    press(dialog, QStringLiteral("Take their values"));
    EXPECT_EQ(applyAll().state, Tool::ApplyOutcome::State::Applied);
    EXPECT_EQ(storedByTool("Some.Both", "travel"), "4");
    EXPECT_EQ(storedByTool("Some.There", "travel"), "2");
}

TEST_F(CompareDialogTest, ComparesWithTheStartOfTheWindowWhileOthersWrite) {
    WindowSupport::setByTool("Some.Value", "1");
    start();
    open(Side::AtStart);
    EXPECT_THAT(lines(), IsEmpty());
    WindowSupport::setByTool("Some.Value", "2");
    EXPECT_TRUE(waitForLines({"Some.Value|differs|2|1"}));
}

TEST_F(CompareDialogTest, ComparesWithFilesOfBothFormsAndNamesWhatIsWrongWithOthers) {
    WindowSupport::setByTool("Some.Value", "1");
    start();
    open(Side::Defaults);
    ToolSupport::writeFile(path("other.json"), R"({"Some": {"Value": 2, "New": true}})");
    dialog.compareWithFile(QString::fromStdString(path("other.json")));
    EXPECT_EQ(lines(), (std::vector<std::string>{"Some.New|only there|not stored|true",
                                                 "Some.Value|differs|1|2"}));
    ToolSupport::writeFile(path("other.plist"),
                           ToolSupport::propertyList(
                               "<key>Some</key><dict><key>Value</key><integer>3</integer></dict>"));
    dialog.compareWithFile(QString::fromStdString(path("other.plist")));
    EXPECT_EQ(lines(), std::vector<std::string>{"Some.Value|differs|1|3"});
    ToolSupport::writeFile(path("wrong.json"), "{\n \"a\": }");
    dialog.compareWithFile(QString::fromStdString(path("wrong.json")));
    EXPECT_THAT(lines(), IsEmpty());
    EXPECT_THAT(state(), HasSubstr("line 2"));
    dialog.compareWithFile(QString::fromStdString(path("missing")));
    EXPECT_THAT(state(), HasSubstr("cannot be read"));
}

#if QRV_HAS_HISTORY
TEST_F(CompareDialogTest, ComparesWithAMomentOfTheHistory) {
    WindowSupport::setByTool("Some.Value", "1");
    WindowSupport::setByTool("Some.Value", "2");
    WindowSupport::setByTool("Some.Other", "true");
    start();
    open(Side::Moment);
    // The latest save is chosen at first: before it there was no other setting.
    ASSERT_TRUE(waitForLines({"Some.Other|only here|true|not stored"})) << state();
    auto* const saves = dialog.findChild<QAbstractItemView*>(QStringLiteral("compareSaves"));
    saves->setCurrentIndex(saves->model()->index(1, 0));
    EXPECT_TRUE(waitForLines({"Some.Other|only here|true|not stored", "Some.Value|differs|2|1"}));
    auto* const time = dialog.findChild<QLineEdit*>(QStringLiteral("compareTime"));
    QTest::keyClicks(time, QStringLiteral("10 minutes ago"));
    EXPECT_TRUE(waitForLines(
        {"Some.Other|only here|true|not stored", "Some.Value|only here|2|not stored"}));
    time->setText(QStringLiteral("some day"));
    EXPECT_THAT(lines(), IsEmpty());
    EXPECT_THAT(state(), HasSubstr("some day"));
}
#endif

TEST_F(CompareDialogTest, FiltersAndTakesOnlyWhatIsShown) {
    for (const char* name : {"Some.One", "Some.Two", "Other.One"})
        WindowSupport::setByTool(name, "7");
    start();
    open(Side::Defaults);
    QTest::keyClicks(dialog.findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly),
                     QStringLiteral("one"));
    EXPECT_EQ(lines().size(), 2U);
    EXPECT_EQ(state(), "The filter shows 2 of 3 differences.");
    checkAll();
    press(dialog, QStringLiteral("Take their values"));
    EXPECT_EQ(session.pending().edits().size(), 2U);
}

TEST_F(CompareDialogTest, CopiedCommandsTakeTheirValues) {
    WindowSupport::setByTool("Some.Value", "1");
    ToolSupport::writeFile(path("other.json"), R"({"Some": {"New": "it's $1"}})");
    start();
    open(Side::Defaults);
    dialog.compareWithFile(QString::fromStdString(path("other.json")));
    checkAll();
    press(dialog, QStringLiteral("Copy as commands"));
    const std::string commands = QApplication::clipboard()->text().toStdString();
    const ToolSupport::Outcome ran = ToolSupport::runShell(commands);
    EXPECT_EQ(ran.exitCode, 0) << commands << ran.errors;
    EXPECT_TRUE(waitForLines({}));
}

TEST_F(CompareDialogTest, LooksGood) {
    WindowSupport::setByTool(width, "50");
    WindowSupport::setByTool("Network.Menubar.Mode.Status.NoIP.Color", "1 0.2 0 0.5");
    start();
    open(Side::Moment);
    ASSERT_TRUE(WindowSupport::waitUntil([this] { return !lines().empty(); }));
    DialogSupport::expectGoodLooks(dialog, QStringLiteral("compare"));
    DialogSupport::expectEscapeCloses(dialog);
}
