// SPDX-License-Identifier: MIT
// Edits that a process of its own applies: what the file holds afterwards, and what it says.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <random>

#include "Edits/ApplyEdits.h"
#include "Platform/Files/Files.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Support/ChildProcess.h"
#include "Support/FileEvents.h"
#include "Support/StoreSupport.h"
#include "Text/Differences.h"
#include "Tool/ToolSupport.h"

using StoreSupport::fileTree;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Tool::ApplyOutcome;
using Tool::ApplyRequest;
using Tool::PendingEdit;
using ToolSupport::contentsOf;
using ToolSupport::run;
using ToolSupport::RunningTool;
using ToolSupport::settingsFile;
using ToolSupport::snapshot;
using ToolSupport::writeSettings;
using State = ApplyOutcome::State;

namespace {

PendingEdit edit(const std::string& keyPath, const PropertyListValue& base,
                 const PropertyListValue& value, const std::string& profile = "") {
    return {{keyPath, profile}, base, value};
}

ApplyRequest requestOf(const std::vector<PendingEdit>& edits) {
    return {.edits = edits, .origin = "edit"};
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// The process, which goes on meanwhile.
class Applying {
  public:
    explicit Applying(const ApplyRequest& request, const std::function<void()>& prepare = nullptr)
        : process_(QRV_APPLY_PROGRAM, {}, {Tool::lineOf(request) + "\n", prepare}) {}

    /// What it has said that it waits for.
    [[nodiscard]] std::vector<std::string> waits() const {
        std::vector<std::string> found;
        for (const std::string& line : linesOf(process_.output()))
            if (const std::string text = Tool::waitingFromLine(line); !text.empty())
                found.push_back(text);
        return found;
    }
    [[nodiscard]] RunningTool& process() { return process_; }
    ApplyOutcome outcome() {
        const ToolSupport::Outcome ended = process_.finish();
        EXPECT_EQ(ended.exitCode, 0) << ended.errors;
        EXPECT_EQ(ended.errors, "");
        return Tool::outcomeFromLine(linesOf(ended.output).back());
    }

  private:
    RunningTool process_;
};

ApplyOutcome applied(const ApplyRequest& request, const std::function<void()>& prepare = nullptr) {
    return Applying(request, prepare).outcome();
}

PropertyListValue inFile(const std::string& keyPath) {
    return NSDictionaryQRV::objectAtKeyPath(fileTree(), keyPath);
}

std::filesystem::path lockFile() {
    return QRVPlatform::filesBeside(QRVSettingsLocation()).lock;
}

bool takeLock() {
    std::filesystem::create_directories(lockFile().parent_path());
    const int file = open(lockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    return file >= 0 && flock(file, LOCK_EX) == 0;
}

/// As on a full disk: no file of this process may grow past the limit.
void limitFileSize() {
    constexpr rlim_t mostBytes = 4096;
    if (std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR) _exit(1);
    const rlimit limit{mostBytes, mostBytes};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(1);
}

/// Root too is refused what its own mode refuses.
void obeyModes() {
    prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

void loseHome() {
    unsetenv("HOME");
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_STATE_HOME");
}

}  // namespace

TEST(ApplyLines, KeepValuesWithTheirKinds) {
    const std::vector<PropertyListValue> values = {nullptr,
                                                   true,
                                                   1,
                                                   1.0,
                                                   -0.0,
                                                   9007199254740993,
                                                   std::uint64_t{18446744073709551615U},
                                                   "text\n\"$\"\x7f",
                                                   NSDate(12.5),
                                                   NSData(std::string_view("\0\1", 2)),
                                                   NSArray{1, "a", 1.0},
                                                   NSDictionary{{"$date", "no date"}},
                                                   NSDictionary()};
    ApplyRequest request{.origin = "import", .replacesDamagedFile = true};
    for (const PropertyListValue& value : values)
        request.edits.push_back(edit("a.b", value, value, "travel"));
    const std::string line = Tool::lineOf(request);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    const ApplyRequest read = Tool::requestFromLine(line);
    EXPECT_EQ(read.origin, "import");
    EXPECT_TRUE(read.replacesDamagedFile);
    EXPECT_FALSE(read.replacesReadOnlyFile);
    ASSERT_EQ(read.edits.size(), values.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
        EXPECT_EQ(read.edits[index].place, request.edits[index].place);
        EXPECT_TRUE(Tool::areSameInKind(read.edits[index].base, values[index])) << index;
        EXPECT_TRUE(Tool::areSameInKind(read.edits[index].value, values[index])) << index;
    }
}

TEST(ApplyLines, OfAnOutcomeAndOfAWaitAreTold) {
    const ApplyOutcome outcome{
        .state = State::Conflict,
        .reason = "why\nnot",
        .conflicts = {{edit("a", 1, 2), 3}, {edit("b", nullptr, 1), nullptr}},
        .overwritten = {{edit("c", 1, 2, "p"), 1.0}},
        .notices = {"one", "two"}};
    const ApplyOutcome read = Tool::outcomeFromLine(Tool::lineOf(outcome));
    EXPECT_EQ(read.state, State::Conflict);
    EXPECT_EQ(read.reason, "why\nnot");
    ASSERT_EQ(read.conflicts.size(), 2U);
    EXPECT_EQ(read.conflicts[0].theirs, 3);
    EXPECT_TRUE(read.conflicts[1].theirs.isNull());
    ASSERT_EQ(read.overwritten.size(), 1U);
    EXPECT_EQ(read.overwritten[0].edit.place.profile, "p");
    EXPECT_TRUE(read.overwritten[0].theirs.isReal());
    EXPECT_THAT(read.notices, ElementsAre("one", "two"));
    EXPECT_EQ(Tool::waitingFromLine(Tool::lineOfWaiting("the lock")), "the lock");
    EXPECT_EQ(Tool::waitingFromLine(Tool::lineOf(outcome)), "");
    EXPECT_EQ(Tool::waitingFromLine("no JSON"), "");
}

TEST(ApplyLines, ThatAreNoneAreRefused) {
    for (const char* line : {"", "{", "[]", "1", "{}", R"({"edits":[{"value":1}]})"})
        EXPECT_THROW(Tool::requestFromLine(line), Tool::Failure) << line;
    for (const char* line : {"", "{", "[]", "{}", R"({"state":"perhaps"})"})
        EXPECT_THROW(Tool::outcomeFromLine(line), Tool::Failure) << line;
    const ToolSupport::Outcome outcome =
        ToolSupport::runProgram(QRV_APPLY_PROGRAM, {}, {"nothing\n", {}});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_FALSE(std::filesystem::exists(settingsFile()));
}

TEST(ApplyEdits, ReachTheFileTogetherWithWhatIsThere) {
    ASSERT_EQ(run({"set", "a.b", "1"}).exitCode, 0);
    ASSERT_EQ(run({"set", "a.c", "kept"}).exitCode, 0);
    const ApplyOutcome outcome =
        applied(requestOf({edit("a.b", 1, 2.0), edit("new", nullptr, NSArray{true, "x"}),
                           edit("w", nullptr, "profile's", "travel")}));
    EXPECT_EQ(outcome.state, State::Applied) << outcome.reason;
    EXPECT_EQ(outcome.reason, "");
    EXPECT_THAT(outcome.conflicts, IsEmpty());
    EXPECT_THAT(outcome.overwritten, IsEmpty());
    EXPECT_TRUE(Tool::areSameInKind(inFile("a.b"), 2.0));
    EXPECT_EQ(inFile("a.c"), "kept");
    EXPECT_EQ(inFile("new"), (NSArray{true, "x"}));
    EXPECT_EQ(inFile("Profiles.Settings.travel.w"), "profile's");
}

TEST(ApplyEdits, RemoveWhatIsStoredAndTheEmptyLevelsAboveIt) {
    ASSERT_EQ(run({"set", "a.b.c", "1"}).exitCode, 0);
    EXPECT_EQ(applied(requestOf({edit("a.b.c", 1, nullptr)})).state, State::Applied);
    EXPECT_TRUE(inFile("a").isNull());
}

TEST(ApplyEdits, AWholeLevelGivesWayToAValueAndBack) {
    ASSERT_EQ(run({"set", "a.b", "1"}).exitCode, 0);
    const NSDictionary level{{"b", 1}};
    EXPECT_EQ(applied(requestOf({edit("a", level, 5)})).state, State::Applied);
    EXPECT_EQ(inFile("a"), 5);
    EXPECT_EQ(applied(requestOf({edit("a", 5, level)})).state, State::Applied);
    EXPECT_EQ(inFile("a"), level);
}

TEST(ApplyEdits, OfADefaultStoreNothing) {
    const ApplyOutcome outcome = applied(requestOf({edit("CPU.Menubar.Enabled", nullptr, true)}));
    EXPECT_EQ(outcome.state, State::Applied) << outcome.reason;
    EXPECT_TRUE(inFile("CPU.Menubar.Enabled").isNull());
}

TEST(ApplyEdits, OfADateKeepNoFractionsAndSaySo) {
    const ApplyOutcome outcome = applied(requestOf({edit("when", nullptr, NSDate(12.75))}));
    EXPECT_EQ(outcome.state, State::Applied) << outcome.reason;
    EXPECT_THAT(outcome.notices, ElementsAre(HasSubstr("fractions of seconds are not kept")));
}

TEST(ApplyEdits, ThatAreNoneWriteNothing) {
    EXPECT_EQ(applied(requestOf({})).state, State::Applied);
    EXPECT_FALSE(std::filesystem::exists(settingsFile()));
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const auto before = snapshot(ToolSupport::configurationFolder());
    EXPECT_EQ(applied(requestOf({})).state, State::Applied);
    EXPECT_EQ(applied(requestOf({edit("a", 1, 1), edit("b", 1, nullptr)})).state, State::Applied);
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);
}

TEST(ApplyEdits, OfWhatAnotherProcessHasChangedAreConflictsAndNothingIsWritten) {
    ASSERT_EQ(run({"set", "a", "2"}).exitCode, 0);
    ASSERT_EQ(run({"set", "kind", "1.0"}).exitCode, 0);
    const auto before = snapshot(ToolSupport::configurationFolder());
    const ApplyOutcome outcome = applied(requestOf(
        {edit("a", 1, 5), edit("b", nullptr, 1), edit("gone", "x", "y"), edit("kind", 1, 2)}));
    EXPECT_EQ(outcome.state, State::Conflict);
    EXPECT_NE(outcome.reason, "");
    ASSERT_EQ(outcome.conflicts.size(), 3U);
    EXPECT_EQ(outcome.conflicts[0].edit.place.keyPath, "a");
    EXPECT_EQ(outcome.conflicts[0].theirs, 2);
    EXPECT_EQ(outcome.conflicts[1].edit.place.keyPath, "gone");
    EXPECT_TRUE(outcome.conflicts[1].theirs.isNull());
    EXPECT_EQ(outcome.conflicts[2].edit.place.keyPath, "kind");
    EXPECT_TRUE(outcome.conflicts[2].theirs.isReal());
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);
}

TEST(ApplyEdits, ThatTheFileHoldsAlreadyAreNoConflicts) {
    ASSERT_EQ(run({"set", "a", "5"}).exitCode, 0);
    EXPECT_EQ(applied(requestOf({edit("a", 1, 5)})).state, State::Applied);
}

TEST(ApplyEdits, ThatAValueIsInTheWayOfAreNotApplied) {
    ASSERT_EQ(run({"set", "a", "5"}).exitCode, 0);
    const ApplyOutcome outcome =
        applied(requestOf({edit("b", nullptr, 1), edit("a.b", nullptr, 1)}));
    EXPECT_EQ(outcome.state, State::NotApplied);
    EXPECT_EQ(outcome.reason, "a stored value is in the way: a is an integer, a.b");
    EXPECT_TRUE(inFile("b").isNull());
}

TEST(ApplyEdits, RemoveAValueThatKeepsTheApplicationFromStarting) {
    writeSettings(ToolSupport::propertyList(
        "<key>Device</key><string>flat</string><key>a</key><integer>1</integer>"));
    const ApplyOutcome refused = applied(requestOf({edit("a", 1, 2)}));
    EXPECT_EQ(refused.state, State::NotApplied);
    EXPECT_THAT(refused.reason, HasSubstr("unset what is in its way"));
    EXPECT_EQ(inFile("a"), 1);
    const ApplyOutcome removed = applied(requestOf({edit("Device", "flat", nullptr)}));
    EXPECT_EQ(removed.state, State::Applied) << removed.reason;
    EXPECT_FALSE(inFile("Device").isString());
    EXPECT_EQ(applied(requestOf({edit("a", 1, 2)})).state, State::Applied);
    EXPECT_EQ(inFile("a"), 2);
}

TEST(ApplyEdits, OfADamagedFileAreRefusedUntilItMayBeReplacedAndItsBytesStayBeside) {
    writeSettings("<plist><dict>");
    const auto before = snapshot(ToolSupport::configurationFolder());
    const ApplyOutcome refused = applied(requestOf({edit("a", nullptr, 1)}));
    EXPECT_EQ(refused.state, State::NotApplied);
    EXPECT_THAT(refused.reason, AllOf(HasSubstr("is damaged"), HasSubstr("line 1, column")));
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);

    ApplyRequest request = requestOf({edit("a", 5, 1), edit("b", 6, nullptr)});
    request.replacesDamagedFile = true;
    const ApplyOutcome replaced = applied(request);
    EXPECT_EQ(replaced.state, State::Applied) << replaced.reason;
    EXPECT_TRUE(replaced.overwritten.empty());
    EXPECT_EQ(inFile("a"), 1);
    EXPECT_TRUE(inFile("b").isNull());
    EXPECT_EQ(contentsOf(QRVPlatform::filesBeside(settingsFile()).backupStart + "1"),
              "<plist><dict>");
}

TEST(ApplyEdits, ThatMayReplaceADamagedFileReplaceNoneThatIsRepaired) {
    ASSERT_EQ(run({"set", "a", "7"}).exitCode, 0);
    ASSERT_EQ(run({"set", "kept", "1"}).exitCode, 0);
    ApplyRequest request = requestOf({edit("a", 5, 1)});
    request.replacesDamagedFile = true;
    EXPECT_EQ(applied(request).state, State::Conflict);
    EXPECT_EQ(inFile("a"), 7);
    request = requestOf({edit("a", 7, 1)});
    request.replacesDamagedFile = true;
    EXPECT_EQ(applied(request).state, State::Applied);
    EXPECT_EQ(inFile("a"), 1);
    EXPECT_EQ(inFile("kept"), 1);
}

TEST(ApplyEdits, WithoutEditsADamagedFileIsBegunAnew) {
    writeSettings("damaged");
    ApplyRequest request;
    request.replacesDamagedFile = true;
    EXPECT_EQ(applied(request).state, State::Applied);
    EXPECT_FALSE(fileTree().isNull());
    EXPECT_EQ(contentsOf(QRVPlatform::filesBeside(settingsFile()).backupStart + "1"), "damaged");
}

TEST(ApplyEdits, OfAReadOnlyFileAreRefusedUntilItMayBeReplaced) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    ASSERT_EQ(chmod(settingsFile().c_str(), 0444), 0);
    ApplyRequest request = requestOf({edit("a", 1, 2)});
    const ApplyOutcome refused = applied(request);
    EXPECT_EQ(refused.state, State::NotApplied);
    EXPECT_THAT(refused.reason, HasSubstr("the settings file is read-only: mode 0444"));
    EXPECT_EQ(inFile("a"), 1);
    request.replacesReadOnlyFile = true;
    EXPECT_EQ(applied(request).state, State::Applied);
    EXPECT_EQ(inFile("a"), 2);
}

TEST(ApplyEdits, InAFolderWithoutTheRightToWriteAreNotApplied) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const std::filesystem::path folder = settingsFile().parent_path();
    ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
    const ApplyOutcome outcome = applied(requestOf({edit("a", 1, 2)}), obeyModes);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    EXPECT_EQ(outcome.state, State::NotApplied);
    EXPECT_THAT(outcome.reason, HasSubstr("Permission denied"));
    EXPECT_EQ(inFile("a"), 1);
}

TEST(ApplyEdits, OnAFullDiskAreNotApplied) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const std::string before = contentsOf(settingsFile());
    const ApplyOutcome outcome =
        applied(requestOf({edit("a", 1, std::string(10'000, 'x'))}), limitFileSize);
    EXPECT_EQ(outcome.state, State::NotApplied);
    EXPECT_THAT(outcome.reason, AllOf(HasSubstr("cannot save a"), HasSubstr("File too large")));
    EXPECT_EQ(contentsOf(settingsFile()), before);
}

TEST(ApplyEdits, WithoutAHomeFolderAreNotApplied) {
    const ApplyOutcome outcome = applied(requestOf({edit("a", nullptr, 1)}), [] {
        loseHome();
        // Nor has a user without an entry in the password database one.
        if (setuid(54321) != 0) _exit(1);
    });
    EXPECT_EQ(outcome.state, State::NotApplied);
    EXPECT_THAT(outcome.reason, HasSubstr("there is no home folder"));
}

TEST(ApplyEdits, WaitForTheLockOfAStoppedProcessAndSayWhose) {
    const Gate holds;
    ChildProcess holder([&holds] {
        if (!takeLock()) return false;
        holds.open();
        return pause() == 0;
    });
    ASSERT_TRUE(holds.wait());
    ASSERT_TRUE(holder.stop());
    Applying applying(requestOf({edit("a", nullptr, 1)}));
    ASSERT_TRUE(waitUntil([&] { return !applying.waits().empty(); }));
    EXPECT_THAT(applying.waits().front(),
                AllOf(HasSubstr("the lock of " + QRVSettingsLocation()),
                      HasSubstr("process " + std::to_string(holder.pid())), HasSubstr("stopped")));
    EXPECT_FALSE(std::filesystem::exists(settingsFile()));
    holder.send(SIGKILL);
    EXPECT_EQ(applying.outcome().state, State::Applied);
    EXPECT_EQ(inFile("a"), 1);
}

TEST(ApplyEdits, SayWhatAnotherProcessSavedBetweenComparisonAndSave) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const Gate holds;
    const Gate end;
    // Has the lock while the edits are compared, and saves before it gives it up.
    ChildProcess other([&] {
        if (!takeLock()) return false;
        holds.open();
        if (!end.wait()) return false;
        const NSMutableDictionary tree = fileTree().mutableCopy();
        tree.setObjectForKey(77, "a");
        tree.setObjectForKey("theirs", "other");
        const std::filesystem::path newFile = QRVSettingsLocation() + ".new";
        ToolSupport::writeFile(newFile,
                               NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
        std::filesystem::rename(newFile, QRVSettingsLocation());
        return true;
    });
    ASSERT_TRUE(holds.wait());
    Applying applying(requestOf({edit("a", 1, 60)}));
    ASSERT_TRUE(waitUntil([&] { return !applying.waits().empty(); }));
    end.open();
    const ApplyOutcome outcome = applying.outcome();
    EXPECT_TRUE(other.succeeded());
    EXPECT_EQ(outcome.state, State::Applied);
    ASSERT_EQ(outcome.overwritten.size(), 1U);
    EXPECT_EQ(outcome.overwritten[0].edit.place.keyPath, "a");
    EXPECT_EQ(outcome.overwritten[0].theirs, 77);
    EXPECT_EQ(inFile("a"), 60);
    EXPECT_EQ(inFile("other"), "theirs");
}

TEST(ApplyEdits, AreOneReplacementAndOneListOfChangesForAWatcher) {
    ASSERT_EQ(run({"set", "seed", "1"}).exitCode, 0);
    constexpr int count = 50;
    std::vector<PendingEdit> edits;
    for (int number = 0; number < count; ++number)
        edits.push_back(edit("batch.key" + std::to_string(number), nullptr, number));
    RunningTool watch({"watch", "--json"});
    ASSERT_TRUE(waitUntil([&] {  // it is watching
        EXPECT_EQ(run({"set", "seed", std::to_string(std::rand())}).exitCode, 0);
        return !watch.output().empty();
    }));
    const std::size_t before = linesOf(watch.output()).size();
    FileEvents replacements(settingsFile(), IN_MOVED_TO);
    ASSERT_EQ(applied(requestOf(edits)).state, State::Applied);
    EXPECT_EQ(replacements.count(), 1);
    ASSERT_TRUE(
        waitUntil([&] { return linesOf(watch.output()).size() >= before + std::size_t{count}; }));
    EXPECT_EQ(linesOf(watch.output()).size(), before + count);
}

TEST(ApplyEdits, AreKilledAtAnyMomentAndTheFileIsWholeOldOrNew) {
    ASSERT_EQ(run({"set", "a", "0"}).exitCode, 0);
    const std::string longText(200'000, 'x');
    std::mt19937 random(20'201'122);
    int last = 0;
    int applieds = 0;
    for (int round = 1; round <= 40; ++round) {
        Applying applying(requestOf(
            {edit("a", last, round), edit("b", inFile("b"), longText + std::to_string(round))}));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30'000));
        applying.process().send(SIGKILL);
        applying.process().finish();
        const NSDictionary tree = fileTree();
        ASSERT_FALSE(tree.isNull()) << "round " << round;
        const int now = static_cast<int>(inFile("a").integerValue());
        ASSERT_TRUE(now == last || now == round) << "round " << round << ": " << now;
        if (now == round) {
            EXPECT_EQ(inFile("b"), longText + std::to_string(round));
            ++applieds;
        }
        last = now;
    }
    RecordProperty("applied", applieds);
    const int base = last;
    EXPECT_EQ(applied(requestOf({edit("a", base, 1000)})).state, State::Applied);
}
