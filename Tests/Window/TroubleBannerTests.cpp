// SPDX-License-Identifier: MIT
// What the banner says of files that are damaged, missing, read-only or odd; nothing of a clean
// one.
#include "Panes/TroubleBanner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <QClipboard>
#include <QPushButton>
#include <QTextEdit>
#include <cstdlib>
#include <filesystem>

#include "Look/Theme.h"
#include "Tool/ToolSupport.h"
#include "Window/PictureRules.h"
#include "Window/WindowSupport.h"

namespace {

using QRVWindow::Findings;
using QRVWindow::Session;
using QRVWindow::Trouble;
using QRVWindow::TroubleBanner;
using WindowSupport::setByTool;
using WindowSupport::waitUntil;

constexpr const char* enabled = "CPU.Menubar.Enabled";

/// A file as private as the store makes it.
void writeSettings(const std::string& bytes) {
    ToolSupport::writeSettings(bytes);
    ASSERT_EQ(chmod(ToolSupport::settingsFile().c_str(), 0600), 0);
}

constexpr uid_t nobody = 65534;
constexpr uid_t nobodyKnown = 54321;

/// From here on this process and the files of the test are nobody's: root may do anything. Another
/// user stays who it is. False where nobody cannot run the window.
bool becomeNobody() {
    if (geteuid() != 0) return true;
    const std::filesystem::path folder = std::filesystem::current_path();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (lchown(entry.path().c_str(), nobody, nobody) != 0) return false;
    return lchown(folder.c_str(), nobody, nobody) == 0 && setresuid(nobody, nobody, nobody) == 0 &&
           access(QRV_WINDOW, X_OK) == 0;
}

class TroubleBannerTests : public testing::Test {
  protected:
    void SetUp() override { Findings::setProgram(QStringLiteral(QRV_WINDOW)); }
    void start() {
        session_ = std::make_unique<Session>();
        findings_ = std::make_unique<Findings>();
        banner_ = std::make_unique<TroubleBanner>(*session_, *findings_, &window_);
        window_.resize(700, 300);
        WindowSupport::show(window_);
        banner_->setGeometry(0, 0, 700, 300);
        session_->start();
        ASSERT_TRUE(waitUntil(
            [&] { return session_->fileState().kind != QRVWindow::FileState::Kind::NotRead; }));
    }
    void TearDown() override { banner_.reset(); }
    [[nodiscard]] std::string texts() const {
        return banner_->texts().join(QLatin1Char('\n')).toStdString();
    }
    [[nodiscard]] bool waitForText(const std::string& text) {
        return waitUntil([&] { return texts().find(text) != std::string::npos; });
    }
    [[nodiscard]] bool waitForExamination() {
        bool hasRun = false;
        return waitUntil([&] {
            hasRun = hasRun || findings_->isExamining();
            return hasRun && !findings_->isExamining();
        });
    }
    [[nodiscard]] QPushButton* button(const QString& text) {
        for (auto* const one : banner_->findChildren<QPushButton*>())
            if (one->text() == text && one->isVisible()) return one;
        ADD_FAILURE() << "there is no " << text.toStdString();
        return nullptr;
    }

    QWidget window_;
    std::unique_ptr<Session> session_;
    std::unique_ptr<Findings> findings_;
    std::unique_ptr<TroubleBanner> banner_;
};

}  // namespace

TEST_F(TroubleBannerTests, ACleanFileShowsNothing) {
    setByTool(enabled, "false");
    start();
    ASSERT_TRUE(waitForExamination());
    EXPECT_EQ(texts(), "");
    EXPECT_FALSE(banner_->isVisible());
}

TEST_F(TroubleBannerTests, AMissingFileIsANote) {
    start();
    EXPECT_EQ(texts(),
              "Note: There is no settings file yet: everything has its default. The first change "
              "that is applied makes one.");
    ASSERT_TRUE(waitForExamination());
    EXPECT_EQ(banner_->troubles().size(), 1U) << texts();
}

TEST_F(TroubleBannerTests, ADamagedFileIsNamedWithLineAndColumnAndWhatToDo) {
    writeSettings("<?xml version=\"1.0\"?>\n<plist><dict><key>A</key></plist>");
    start();
    ASSERT_EQ(banner_->troubles().size(), 1U);
    EXPECT_EQ(banner_->troubles()[0].kind, Trouble::Kind::Damaged);
    EXPECT_NE(texts().find("line 2, column "), std::string::npos) << texts();
    EXPECT_NE(texts().find("The application reads defaults. Nothing can be changed here until"),
              std::string::npos)
        << texts();
    // Doctor says the same, and adds its advice instead of a line.
    ASSERT_TRUE(waitUntil([&] { return !banner_->troubles()[0].advice.isEmpty(); }));
    EXPECT_EQ(banner_->troubles().size(), 1U) << texts();
    bool isAnewWanted = false;
    bool isImportWanted = false;
    QString folder;
    QObject::connect(banner_.get(), &TroubleBanner::startAnewWanted, &window_,
                     [&] { isAnewWanted = true; });
    QObject::connect(banner_.get(), &TroubleBanner::importWanted, &window_,
                     [&] { isImportWanted = true; });
    QObject::connect(banner_.get(), &TroubleBanner::folderWanted, &window_,
                     [&](const QString& theFolder) { folder = theFolder; });
    button(QStringLiteral("Keep its bytes beside, start anew\u2026"))->click();
    button(QStringLiteral("Import a copy\u2026"))->click();
    button(QStringLiteral("Open folder"))->click();
    EXPECT_TRUE(isAnewWanted);
    EXPECT_TRUE(isImportWanted);
    EXPECT_EQ(folder.toStdString(), ToolSupport::settingsFile().parent_path());

    writeSettings(ToolSupport::propertyList("<key>A</key><true/>"));
    EXPECT_TRUE(waitUntil([&] { return texts().find("damaged") == std::string::npos; })) << texts();
}

TEST_F(TroubleBannerTests, CanBeReadInLargeFontsInTheDarkAndFromRightToLeft) {
    writeSettings("<plist><dict><key>A</key></plist>");
    start();
    ASSERT_TRUE(waitUntil([&] { return !banner_->troubles()[0].advice.isEmpty(); }));
    button(QStringLiteral("How to\u2026"))->click();
    for (const bool isDark : {false, true})
        for (const int points : {10, 20}) {
            QApplication::setPalette(isDark ? QRVWindow::Theme::darkPalette()
                                            : QRVWindow::Theme::lightPalette());
            QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), points));
            window_.setLayoutDirection(isDark ? Qt::RightToLeft : Qt::LeftToRight);
            WindowSupport::spin(std::chrono::milliseconds(50));
            const QImage image = WindowSupport::grab(
                window_, QStringLiteral("banner-%1-%2").arg(isDark).arg(points));
            EXPECT_EQ(WindowSupport::clippedTexts(window_).join(QLatin1Char('\n')).toStdString(),
                      "");
            for (auto* const text : banner_->findChildren<QTextEdit*>()) {
                const QRect part(text->mapTo(&window_, QPoint(0, 0)), text->size());
                const QRect seen = part.intersected(image.rect());
                if (!text->isVisible() || seen.height() < part.height()) continue;
                EXPECT_GE(WindowSupport::contrastIn(image, seen), WindowSupport::readableContrast);
                EXPECT_GE(text->height(), text->document()->size().height());
            }
        }
}

TEST_F(TroubleBannerTests, AReadOnlyFileIsNamedWithTheWayOut) {
    setByTool(enabled, "false");
    ASSERT_EQ(chmod(ToolSupport::settingsFile().c_str(), 0400), 0);
    start();
    ASSERT_EQ(banner_->troubles().size(), 1U) << texts();
    EXPECT_EQ(banner_->troubles()[0].kind, Trouble::Kind::ReadOnly);
    EXPECT_NE(texts().find("read-only: its mode is 0400."), std::string::npos) << texts();
    ASSERT_TRUE(waitUntil([&] { return !banner_->troubles()[0].command.isEmpty(); }));
    EXPECT_EQ(banner_->troubles().size(), 1U) << texts();
    button(QStringLiteral("How to\u2026"))->click();
    button(QStringLiteral("Copy command"))->click();
    const std::string command = QApplication::clipboard()->text().toStdString();
    ASSERT_EQ(ToolSupport::runShell(command).exitCode, 0) << command;
    session_->reload();
    EXPECT_TRUE(waitUntil([&] { return texts().empty(); })) << texts();
    EXPECT_FALSE(banner_->isVisible());
}

TEST_F(TroubleBannerTests, AFolderWithoutTheRightToWriteIsNamed) {
    setByTool(enabled, "false");
    if (!becomeNobody()) GTEST_SKIP() << "the window is in a folder that others may not search";
    const std::filesystem::path folder = ToolSupport::settingsFile().parent_path();
    ASSERT_EQ(chmod(folder.c_str(), 0500), 0);
    start();
    EXPECT_NE(texts().find("no right to write in its folder, " + folder.string()),
              std::string::npos)
        << texts();
    ASSERT_TRUE(waitUntil([&] { return !banner_->troubles()[0].command.isEmpty(); })) << texts();
    EXPECT_EQ(banner_->troubles().size(), 1U) << texts();
    EXPECT_EQ(banner_->troubles()[0].command.toStdString(), "chmod u+wx '" + folder.string() + "'");
    chmod(folder.c_str(), 0700);
}

TEST_F(TroubleBannerTests, AFileThatCannotBeReadIsAnError) {
    setByTool(enabled, "false");
    if (!becomeNobody()) GTEST_SKIP() << "the window is in a folder that others may not search";
    ASSERT_EQ(chmod(ToolSupport::settingsFile().c_str(), 0200), 0);
    start();
    ASSERT_FALSE(banner_->troubles().empty());
    EXPECT_EQ(banner_->troubles()[0].kind, Trouble::Kind::Unreadable) << texts();
    EXPECT_EQ(texts().rfind("Error: the settings file cannot be read: Permission denied", 0), 0U)
        << texts();
    ASSERT_TRUE(waitUntil([&] { return !banner_->troubles()[0].advice.isEmpty(); })) << texts();
    EXPECT_EQ(banner_->troubles().size(), 1U) << texts();
}

TEST_F(TroubleBannerTests, WhoHoldsTheFileLockedIsNamed) {
    setByTool(enabled, "false");
    start();
    const int file = open(ToolSupport::settingsFile().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(file, LOCK_EX), 0);
    session_->reload();
    EXPECT_TRUE(waitForText("Note: Reading the settings waits for the lock of "));
    EXPECT_NE(texts().find("process " + std::to_string(getpid())), std::string::npos) << texts();
    close(file);
    EXPECT_TRUE(waitUntil([&] { return texts().empty(); })) << texts();
}

TEST_F(TroubleBannerTests, WhatTheStartOfTheApplicationChangesIsANote) {
    writeSettings(ToolSupport::propertyList("<key>UpdateFrequency</key><integer>2</integer>"));
    start();
    EXPECT_EQ(texts(), "Note: the settings are of an earlier version, and are migrated");
}

TEST_F(TroubleBannerTests, ItsNameSaysAllForScreenReaders) {
    setByTool(enabled, "false");
    start();
    ASSERT_TRUE(waitForExamination());
    EXPECT_EQ(banner_->accessibleName(), QString());
    writeSettings("damaged {");
    ASSERT_TRUE(waitForText("damaged"));
    EXPECT_EQ(banner_->accessibleName().toStdString(), texts());
}

TEST_F(TroubleBannerTests, WithoutAHomeThereIsNoFile) {
    unsetenv("HOME");
    unsetenv("XDG_CONFIG_HOME");
    // A user without an entry in the system's list of users.
    if (setresuid(nobodyKnown, nobodyKnown, nobodyKnown) != 0) GTEST_SKIP() << "this needs root";
    start();
    EXPECT_EQ(session_->fileState().kind, QRVWindow::FileState::Kind::NoPlace);
    EXPECT_EQ(texts().rfind("Error: There is no home folder", 0), 0U) << texts();
}

TEST_F(TroubleBannerTests, FindingsAppearWithTheirPlaceAndVanish) {
    setByTool("UpdateFrequency", "2");
    start();
    ASSERT_TRUE(waitForExamination());
    WindowSupport::runTool({"set", enabled, "yes", "--any-kind"});
    ASSERT_TRUE(waitForText("Warning: CPU.Menubar.Enabled is a string")) << texts();
    const Tool::Finding* const finding = findings_->at(enabled);
    ASSERT_NE(finding, nullptr);
    EXPECT_EQ(finding->level, Tool::Finding::Level::Warning);
    EXPECT_EQ(findings_->at("UpdateFrequency"), nullptr);
    Tool::SettingPlace wanted;
    QObject::connect(banner_.get(), &TroubleBanner::placeWanted, &window_,
                     [&](const Tool::SettingPlace& place) { wanted = place; });
    button(QStringLiteral("Show"))->click();
    EXPECT_EQ(wanted, (Tool::SettingPlace{enabled, ""}));
    WindowSupport::grab(*banner_, QStringLiteral("banner-finding"));

    button(QStringLiteral("How to\u2026"))->click();
    button(QStringLiteral("Copy command"))->click();
    const std::string command = QApplication::clipboard()->text().toStdString();
    ASSERT_EQ(ToolSupport::runShell(command).exitCode, 0) << command;
    EXPECT_TRUE(waitUntil([&] { return texts().empty(); })) << texts();
    EXPECT_EQ(findings_->at(enabled), nullptr);
}

TEST_F(TroubleBannerTests, AFindingOfAProfileNamesItsScope) {
    setByTool("UpdateFrequency", "2");
    WindowSupport::runTool({"set", enabled, "yes", "--any-kind", "--profile", "travel", "--new"});
    start();
    ASSERT_TRUE(waitUntil([&] { return !banner_->troubles().empty(); }));
    ASSERT_TRUE(banner_->troubles()[0].place.has_value());
    EXPECT_EQ(*banner_->troubles()[0].place, (Tool::SettingPlace{enabled, "travel"}));
    EXPECT_NE(findings_->at(banner_->troubles()[0].place->storedKeyPath()), nullptr);
}

TEST_F(TroubleBannerTests, ManyFindingsAreShownWhenTheyAreAskedFor) {
    std::string dotted;
    for (int i = 0; i < 40; ++i) dotted += "<key>a.b" + std::to_string(i) + "</key><true/>";
    writeSettings(ToolSupport::propertyList(dotted));
    start();
    ASSERT_TRUE(waitUntil([&] { return banner_->troubles().size() >= 40; })) << texts();
    const auto shownLines = [&] {
        int count = 0;
        for (auto* const one : banner_->findChildren<QPushButton*>())
            count +=
                one->text() == QStringLiteral("How to\u2026") && one->isVisibleTo(banner_.get());
        return count;
    };
    const int atFirst = static_cast<int>(TroubleBanner::linesAtFirst);
    EXPECT_EQ(shownLines(), atFirst);
    const auto rest = static_cast<int>(banner_->troubles().size()) - atFirst;
    button(QStringLiteral("Show %1 more").arg(rest))->click();
    QCoreApplication::processEvents();
    EXPECT_GE(shownLines(), 40);
    EXPECT_LT(banner_->sizeHint().height(), 400);
    WindowSupport::grab(*banner_, QStringLiteral("banner-many"));
}

TEST_F(TroubleBannerTests, ExaminationsPauseWhileChangesStreamAndRestWhileNothingHappens) {
    setByTool("UpdateFrequency", "2");
    start();
    int examinations = 0;
    bool wasExamining = false;
    const auto watch = [&] {
        if (findings_->isExamining() && !wasExamining) ++examinations;
        wasExamining = findings_->isExamining();
        return false;
    };
    waitUntil(watch, std::chrono::milliseconds(1500));
    ASSERT_EQ(examinations, 1);
    examinations = 0;
    constexpr std::chrono::seconds streaming{4};
    const auto end = std::chrono::steady_clock::now() + streaming;
    for (int value = 10; std::chrono::steady_clock::now() < end; ++value) {
        setByTool("UpdateFrequency", std::to_string(value % 50 + 1));
        waitUntil(watch, std::chrono::milliseconds(20));
    }
    EXPECT_GE(examinations, 1);
    EXPECT_LE(examinations, 3);
    waitUntil(watch, std::chrono::milliseconds(2 * Findings::pauseMilliseconds));
    examinations = 0;
    waitUntil(watch, std::chrono::milliseconds(2 * Findings::pauseMilliseconds));
    EXPECT_EQ(examinations, 0);
}

TEST(AdviceCommands, AreWhatAShellRuns) {
    using Tool::commandOfAdvice;
    EXPECT_EQ(commandOfAdvice("make them private: chmod 600 '/a b'"), "chmod 600 '/a b'");
    EXPECT_EQ(commandOfAdvice("put it there, or remove the link: rm /a; the next save makes one"),
              "rm /a");
    EXPECT_EQ(commandOfAdvice("remove it: rm '/a; b'"), "rm '/a; b'");
    EXPECT_EQ(commandOfAdvice("store it there: qrvsettings set -- A 1 && qrvsettings unset -- B"),
              "qrvsettings set -- A 1 && qrvsettings unset -- B");
    EXPECT_EQ(commandOfAdvice("replace it: qrvsettings import --replace-damaged FILE"), "");
    EXPECT_EQ(commandOfAdvice("remove it: qrvsettings unset KEYPATH"), "");
    EXPECT_EQ(commandOfAdvice("as root: make-id, or where that is missing: tr a b </c >/d"), "");
    EXPECT_EQ(commandOfAdvice("nothing; the first change creates it"), "");
}

TEST(FindingLines, GiveTheSameFindings) {
    const std::vector<Tool::Finding> findings{{Tool::Finding::Level::Error, "a \"message\"\n",
                                               "advice", "A.B", Tool::Finding::About::Damaged},
                                              {Tool::Finding::Level::Note, "", "", ""}};
    const std::string line = Tool::lineOf(findings);
    EXPECT_EQ(line.find('\n'), line.npos);
    EXPECT_EQ(Tool::lineOf(Tool::findingsFromLine(line)), line);
    const auto again = Tool::findingsFromLine(line);
    ASSERT_EQ(again.size(), 2U);
    EXPECT_EQ(again[0].message, findings[0].message);
    EXPECT_EQ(again[0].about, findings[0].about);
    EXPECT_EQ(again[1].level, Tool::Finding::Level::Note);
    for (const char* const wrong : {"", "{}", "[1]", "[{\"level\":\"odd\"}]"})
        EXPECT_ANY_THROW(Tool::findingsFromLine(wrong)) << wrong;
}
