// SPDX-License-Identifier: MIT
// Saves that fail, and files that a save backs up or leaves alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Files/Files.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::contentsOf;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::LogMessages;
using StoreSupport::SystemLogLines;
using StoreSupport::writeSettings;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

void expectSaveMessage(const DDLogMessage& message, int line, const std::string& format,
                       std::size_t argumentCount) {
    EXPECT_TRUE(message.asynchronous);
    EXPECT_EQ(message.level, 31);
    EXPECT_EQ(message.flag, 8);
    EXPECT_EQ(message.context, 0);
    EXPECT_TRUE(message.tag.isNull());
    EXPECT_EQ(message.file, "Frameworks/QRVSettings/QRVSettings");
    EXPECT_EQ(message.function, "QRVSettingsSaveObjectWithLog_block_invoke");
    EXPECT_EQ(message.line, line);
    EXPECT_EQ(message.format, format);
    EXPECT_EQ(message.arguments.size(), argumentCount);
}

std::filesystem::path backup(int number) {
    return QRVSettingsLocation() + ".damaged-" + std::to_string(number);
}

}  // namespace

TEST(SavingFailure, NoObjectIsLoggedAndChangesNoFile) {
    writeSettings(NSDictionary{{"A", 1}});
    const LogMessages log;
    QRVSettingsSaveObject(nullptr);
    finishSaves();
    ASSERT_EQ(log.messages().size(), 1U);
    expectSaveMessage(log.messages()[0], 88, "Trying to save settings with missing value", 0);
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}}));
}

TEST(SavingFailure, AValueThatNoPropertyListHoldsIsLoggedAndReportedWithItsKeyPath) {
    writeSettings(NSDictionary{{"A", 1}});
    const LogMessages log;
    std::vector<std::string> reported;
    QRVPlatform::setFileFailureHandler([&reported](const QRVPlatform::FileFailure& failure) {
        reported.push_back(failure.operation + " " + failure.keyPath);
    });
    QRVSettingsSetObjectForKeyPath(NSColor{1, 0, 0, 1}, "Menu.Color");
    finishSaves();
    QRVPlatform::setFileFailureHandler(nullptr);
    EXPECT_EQ(reported, std::vector<std::string>{"save settings Menu.Color"});
    const QRVSaveStatus status = QRVSettingsWaitForSaves(std::chrono::seconds(0));
    EXPECT_EQ(status.state, QRVSaveStatus::State::Failed);
    EXPECT_EQ(status.keyPaths, NSArray{"Menu.Color"});
    ASSERT_EQ(log.messages().size(), 1U);
    expectSaveMessage(log.messages()[0], 115, "%@", 1);
    EXPECT_THAT(log.messages()[0].text(), HasSubstr("Menu.Color"));
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}}));
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Menu.Color").isColor()) << "memory keeps the value";
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(QRVSettings::sharedSettings().localChanges().count(), 0U);
}

TEST(SavingFailure, AnInvalidArgumentDuringTheSaveIsLoggedTwiceAndTheQueueGoesOn) {
    // A handler of the host, called during the save, throws.
    const std::filesystem::path file = QRVSettingsLocation();
    const auto obstacle = file.parent_path() / ("." + file.filename().string() + ".tmp");
    std::filesystem::create_directories(obstacle / "inside");
    setFileFailureHandler([](const FileFailure&) { throw NSInvalidArgumentException("raised"); });
    const LogMessages log;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    ASSERT_EQ(log.messages().size(), 2U);
    expectSaveMessage(log.messages()[0], 119, "%@", 1);
    EXPECT_EQ(log.messages()[0].text(), "raised");
    expectSaveMessage(log.messages()[1], 120, "%@", 1);
    EXPECT_EQ(log.messages()[1].arguments[0], NSDictionary({{"A", 1}}));
    setFileFailureHandler(nullptr);
    std::filesystem::remove_all(obstacle);
    QRVSettingsSetObjectForKeyPath(2, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", 2}}));
}

TEST(SavingFailure, AFailedReplacementIsNotReportedAndTheNextSaveIsComplete) {
    writeSettings(NSDictionary{{"Old", 1}});
    const std::string before = contentsOf(QRVSettingsLocation());
    const std::filesystem::path file = QRVSettingsLocation();
    const auto obstacle = file.parent_path() / ("." + file.filename().string() + ".tmp");
    std::filesystem::create_directories(obstacle / "inside");
    const LogMessages log;
    const SystemLogLines lines;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_THAT(lines.lines(), IsEmpty());
    EXPECT_EQ(contentsOf(file), before);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    std::filesystem::remove_all(obstacle);
    QRVSettingsSetObjectForKeyPath(2, "B");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"Old", 1}, {"A", 1}, {"B", 2}}));
}

TEST(SavingFailure, WithoutAPlaceForTheFolderNothingHappensAndNothingCrashes) {
    StoreSupport::writeFile(std::getenv("XDG_CONFIG_HOME"), "a file where the folder would be");
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    EXPECT_FALSE(QRVSettings::sharedSettings().exists());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
}

TEST(SavingFailure, ADamagedFileIsBackedUpBeforeItIsReplaced) {
    const SystemLogLines log;
    for (const std::string bytes : {"<plist><dict><key>A</key>", "word", " \n\t", "bplist00",
                                    "<plist version=\"1.0\"><array/></plist>"}) {
        std::filesystem::remove_all(std::filesystem::path(QRVSettingsLocation()).parent_path());
        writeSettings(bytes);
        QRVSettingsSetObjectForKeyPath(true, "New");
        finishSaves();
        EXPECT_EQ(contentsOf(backup(1)), bytes);
        EXPECT_EQ(fileTree(), NSDictionary({{"New", true}})) << bytes;
    }
    EXPECT_EQ(log.lines().size(), 5U);
    EXPECT_THAT(log.lines(), testing::Each(HasSubstr(backup(1).string())));
}

TEST(SavingFailure, EarlierBackupsAreNotOverwritten) {
    const SystemLogLines log;
    StoreSupport::writeFile(backup(1), "first");
    writeSettings("second");
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    EXPECT_EQ(contentsOf(backup(1)), "first");
    EXPECT_EQ(contentsOf(backup(2)), "second");
}

TEST(SavingFailure, AFileDamagedBetweenTwoSavesIsBackedUpToo) {
    const SystemLogLines log;
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    writeSettings("damaged by an editor");
    QRVSettingsSetObjectForKeyPath(2, "B");
    finishSaves();
    EXPECT_EQ(contentsOf(backup(1)), "damaged by an editor");
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", 2}}));
}

TEST(SavingFailure, NeitherAnEmptyNorAWholeFileIsBackedUp) {
    writeSettings("");
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    writeSettings("{ written = \"by hand\"; }");
    QRVSettingsSetObjectForKeyPath(2, "B");
    finishSaves();
    EXPECT_FALSE(std::filesystem::exists(backup(1)));
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", 2}}));
}

TEST(SavingFailure, AnOldFileThatCannotBeReadIsLeftAlone) {
    const SystemLogLines log;
    std::filesystem::create_directories(QRVSettingsLocation());  // a folder in its place
    QRVSettingsSetObjectForKeyPath(1, "A");
    finishSaves();
    EXPECT_TRUE(std::filesystem::is_directory(QRVSettingsLocation()));
    EXPECT_FALSE(std::filesystem::exists(backup(1)));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr(QRVSettingsLocation())));
}

TEST(SavingFailure, AFileThatMayHaveBeenCutOffIsReadAndBackedUpOnceBeforeItIsReplaced) {
    const std::string cut = "A = 1;\nB = 2;\n";
    const std::string backup = filesBeside(QRVSettingsLocation()).backupStart;
    for (const bool merges : {false, true}) {
        std::filesystem::remove(QRVSettingsLocation());
        QRVSettings::sharedSettings().setMergesSaves(merges);
        QRVSettings::sharedSettings().setStorageCache(nullptr);
        writeSettings(cut);
        EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), "1");
        QRVSettingsSetObjectForKeyPath(3, "C");
        QRVSettingsSetObjectForKeyPath(4, "D");
        finishSaves();
        EXPECT_EQ(fileTree(), NSDictionary({{"A", "1"}, {"B", "2"}, {"C", 3}, {"D", 4}}));
        EXPECT_EQ(contentsOf(backup + (merges ? "2" : "1")), cut);
    }
    EXPECT_FALSE(std::filesystem::exists(backup + "3"));
}
