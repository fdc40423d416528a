// SPDX-License-Identifier: MIT
// Edits of a session, and what becomes of them in the file, beside other processes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/FileEvents.h"
#include "Window/SessionSupport.h"

using QRVWindow::Applier;
using SessionSupport::FileState;
using SessionSupport::inFile;
using SessionSupport::LiveChange;
using SessionSupport::RunningSession;
using SessionSupport::Session;
using SessionSupport::State;
using testing::AllOf;
using testing::HasSubstr;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::writeSettings;
using WindowSupport::setByTool;

namespace {

bool waitFor(const std::function<bool()>& condition) {
    return WindowSupport::waitUntil(condition);
}

bool takeLock() {
    const std::string path = QRVPlatform::filesBeside(QRVSettingsLocation()).lock;
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    return file >= 0 && flock(file, LOCK_EX) == 0;
}

/// A program in place of the one that applies edits.
void applyBy(const std::string& lines) {
    ToolSupport::writeFile("applier", "#!/bin/sh\n" + lines + "\n");
    std::filesystem::permissions("applier", std::filesystem::perms::owner_all);
    Applier::setProgram(QString::fromStdString(std::filesystem::absolute("applier").string()));
}

bool isSanitized() {
    return std::getenv("ASAN_OPTIONS") != nullptr || std::getenv("TSAN_OPTIONS") != nullptr;
}

}  // namespace

TEST(SessionApply, BringsEditsIntoTheFileAndTheyArePendingNoMore) {
    setByTool("a", "1");
    RunningSession session;
    session->edit("a", 2);
    session->edit("new.key", "text");
    EXPECT_EQ(session->valueWithEdits("a"), 2);
    EXPECT_EQ(session.effective("a"), 1) << "the file's";
    EXPECT_TRUE(session->marksOf("new.key").isPending);
    EXPECT_NE(session->table().at("new.key"), nullptr) << "has a row";
    EXPECT_EQ(inFile("a"), 1);

    const Tool::ApplyOutcome outcome = session.apply();
    EXPECT_EQ(outcome.state, State::Applied) << outcome.reason;
    EXPECT_FALSE(session->isApplying());
    EXPECT_EQ(inFile("a"), 2);
    EXPECT_EQ(inFile("new.key"), "text");
    EXPECT_EQ(session.effective("a"), 2) << "shown before it is said";
    EXPECT_EQ(session.effective("new.key"), "text");
    EXPECT_TRUE(session->pending().edits().empty());
    for (const LiveChange& change : session->changes())
        EXPECT_EQ(change.by, LiveChange::By::ThisWindow) << change.place.keyPath;
    EXPECT_FALSE(session->marksOf("a").isLive);
}

TEST(SessionApply, OfADictionaryIsNotSeenAsSomebodyElsesChanges) {
    setByTool("a", R"({"b":1,"c":1})");
    RunningSession session;
    session->edit("a", NSDictionary{{"b", 2}, {"d", NSDictionary{{"e", 3}}}});
    ASSERT_EQ(session.apply().state, State::Applied);
    std::size_t seen = 0;
    for (const LiveChange& change : session->changes()) {
        if (!change.place.keyPath.starts_with("a")) continue;
        ++seen;
        EXPECT_EQ(change.by, LiveChange::By::ThisWindow) << change.place.keyPath;
    }
    EXPECT_EQ(seen, 3U);
}

TEST(SessionApply, IsUndoneByAnotherApply) {
    setByTool("a", "1");
    RunningSession session;
    session->edit("a", 2);
    session->edit("b", true);
    ASSERT_EQ(session.apply().state, State::Applied);
    session->undo();
    EXPECT_EQ(session->valueWithEdits("a"), 1);
    EXPECT_EQ(inFile("a"), 2);
    ASSERT_EQ(session.apply().state, State::Applied);
    EXPECT_EQ(inFile("a"), 1);
    EXPECT_TRUE(inFile("b").isNull());
    session->redo();
    ASSERT_EQ(session.apply().state, State::Applied);
    EXPECT_EQ(inFile("a"), 2);
    EXPECT_EQ(inFile("b"), true);
}

TEST(SessionApply, OfSomeEditsLeavesTheOthersPending) {
    setByTool("a", "1");
    RunningSession session;
    session->edit("a", 2);
    session->edit("b", 3);
    ASSERT_EQ(session.apply({.places = {{"b", ""}}}).state, State::Applied);
    EXPECT_EQ(inFile("a"), 1);
    EXPECT_EQ(inFile("b"), 3);
    EXPECT_TRUE(session->marksOf("a").isPending);
    EXPECT_FALSE(session->marksOf("b").isPending);
}

TEST(SessionApply, OfABatchReplacesTheFileOnce) {
    setByTool("a", "1");
    RunningSession session;
    std::vector<Tool::PendingEdits::Request> requests;
    for (int number = 0; number < 50; ++number)
        requests.push_back({session->placeOf("k" + std::to_string(number)), number, nullptr});
    session->edit(requests, QStringLiteral("fifty"));
    EXPECT_EQ(session->pending().undoCount(), 1U);
    FileEvents replacements(settingsFile(), IN_MOVED_TO);
    ASSERT_EQ(session.apply().state, State::Applied);
    EXPECT_EQ(replacements.count(), 1);
    EXPECT_EQ(inFile("k49"), 49);
}

TEST(SessionApply, KeepsWhatAnotherProcessSetsRightAfterIt) {
    setByTool("A", "1");
    RunningSession session;
    session->edit("A", 60);
    ASSERT_EQ(session.apply().state, State::Applied);
    setByTool("A", "77");
    ASSERT_TRUE(session.shows("A", 77));
    session->edit("B", 1);
    ASSERT_EQ(session.apply().state, State::Applied);
    EXPECT_EQ(inFile("A"), 77);
    EXPECT_EQ(inFile("B"), 1);
    EXPECT_EQ(session.effective("A"), 77);
}

TEST(SessionApply, NamesConflictsAndMineAndTheirsDoWhatTheySay) {
    setByTool("a", "1");
    setByTool("b", "1");
    RunningSession session;
    session->edit("a", 2);
    session->edit("b", 2);
    setByTool("a", "10");
    setByTool("b", "10");
    ASSERT_TRUE(session.shows("b", 10));
    ASSERT_EQ(session->conflicts().size(), 2U);
    EXPECT_EQ(session->conflicts()[0].theirs, 10);
    const std::string before = ToolSupport::contentsOf(settingsFile());
    const Tool::ApplyOutcome outcome = session.apply();
    EXPECT_EQ(outcome.state, State::Conflict);
    ASSERT_EQ(outcome.conflicts.size(), 2U);
    EXPECT_EQ(ToolSupport::contentsOf(settingsFile()), before);
    EXPECT_EQ(session->pending().edits().size(), 2U);

    session->keepMine({"a", ""});
    session->takeTheirs({"b", ""});
    EXPECT_TRUE(session->conflicts().empty());
    ASSERT_EQ(session.apply().state, State::Applied);
    EXPECT_EQ(inFile("a"), 2);
    EXPECT_EQ(inFile("b"), 10);
}

TEST(SessionApply, InAProfileIsStoredThere) {
    setByTool("a", "1");
    RunningSession session;
    session->setProfile(QStringLiteral("travel"));
    session->edit("a", 5);
    ASSERT_EQ(session.apply().state, State::Applied);
    EXPECT_EQ(inFile("Profiles.Settings.travel.a"), 5);
    EXPECT_EQ(inFile("a"), 1);
    EXPECT_EQ(session.effective("a"), 5);
    session->reset({"a"});
    ASSERT_EQ(session.apply().state, State::Applied);
    EXPECT_TRUE(inFile("Profiles.Settings.travel.a").isNull());
}

TEST(SessionApply, OfADamagedFileIsRefusedUntilItMayBeReplaced) {
    setByTool("a", "1");
    RunningSession session;
    session->edit("a", 3);
    session->edit("b", 2);
    writeSettings("damaged");
    ASSERT_TRUE(waitFor([&] { return session->fileState().isDamaged(); }));
    EXPECT_TRUE(session->conflicts().empty()) << "nobody has changed a setting";
    const Tool::ApplyOutcome outcome = session.apply();
    EXPECT_EQ(outcome.state, State::NotApplied);
    EXPECT_THAT(outcome.reason, HasSubstr("is damaged"));
    EXPECT_TRUE(session->marksOf("b").isPending);
    EXPECT_EQ(ToolSupport::contentsOf(settingsFile()), "damaged");

    ASSERT_EQ(session.apply({.replacesDamagedFile = true}).state, State::Applied);
    EXPECT_EQ(inFile("a"), 3);
    EXPECT_EQ(inFile("b"), 2);
    EXPECT_TRUE(session->pending().edits().empty());
    EXPECT_EQ(session->fileState().kind, FileState::Kind::Present);
    EXPECT_EQ(ToolSupport::contentsOf(QRVPlatform::filesBeside(settingsFile()).backupStart + "1"),
              "damaged");
}

TEST(SessionApply, WaitsForALockSaysForWhoseAndCanBeStopped) {
    setByTool("a", "1");
    RunningSession session;
    const Gate holds;
    ChildProcess holder([&holds] {
        if (!takeLock()) return false;
        holds.open();
        return pause() == 0;
    });
    ASSERT_TRUE(holds.wait());
    ASSERT_TRUE(holder.stop());
    session->edit("a", 2);
    session->apply({});
    ASSERT_TRUE(waitFor([&] { return !session.waits().empty(); }));
    EXPECT_THAT(session.waits().front(),
                AllOf(HasSubstr("the lock of " + settingsFile().string()),
                      HasSubstr("process " + std::to_string(holder.pid()))));
    EXPECT_TRUE(session->isApplying());
    session->edit("b", 1);  // goes on meanwhile
    session->stopApplying();
    const Tool::ApplyOutcome outcome = session.outcome();
    EXPECT_EQ(outcome.state, State::NotApplied);
    EXPECT_NE(outcome.reason, "");
    EXPECT_EQ(session->pending().edits().size(), 2U);
    EXPECT_EQ(inFile("a"), 1);
    holder.send(SIGKILL);
    EXPECT_EQ(session.apply().state, State::Applied);
    EXPECT_EQ(inFile("a"), 2);
}

TEST(SessionApply, OfAProcessThatFailsKeepsEverythingPending) {
    setByTool("a", "1");
    RunningSession session;
    session->edit("a", 2);
    for (const std::string lines : {"kill -9 $$", "exit 3", "echo nonsense; exit 0"}) {
        applyBy(lines);
        const Tool::ApplyOutcome outcome = session.apply();
        EXPECT_EQ(outcome.state, State::NotApplied) << lines;
        EXPECT_NE(outcome.reason, "") << lines;
        EXPECT_TRUE(session->marksOf("a").isPending) << lines;
    }
    Applier::setProgram(QStringLiteral("/nowhere/applier"));
    const Tool::ApplyOutcome outcome = session.apply();
    EXPECT_EQ(outcome.state, State::NotApplied);
    EXPECT_THAT(outcome.reason, HasSubstr("cannot be started"));
    EXPECT_TRUE(session->marksOf("a").isPending);
    Applier::setProgram(QStringLiteral(QRV_APPLY_PROGRAM));
    EXPECT_EQ(session.apply().state, State::Applied);
}

TEST(SessionApply, OfAProcessThatIsKilledAfterTheSaveIsSeenInTheFile) {
    setByTool("a", "1");
    RunningSession session;
    session->edit("a", 2);
    applyBy(QRV_APPLY_PROGRAM " >/dev/null; kill -9 $$");
    const Tool::ApplyOutcome outcome = session.apply();
    EXPECT_EQ(outcome.state, State::Applied);
    EXPECT_EQ(outcome.reason, "");
    EXPECT_EQ(inFile("a"), 2);
    EXPECT_TRUE(session->pending().edits().empty());
    EXPECT_TRUE(session->conflicts().empty());
}

TEST(SessionApply, EndsWithTheSessionWhileItWaits) {
    setByTool("a", "1");
    const Gate holds;
    const Gate end;
    ChildProcess holder([&] {
        if (!takeLock()) return false;
        holds.open();
        return end.wait();
    });
    ASSERT_TRUE(holds.wait());
    {
        RunningSession session;
        session->edit("a", 2);
        session->apply({});
        ASSERT_TRUE(waitFor([&] { return !session.waits().empty(); }));
    }
    end.open();
    EXPECT_TRUE(holder.succeeded());
    EXPECT_EQ(run({"set", "b", "1"}).exitCode, 0) << "nobody has the lock";
    EXPECT_EQ(inFile("a"), 1);
}

TEST(SessionBesideAnotherProcess, LosesNothingOfEitherInManyRounds) {
    setByTool("A", "0");
    RunningSession session;
    const int rounds = isSanitized() ? 20 : 200;
    std::mt19937 random(42);
    int last = 0;
    for (int round = 1; round <= rounds; ++round) {
        const auto pause = std::chrono::microseconds(random() % 20'000);
        std::thread other([round, pause] {
            std::this_thread::sleep_for(pause);
            EXPECT_EQ(run({"set", "A", std::to_string(round)}).exitCode, 0);
        });
        session->edit("B", round);
        const Tool::ApplyOutcome outcome = session.apply();
        other.join();
        EXPECT_EQ(outcome.state, State::Applied) << outcome.reason;
        ASSERT_EQ(inFile("A"), round);
        if (outcome.state == State::Applied) last = round;
        ASSERT_EQ(inFile("B"), last);
    }
    EXPECT_TRUE(session.shows("A", rounds));
    EXPECT_EQ(session.effective("B"), last);
}

TEST(SessionBesideAnotherProcess, NeverOverwritesSilentlyTheSettingThatBothChange) {
    setByTool("A", "0");
    RunningSession session;
    const int rounds = isSanitized() ? 10 : 50;
    std::mt19937 random(43);
    for (int round = 1; round <= rounds; ++round) {
        const std::int64_t base = inFile("A").integerValue();
        ASSERT_TRUE(session.shows("A", base));
        const auto pause = std::chrono::microseconds(random() % 20'000);
        const int theirs = 1000 + round;
        std::thread other([theirs, pause] {
            std::this_thread::sleep_for(pause);
            EXPECT_EQ(run({"set", "A", std::to_string(theirs)}).exitCode, 0);
        });
        session->edit("A", 2000 + round);
        const Tool::ApplyOutcome outcome = session.apply();
        other.join();
        const PropertyListValue now = inFile("A");
        const bool isTold = !outcome.overwritten.empty() || !outcome.conflicts.empty();
        // Who saved last is in the file. Where that is the window, it saw theirs or says so.
        EXPECT_TRUE(now == theirs || isTold) << "round " << round;
        session->discardAll();
    }
}

TEST(SessionBesideAnotherProcess, TwoAndTheToolShowWhatTheFileHoldsAfterManyWrites) {
    const int each = isSanitized() ? 10 : 300;
    const int byTool = isSanitized() ? 40 : 400;
    setByTool("seed", "1");
    const std::string count = std::to_string(each);
    ToolSupport::RunningTool one(QRV_SESSION_PROGRAM, {"One", count, QRV_APPLY_PROGRAM}, {});
    ToolSupport::RunningTool two(QRV_SESSION_PROGRAM, {"Two", count, QRV_APPLY_PROGRAM}, {});
    for (int number = 1; number <= byTool; ++number)
        ASSERT_EQ(
            run({"set", "Tool.k" + std::to_string(number % 10), std::to_string(number)}).exitCode,
            0);
    ASSERT_TRUE(waitFor([&] { return inFile("One") == each && inFile("Two") == each; }))
        << one.errors() << two.errors();
    setByTool("Test.End", "1");
    const ToolSupport::Outcome ofOne = one.finish();
    const ToolSupport::Outcome ofTwo = two.finish();
    EXPECT_EQ(ofOne.exitCode, 0) << ofOne.errors;
    EXPECT_EQ(ofOne.output, ofTwo.output);
    const std::string file = R"("One":)" + count + R"(,"Test.End":1,"Tool.k0":)" +
                             std::to_string(byTool) + R"(,"Tool.k1":)" + std::to_string(byTool - 9);
    EXPECT_THAT(ofOne.output, HasSubstr(file));
}
