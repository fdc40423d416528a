// SPDX-License-Identifier: MIT
// Import with its preview and export, and copies to a profile, on real files.

#include "Dialogs/ImportExport.h"

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <filesystem>

#include "Dialogs/ChangeView.h"
#include "Dialogs/CopyToProfileDialog.h"
#include "Platform/Files/Files.h"
#include "Tool/ToolSupport.h"
#include "Window/DialogSupport.h"
#include "Window/WindowSupport.h"

using DialogSupport::linesOf;
using DialogSupport::press;
using DialogSupport::storedByTool;
using QRVWindow::ExportDialog;
using QRVWindow::ExportOptions;
using QRVWindow::ImportDialog;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";

std::string path(const std::string& name) {
    return (ToolSupport::configurationFolder() / name).string();
}

/// The next message box is answered with this button.
void answerNext(const QString& text) {
    auto* const timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, text] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) return;
        press(*box, text);
        timer->deleteLater();
    });
    timer->start(5);
}

class ImportExportTest : public DialogSupport::DialogTest {
  public:
    void exportTo(const std::string& file, ExportOptions::Form form, bool isPortable = false,
                  int content = 0, std::vector<std::string> selection = {}) {
        ExportDialog dialog(session, std::move(selection));
        WindowSupport::show(dialog);
        dialog.findChild<QComboBox*>(QStringLiteral("exportForm"))
            ->setCurrentIndex(static_cast<int>(form));
        dialog.findChild<QComboBox*>(QStringLiteral("exportContent"))->setCurrentIndex(content);
        dialog.findChild<QCheckBox*>()->setChecked(isPortable);
        dialog.findChild<QLineEdit*>(QStringLiteral("exportPath"))
            ->setText(QString::fromStdString(file));
        press(dialog, QStringLiteral("Save"));
        fault = DialogSupport::labelText(dialog, QStringLiteral("exportState")).toStdString();
        EXPECT_EQ(dialog.isVisible(), !fault.empty());
    }
    /// What the tool of another configuration folder exports after these lines of a shell.
    static std::string exportedElsewhere(const std::string& lines) {
        const std::string other = path("elsewhere");
        std::filesystem::create_directories(other);
        const ToolSupport::Outcome ran =
            ToolSupport::runShell("export XDG_CONFIG_HOME='" + other + "'\n" + lines +
                                  "\nqrvsettings list --layer stored\n");
        EXPECT_EQ(ran.exitCode, 0) << lines << ran.errors;
        return ran.output;
    }
    std::string fault;
};

std::string listed() {
    return WindowSupport::runTool({"list", "--layer", "stored"});
}

void fill() {
    WindowSupport::setByTool(width, "50");
    WindowSupport::setByTool("Some.Text", "it's \"so\" $HOME");
    DialogSupport::setInProfileByTool("travel", "Some.Date", "2.5");
}

}  // namespace

TEST_F(ImportExportTest, AnExportIsImportedElsewhereAsTheSameTree) {
    fill();
    start();
    exportTo(path("all.plist"), ExportOptions::Form::PropertyList);
    exportTo(path("all.json"), ExportOptions::Form::JSON);
    EXPECT_EQ(exportedElsewhere("qrvsettings import '" + path("all.plist") + "'"), listed());
    EXPECT_EQ(exportedElsewhere("qrvsettings import '" + path("all.json") + "'"), listed());
}

TEST_F(ImportExportTest, AnExportThatTheWindowImportsGivesTheSameTree) {
    fill();
    start();
    exportTo(path("all.plist"), ExportOptions::Form::PropertyList);
    const std::string before = listed();
    WindowSupport::runTool({"unset", "Some.Text"});
    WindowSupport::setByTool(width, "70");
    WindowSupport::setByTool("Some.New", "1");
    waitForStored("Some.New", 1);
    ImportDialog dialog(session, QString::fromStdString(path("all.plist")));
    WindowSupport::show(dialog);
    EXPECT_EQ(linesOf(dialog).size(), 3U);
    EXPECT_NE(listed(), before);
    press(dialog, QStringLiteral("Make pending edits"));
    EXPECT_EQ(session.pending().edits().size(), 3U);
    EXPECT_NE(listed(), before) << "an import writes nothing";
    EXPECT_EQ(applyAll().state, Tool::ApplyOutcome::State::Applied);
    EXPECT_EQ(listed(), before);
    session.undo();
    EXPECT_EQ(session.pending().edits().size(), 3U);
}

TEST_F(ImportExportTest, SettingsThatAFileDoesNotHoldStayOnRequest) {
    fill();
    start();
    ToolSupport::writeFile(path("part.json"), R"({"Some": {"New": 1}})");
    ImportDialog dialog(session, QString::fromStdString(path("part.json")));
    WindowSupport::show(dialog);
    EXPECT_GT(linesOf(dialog).size(), 1U);
    press(dialog, QStringLiteral("Reset settings that the file does not hold"));
    EXPECT_EQ(linesOf(dialog).size(), 1U);
    press(dialog, QStringLiteral("Make pending edits"));
    EXPECT_EQ(applyAll().state, Tool::ApplyOutcome::State::Applied);
    EXPECT_EQ(storedByTool("Some.New"), "1");
    EXPECT_EQ(storedByTool(width), "50");
}

TEST_F(ImportExportTest, AFileThatHoldsNoSettingsIsNamedAndChangesNothing) {
    start();
    ToolSupport::writeFile(path("wrong"), "{\n\"a\": }");
    ImportDialog dialog(session, QString::fromStdString(path("wrong")));
    WindowSupport::show(dialog);
    EXPECT_THAT(DialogSupport::labelText(dialog, QStringLiteral("importState")).toStdString(),
                HasSubstr("line 2"));
    EXPECT_FALSE(
        DialogSupport::buttonOf(dialog, QStringLiteral("Make pending edits"))->isEnabled());
    DialogSupport::expectEscapeCloses(dialog);
}

TEST_F(ImportExportTest, CommandsOfAnExportMakeTheSameSettingsElsewhere) {
    fill();
    start();
    exportTo(path("all.sh"), ExportOptions::Form::Commands);
    const std::string commands = ToolSupport::contentsOf(path("all.sh"));
    EXPECT_THAT(commands, Not(HasSubstr("Device.Device")));
    exportedElsewhere(commands);
    exportTo(path("all.plist"), ExportOptions::Form::PropertyList);
    const std::string difference =
        ToolSupport::runShell("export XDG_CONFIG_HOME='" + path("elsewhere") +
                              "'\nqrvsettings diff '" + path("all.plist") + "'\n")
            .output;
    EXPECT_EQ(difference, "");
}

TEST_F(ImportExportTest, APortableExportLeavesOutTheMachine) {
    fill();
    start();
    exportTo(path("here.json"), ExportOptions::Form::JSON);
    exportTo(path("portable.json"), ExportOptions::Form::JSON, true);
    EXPECT_THAT(ToolSupport::contentsOf(path("here.json")), HasSubstr("\"Device\""));
    EXPECT_THAT(ToolSupport::contentsOf(path("portable.json")), Not(HasSubstr("\"Device\"")));
    EXPECT_EQ(ToolSupport::contentsOf(path("portable.json")),
              WindowSupport::runTool({"export", "--json", "--portable"}));
}

TEST_F(ImportExportTest, AnExportOfTheSelectionHoldsNothingElse) {
    fill();
    start();
    exportTo(path("some.json"), ExportOptions::Form::JSON, false, 1, {"Some.Text"});
    EXPECT_EQ(ToolSupport::contentsOf(path("some.json")),
              "{\"Some\":{\"Text\":\"it's \\\"so\\\" $HOME\"}}\n");
}

TEST_F(ImportExportTest, ANewFileIsForItsOwnerOnlyAndAnExistingOneIsAskedFor) {
    fill();
    start();
    exportTo(path("all.json"), ExportOptions::Form::JSON);
    EXPECT_EQ(QRVPlatform::attributesOfItemAtPath(path("all.json"))->mode, 0600U);
    ToolSupport::writeFile(path("all.json"), "mine");
    answerNext(QStringLiteral("Cancel"));
    ExportDialog dialog(session, {});
    WindowSupport::show(dialog);
    dialog.findChild<QLineEdit*>(QStringLiteral("exportPath"))
        ->setText(QString::fromStdString(path("all.json")));
    press(dialog, QStringLiteral("Save"));
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(ToolSupport::contentsOf(path("all.json")), "mine");
    answerNext(QStringLiteral("Replace"));
    press(dialog, QStringLiteral("Save"));
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_NE(ToolSupport::contentsOf(path("all.json")), "mine");
}

TEST_F(ImportExportTest, TheSettingsFileIsNoTargetByAnyName) {
    fill();
    start();
    const std::string before = ToolSupport::contentsOf(ToolSupport::settingsFile());
    const std::string link = path("link");
    std::filesystem::create_symlink(ToolSupport::settingsFile(), link);
    const std::string hardLink = path("hardlink");
    std::filesystem::create_hard_link(ToolSupport::settingsFile(), hardLink);
    for (const std::string& file : {ToolSupport::settingsFile().string(), link, hardLink}) {
        answerNext(QStringLiteral("Replace"));
        exportTo(file, ExportOptions::Form::JSON);
        EXPECT_THAT(fault, HasSubstr("is the settings file itself"));
    }
    EXPECT_EQ(ToolSupport::contentsOf(ToolSupport::settingsFile()), before);
}

TEST_F(ImportExportTest, WhatCannotBeWrittenIsNamed) {
    fill();
    start();
    exportTo("/nowhere/at/all.json", ExportOptions::Form::JSON);
    EXPECT_THAT(fault, HasSubstr("cannot be written"));
}

TEST_F(ImportExportTest, TakesOneLocalFileThatIsDragged) {
    QMimeData data;
    EXPECT_EQ(QRVWindow::draggedFile(data), QString());
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/a b"))});
    EXPECT_EQ(QRVWindow::draggedFile(data), QStringLiteral("/a b"));
    data.setUrls({QUrl(QStringLiteral("https://localhost/a"))});
    EXPECT_EQ(QRVWindow::draggedFile(data), QString());
}

TEST_F(ImportExportTest, SettingsAreCopiedToANewProfile) {
    fill();
    start();
    session.edit("Some.Text", "edited");
    QRVWindow::CopyToProfileDialog dialog(session, {width, "Some.Text", "Device.Device"});
    WindowSupport::show(dialog);
    auto* const name = dialog.findChild<QComboBox*>();
    name->setEditText(QStringLiteral("a.b"));
    EXPECT_FALSE(DialogSupport::buttonOf(dialog, QStringLiteral("Copy"))->isEnabled());
    name->setEditText(QStringLiteral("office"));
    press(dialog, QStringLiteral("Copy"));
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(applyAll().state, Tool::ApplyOutcome::State::Applied);
    EXPECT_EQ(storedByTool(width, "office"), "50");
    EXPECT_EQ(storedByTool("Some.Text", "office"), "edited");
    EXPECT_EQ(storedByTool("Device.Device", "office"), "");
}

TEST_F(ImportExportTest, LooksGood) {
    fill();
    start();
    ToolSupport::writeFile(path("part.json"),
                           R"({"Some": {"New": 1}, "CPU": {"Menubar": {"Enabled": "maybe"}}})");
    ImportDialog import(session, QString::fromStdString(path("part.json")));
    DialogSupport::expectGoodLooks(import, QStringLiteral("import"));
    ExportDialog exporting(session, {width, "Some.Text"});
    DialogSupport::expectGoodLooks(exporting, QStringLiteral("export"));
    QRVWindow::CopyToProfileDialog copying(session, {width, "Some.Text"});
    DialogSupport::expectGoodLooks(copying, QStringLiteral("copy-to-profile"));
}
