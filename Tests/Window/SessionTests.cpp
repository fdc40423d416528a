// SPDX-License-Identifier: MIT
// What a session shows of the file, and how it follows other processes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "Session/ShownFile.h"
#include "Session/StartOptions.h"
#include "Window/SessionSupport.h"

using QRVWindow::ShownFile;
using SessionSupport::FileState;
using SessionSupport::inFile;
using SessionSupport::LiveChange;
using SessionSupport::RunningSession;
using SessionSupport::Session;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::snapshot;
using ToolSupport::writeFile;
using ToolSupport::writeSettings;
using WindowSupport::setByTool;
using WindowSupport::spin;
using WindowSupport::waitUntil;
using Kind = FileState::Kind;

namespace {

/// Does all that needs no write, and ends.
void look(Kind kind) {
    RunningSession session;
    EXPECT_EQ(session->fileState().kind, kind);
    EXPECT_FALSE(session->table().rows().empty());
    session->setProfile(QStringLiteral("travel"));
    session->setOtherProfile(QStringLiteral("default"));
    session->setProfile(QString());
    session->reload();
    const QDateTime before = session->fileState().readAt;
    EXPECT_TRUE(waitUntil([&] { return session->fileState().readAt > before; }));
    EXPECT_FALSE(session->isApplying());
}

void expectUntouched(Kind kind) {
    // The first use of the toolkit and of the tool may leave something.
    const auto before = snapshot(std::filesystem::current_path());
    look(kind);
    EXPECT_EQ(snapshot(std::filesystem::current_path()), before);
}

std::string textOf(const QString& text) {
    return text.toStdString();
}

}  // namespace

TEST(SessionLooksAt, AMissingFileAndLeavesEverythingAsItIs) {
    expectUntouched(Kind::Missing);
}

TEST(SessionLooksAt, AMissingFileInAFolderThatIsThere) {
    std::filesystem::create_directories(settingsFile().parent_path());
    expectUntouched(Kind::Missing);
}

TEST(SessionLooksAt, AFileAndLeavesEverythingAsItIs) {
    setByTool("CPU.Menubar.Enabled", "false");
    std::filesystem::remove(QRVPlatform::filesBeside(settingsFile()).lock);
    expectUntouched(Kind::Present);
}

TEST(SessionLooksAt, AFileOfAnEarlierVersionAndLeavesEverythingAsItIs) {
    writeSettings(propertyList("<key>Battery</key><dict><key>Menubar</key><dict/></dict>"));
    expectUntouched(Kind::Present);
}

TEST(SessionLooksAt, ADamagedFileAndLeavesEverythingAsItIs) {
    writeSettings("<plist>\n<dict>oops");
    expectUntouched(Kind::Damaged);
}

TEST(SessionLooksAt, AReadOnlyFileAndLeavesEverythingAsItIs) {
    writeSettings(propertyList("<key>a</key><true/>"));
    ASSERT_EQ(chmod(settingsFile().c_str(), 0444), 0);
    expectUntouched(Kind::Present);
}

TEST(SessionState, OfAFileThatCanBeWritten) {
    setByTool("a", "1");
    RunningSession session;
    const FileState& state = session->fileState();
    EXPECT_EQ(textOf(state.path), settingsFile());
    EXPECT_EQ(textOf(state.fault), "");
    EXPECT_EQ(textOf(state.readOnly), "");
    EXPECT_EQ(state.size, std::filesystem::file_size(settingsFile()));
    EXPECT_TRUE(state.isWritable());
    EXPECT_EQ(session.stored("a"), 1);
    EXPECT_EQ(session->storedAtStart(), session->stored());
}

TEST(SessionState, OfADamagedFileNamesThePlaceAndShowsDefaults) {
    writeSettings("<plist>\n<dict>oops");
    RunningSession session;
    const FileState& state = session->fileState();
    EXPECT_TRUE(state.isDamaged());
    EXPECT_FALSE(state.isWritable());
    EXPECT_THAT(textOf(state.fault),
                AllOf(StartsWith("the settings file is damaged: "), HasSubstr("line 2, column "),
                      HasSubstr(settingsFile().string())));
    EXPECT_EQ(session.effective("CPU.Menubar.Enabled"), true);
    EXPECT_TRUE(session->stored().isNull());
}

TEST(SessionState, OfAReadOnlyFileSaysWhy) {
    writeSettings(propertyList("<key>a</key><true/>"));
    ASSERT_EQ(chmod(settingsFile().c_str(), 0444), 0);
    RunningSession session;
    EXPECT_EQ(textOf(session->fileState().readOnly),
              "The settings file is read-only: its mode is 0444.");
    EXPECT_FALSE(session->fileState().isWritable());
    EXPECT_EQ(session.stored("a"), true);
}

TEST(SessionState, OfAFolderInPlaceOfTheFileIsUnreadable) {
    std::filesystem::create_directories(settingsFile());
    RunningSession session;
    EXPECT_EQ(session->fileState().kind, Kind::Unreadable);
    EXPECT_THAT(textOf(session->fileState().fault),
                StartsWith("the settings file cannot be read: "));
}

TEST(SessionState, FollowsAFileThatIsDamagedAndRepaired) {
    setByTool("a", "1");
    RunningSession session;
    const std::string bytes = ToolSupport::contentsOf(settingsFile());
    writeSettings("no settings");
    ASSERT_TRUE(waitUntil([&] { return session->fileState().isDamaged(); }));
    EXPECT_TRUE(session.effective("a").isNull());
    EXPECT_TRUE(session->changes().empty()) << "nobody has changed a setting";
    writeSettings(bytes);
    ASSERT_TRUE(waitUntil([&] { return session->fileState().kind == Kind::Present; }));
    EXPECT_EQ(session.effective("a"), 1);
    EXPECT_TRUE(session->changes().empty());
}

TEST(SessionState, AtTheStartOfADamagedFileIsWhatItHoldsOnceItIsRepaired) {
    writeSettings("no settings");
    RunningSession session;
    ASSERT_TRUE(session->fileState().isDamaged());
    EXPECT_TRUE(session->storedAtStart().isNull());
    writeSettings(propertyList("<key>a</key><integer>1</integer>"));
    ASSERT_TRUE(waitUntil([&] { return session->fileState().kind == Kind::Present; }));
    setByTool("a", "2");
    ASSERT_TRUE(session.shows("a", 2));
    EXPECT_EQ(session->storedAtStart().objectForKey("a"), 1);
}

TEST(SessionLive, ShowsWhatAnotherProcessSetsAndMarksItForAWhile) {
    setByTool("CPU.Menubar.Enabled", "false");
    RunningSession session;
    std::vector<QStringList> marks;
    QObject::connect(&*session, &Session::marksChanged, &*session,
                     [&](const QStringList& keyPaths) { marks.push_back(keyPaths); });
    std::vector<std::string> changed;
    QObject::connect(&*session, &Session::tableChanged, &*session,
                     [&](const Tool::SettingsTable::Change& change) {
                         changed.insert(changed.end(), change.added.begin(), change.added.end());
                     });
    setByTool("other.key", "77");
    ASSERT_TRUE(session.shows("other.key", 77));
    EXPECT_THAT(changed, Contains("other.key"));
    ASSERT_EQ(session->changes().size(), 1U);
    const LiveChange& change = session->changes().front();
    EXPECT_EQ(change.number, 1U);
    EXPECT_EQ(change.place, (Tool::SettingPlace{"other.key", ""}));
    EXPECT_TRUE(change.before.isNull());
    EXPECT_EQ(change.after, 77);
    EXPECT_EQ(change.by, LiveChange::By::AnotherProcess);
    EXPECT_FALSE(change.isRecord);
    EXPECT_TRUE(session->marksOf("other.key").isLive);
    ASSERT_NE(session->liveChangeOf("other.key"), nullptr);
    EXPECT_FALSE(session->marksOf("CPU.Menubar.Enabled").isLive);

    session->clearChanges();
    EXPECT_TRUE(session->changes().empty());
    EXPECT_TRUE(session->marksOf("other.key").isLive) << "a mark lasts as long as it lasts";
    ASSERT_TRUE(waitUntil([&] { return !session->marksOf("other.key").isLive; }));
    ASSERT_EQ(marks.size(), 2U);
    EXPECT_EQ(marks.back(), QStringList{QStringLiteral("other.key")});
}

TEST(SessionLive, TellsWhichProgramHasChangedASetting) {
    if (!QRV_HAS_HISTORY) GTEST_SKIP() << "a build without the history";
    setByTool("a", "1");
    RunningSession session;
    setByTool("a", "2");
    ASSERT_TRUE(session.shows("a", 2));
    ASSERT_TRUE(waitUntil([&] { return !session->changes().back().program.isEmpty(); }));
    EXPECT_THAT(textOf(session->changes().back().program), StartsWith("qrvsettings["));
    ASSERT_NE(session->liveChangeOf("a"), nullptr);
    EXPECT_EQ(session->liveChangeOf("a")->program, session->changes().back().program);
}

TEST(SessionLive, SeesAChangeInAProfileThere) {
    setByTool("a", "1");
    RunningSession session;
    session->setProfile(QStringLiteral("travel"));
    ASSERT_EQ(run({"set", "--profile", "travel", "w", "5"}).exitCode, 0);
    ASSERT_TRUE(session.shows("w", 5));
    EXPECT_EQ(session->changes().back().place, (Tool::SettingPlace{"w", "travel"}));
    EXPECT_TRUE(session->marksOf("w").isLive);
    EXPECT_TRUE(session->profileNames().contains(QStringLiteral("travel")));
    session->setProfile(QString());
    EXPECT_FALSE(session->marksOf("w").isLive);
}

TEST(SessionLive, MarksTheStoresRecordsAsSuch) {
    writeSettings(propertyList("<key>a</key><true/>"));
    RunningSession session;
    setByTool("b", "1");  // which records the machine, too
    ASSERT_TRUE(session.shows("b", 1));
    std::set<std::string> records;
    for (const LiveChange& change : session->changes())
        if (change.isRecord) records.insert(change.place.keyPath);
    EXPECT_THAT(records, Contains("Migration.Profiles"));
    EXPECT_THAT(records, Not(Contains("b")));
}

TEST(SessionLive, KeepsTheLatestChangesWhenThereAreTooMany) {
    setByTool("seed", "1");
    RunningSession session;
    std::string entries;
    constexpr std::size_t count = Session::maximumChanges + 10;
    for (std::size_t number = 0; number < count; ++number)
        entries += "<key>k" + std::to_string(number) + "</key><integer>1</integer>";
    writeSettings(propertyList(entries));
    ASSERT_TRUE(session.shows("k1", 1));
    EXPECT_EQ(session->changes().size(), Session::maximumChanges);
    EXPECT_GT(session->changes().front().number, 1U);
}

TEST(SessionLive, NothingWakesItWhenNothingHappens) {
    setByTool("a", "1");
    RunningSession session;
    const auto switches = [] {
        const std::string status = ToolSupport::contentsOf("/proc/self/status");
        return std::stoll(status.substr(status.find("\nvoluntary_ctxt_switches:") + 25));
    };
    spin(std::chrono::milliseconds(200));
    QEventLoop loop;
    QTimer::singleShot(3000, &loop, &QEventLoop::quit);
    const long long before = switches();
    loop.exec();
    EXPECT_LE(switches() - before, 2) << "one for the timer of the test";
}

TEST(SessionReading, SaysWhatItWaitsForAndGoesOn) {
    setByTool("a", "1");
    RunningSession session;
    const int file = open(settingsFile().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(file, LOCK_EX), 0);
    session->reload();
    ASSERT_TRUE(waitUntil([&] { return !session->fileState().waitsFor.isEmpty(); }));
    EXPECT_THAT(textOf(session->fileState().waitsFor),
                HasSubstr("the lock of " + settingsFile().string()));
    close(file);
    EXPECT_TRUE(waitUntil([&] { return session->fileState().waitsFor.isEmpty(); }));
    EXPECT_EQ(session->fileState().kind, Kind::Present);
}

TEST(SessionReading, EndsWhileAReadingWaits) {
    setByTool("a", "1");
    const int file = open(settingsFile().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(file, LOCK_EX), 0);
    {
        Session session;
        session.start();
        ASSERT_TRUE(waitUntil([&] { return !session.fileState().waitsFor.isEmpty(); }));
    }
    close(file);
}

TEST(SessionOfAnotherFile, ShowsAndNamesThatFileAndLeavesNothing) {
    writeSettings(propertyList("<key>mine</key><true/>"));
    writeFile("other.plist", propertyList("<key>theirs</key><integer>5</integer>"));
    const std::string path = std::filesystem::absolute("other.plist");
    const auto before = snapshot(std::filesystem::current_path());
    {
        setenv("XDG_RUNTIME_DIR", "/nowhere", 1);
        setenv("TMPDIR", (std::filesystem::current_path() / "tmp").c_str(), 1);
        std::filesystem::create_directory("tmp");
        const ShownFile file(QStringLiteral("other.plist"));
        Session session;
        session.setFileName(file.path());
        session.start();
        ASSERT_TRUE(waitUntil([&] { return session.fileState().kind == Kind::Present; }));
        EXPECT_EQ(textOf(session.fileState().path), path);
        EXPECT_EQ(session.stored().objectForKey("theirs"), 5);
        EXPECT_TRUE(session.stored().objectForKey("mine").isNull());
        writeFile("other.plist", "damaged");
        ASSERT_TRUE(waitUntil([&] { return session.fileState().isDamaged(); }));
        EXPECT_THAT(textOf(session.fileState().fault), HasSubstr(", " + path));
        EXPECT_FALSE(std::filesystem::is_empty("tmp"));
    }
    EXPECT_TRUE(std::filesystem::is_empty("tmp"));
    std::filesystem::remove("tmp");
    writeFile("other.plist", propertyList("<key>theirs</key><integer>5</integer>"));
    EXPECT_EQ(snapshot(std::filesystem::current_path()).size(), before.size());
}

TEST(SessionOfAnotherFile, IsTheOneThatAPathThroughALinkLeadsTo) {
    const std::string name = settingsFile().filename();
    std::filesystem::create_directories("far/inner");
    std::filesystem::create_directory("far/Preferences");
    std::filesystem::create_directory("Preferences");
    std::filesystem::create_directory_symlink(std::filesystem::absolute("far/inner"), "link");
    writeFile("far/Preferences/" + name, propertyList("<key>far</key><true/>"));
    writeFile("Preferences/" + name, propertyList("<key>near</key><true/>"));
    const ShownFile file(QString::fromStdString("link/../Preferences/" + name));
    RunningSession session;
    EXPECT_EQ(session.stored("far"), true);
    session->edit("far", false);
    ASSERT_EQ(session.apply().state, SessionSupport::State::Applied);
    EXPECT_THAT(ToolSupport::contentsOf("far/Preferences/" + name), HasSubstr("<false/>"));
    EXPECT_FALSE(std::filesystem::exists(std::getenv("XDG_STATE_HOME"))) << "no history of it";
}

TEST(StartOptions, ThatAreNotUTF8AreRefused) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"\xe4"}, {"--file", "\xe4.plist"}, {"--profile=\xe4"}}) {
        const auto start = QRVWindow::startOf(words);
        ASSERT_TRUE(start.answer.has_value());
        EXPECT_TRUE(start.answer->isFault);
        EXPECT_THAT(start.answer->text, HasSubstr("is not UTF-8"));
    }
}

TEST(StartOptions, AreAKeyPathAProfileAndAFile) {
    const auto start = QRVWindow::startOf({"--profile", "travel", "A.B", "--file=x.plist"});
    EXPECT_FALSE(start.answer);
    EXPECT_EQ(start.options.keyPath, "A.B");
    EXPECT_EQ(start.options.profile, "travel");
    EXPECT_EQ(start.options.file, "x.plist");
    EXPECT_EQ(QRVWindow::startOf({"--", "--file"}).options.keyPath, "--file");
}

TEST(StartOptions, ThatAreWrongAreNamed) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> faults = {
        {{"--wrong"}, "there is no such option, --wrong"},
        {{"--file"}, "--file needs a FILE behind it"},
        {{"--profile="}, "the value of --profile is empty"},
        {{"--profile", "a.b"}, "the name of a profile holds no dots"},
        {{"--profile", "a", "--profile", "b"}, "--profile stands there twice"},
        {{"a", "b"}, "one word too many, b"},
        {{""}, "the key path is empty"}};
    for (const auto& [arguments, reason] : faults) {
        const auto start = QRVWindow::startOf(arguments);
        ASSERT_TRUE(start.answer) << reason;
        EXPECT_TRUE(start.answer->isFault);
        EXPECT_EQ(start.answer->text,
                  "qrvsettings-window: " + reason + " (see qrvsettings-window --help)\n");
    }
}
