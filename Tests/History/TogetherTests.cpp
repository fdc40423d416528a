// SPDX-License-Identifier: MIT
// Several processes: some take part, some do not, some die.

#include <algorithm>
#include <map>
#include <memory>
#include <random>

#include "HistorySupport.h"
#include "Recorder.h"
#include "Support/ChildProcess.h"
#include "Support/HostProcess.h"
#include "Support/Shortages.h"

using namespace HistorySupport;

namespace {

using Values = std::map<std::string, PropertyListValue>;

/// Runs `body` as a program of its own that takes part.
void asProgram(const std::string& name, const std::function<void()>& body) {
    ChildProcess child([&] {
        QRVSettings::sharedSettings().setMergesSaves(true);
        QRVHistoryStart(name);
        body();
        return QRVHistoryWait(longTime);
    });
    EXPECT_TRUE(child.succeeded()) << name;
}

/// Each change begins with what the earlier ones have left, and all together lead to the file: so
/// nothing is missing, and nothing is entered twice.
void expectAChain(const NSDictionary& first) {
    Values values = HostProcess::settingsOf(first);
    const auto all = saves();
    for (auto save = all.rbegin(); save != all.rend(); ++save)
        for (const QRVHistoryChange& change : save->changes) {
            const auto known = values.find(change.keyPath);
            const PropertyListValue before = known == values.end() ? nullptr : known->second;
            EXPECT_EQ(change.before, before) << save->id << " " << lineOf(*save);
            if (change.after.isNull())
                values.erase(change.keyPath);
            else
                values[change.keyPath] = change.after;
        }
    EXPECT_EQ(values, HostProcess::settingsOf(StoreSupport::fileTree()));
}

}  // namespace

TEST(HistoryTogether, WhatChangedWhileNobodyRanIsEnteredOnceByTheNextProgram) {
    asProgram("first", [] { QRVSettingsSetObjectForKeyPath(1, "A"); });
    otherReplaces(NSDictionary{{"A", 2}});
    asProgram("second", [] {});
    asProgram("third", [] {});
    EXPECT_EQ(lines(), (Lines{"first/set: A none > 1", "?: A 1 > 2"}));
}

TEST(HistoryTogether, AProgramWithoutAnotherStateOfTheFileEntersNothing) {
    asProgram("first", [] { QRVSettingsSetObjectForKeyPath(1, "A"); });
    asProgram("second", [] { QRVSettingsSetObjectForKeyPath(2, "A"); });
    EXPECT_EQ(lines(), (Lines{"first/set: A none > 1", "second/set: A 1 > 2"}));
}

TEST(HistoryTogether, ManyThatStartAtOnceEnterAnUnknownChangeOnce) {
    asProgram("first", [] { QRVSettingsSetObjectForKeyPath(1, "A"); });
    otherReplaces(NSDictionary{{"A", 2}});
    HostProcess::Hosts hosts(8);
    for (std::size_t host = 0; host < 8; ++host)
        hosts.add([&hosts, host] {
            return hosts.meet(host) && QRVHistoryStart("host") && QRVHistoryWait(longTime);
        });
    EXPECT_TRUE(hosts.letMeet());
    hosts.expectSuccess();
    EXPECT_EQ(lines(), (Lines{"first/set: A none > 1", "?: A 1 > 2"}));
}

TEST(HistoryTogether, SettingsFilesHaveTheirOwnEntries) {
    asProgram("first", [] { QRVSettingsSetObjectForKeyPath(1, "A"); });
    ChildProcess elsewhere([] {
        setenv("XDG_CONFIG_HOME", (std::string(getenv("HOME")) + "/elsewhere").c_str(), 1);
        start();
        set(7, "B");
        return lines() == Lines{"test/set: B none > 7"};
    });
    EXPECT_TRUE(elsewhere.succeeded());
    EXPECT_EQ(lines(), Lines{"first/set: A none > 1"});
}

TEST(HistoryTogether, ASaveThatIsEnteredLateIsTakenOutOfWhatOthersEnteredAsUnknown) {
    asProgram("first", [] {});
    const Gate saved;
    const Gate goesOn;
    ChildProcess late([&] {
        start();
        wait();
        QRVHistoryInside::Recorder::queue().async(
            [&] { static_cast<void>(goesOn.wait(longTime)); });
        for (const int value : {1, 2}) {
            QRVSettingsSetObjectForKeyPath(value, "A");
            HostProcess::allIsSaved();
        }
        saved.open();
        return QRVHistoryWait(longTime);
    });
    ASSERT_TRUE(saved.wait());
    otherReplaces(NSDictionary{{"A", 2}, {"Other", 3}});
    asProgram("second", [] { QRVSettingsSetObjectForKeyPath(5, "B"); });
    EXPECT_EQ(lines(), (Lines{"?: A none > 2 Other none > 3", "second/set: B none > 5"}));
    goesOn.open();
    EXPECT_TRUE(late.succeeded());
    EXPECT_EQ(lines(), (Lines{"test/set: A none > 1", "test/set: A 1 > 2", "?: Other none > 3",
                              "second/set: B none > 5"}));
}

TEST(HistoryTogether, ASaveOfAKilledProgramStaysUnknown) {
    asProgram("first", [] {});
    ChildProcess killed([] {
        start();
        wait();
        QRVHistoryInside::Recorder::queue().async([] { raise(SIGKILL); });
        QRVSettingsSetObjectForKeyPath(1, "A");
        return !QRVHistoryWait(longTime);
    });
    EXPECT_TRUE(killed.diedOf(SIGKILL));
    asProgram("second", [] {});
    asProgram("third", [] {});
    // It may have died before its save.
    const NSDictionary tree = StoreSupport::fileTree();
    EXPECT_EQ(lines(), tree.isNull() ? Lines{} : Lines{"?: A none > 1"});
}

TEST(HistoryTogether, AForkedChildEntersItsOwnSaves) {
    if (isSanitized) GTEST_SKIP() << "forks beside threads";
    start();
    set(1, "A");
    ChildProcess child([] {
        QRVSettingsSetObjectForKeyPath(2, "A");
        return QRVHistoryWait(longTime) && saves().at(0).process == getpid();
    });
    EXPECT_TRUE(child.succeeded());
    set(3, "B");
    EXPECT_EQ(lines(),
              (Lines{"test/set: A none > 1", "test/set: A 1 > 2", "test/set: B none > 3"}));
    EXPECT_EQ(saves().at(0).process, getpid());
}

namespace {

/// A writer among many; every third takes no part, and every fifth is killed.
struct Writer {
    int number;
    bool takesPart;
    bool dies;
};

bool write(const Writer& writer, int saves, bool merges) {
    QRVSettings::sharedSettings().setMergesSaves(merges);
    if (writer.takesPart) QRVHistoryStart("writer" + std::to_string(writer.number));
    for (int value = 1; value <= saves; ++value) {
        QRVSettingsSetObjectForKeyPath(value, "Writer" + std::to_string(writer.number) + ".Count");
        QRVSettingsSetObjectForKeyPath(writer.number * 1000 + value, "Shared");
        if (QRVSettingsWaitForSaves(longTime).state != QRVSaveStatus::State::Saved) return false;
        if (writer.dies && value == saves) raise(SIGKILL);
    }
    return !writer.takesPart || QRVHistoryWait(longTime);
}

void writeTogether(int count, int saves, bool merges) {
    asProgram("first", [] {});
    std::vector<std::unique_ptr<ChildProcess>> processes;
    std::vector<Writer> writers;
    for (int number = 0; number < count; ++number)
        writers.push_back({number, number % 3 != 2, number % 5 == 4});
    for (const Writer& writer : writers)
        processes.push_back(
            std::make_unique<ChildProcess>([=] { return write(writer, saves, merges); }));
    for (const Writer& writer : writers) {
        ChildProcess& process = *processes[static_cast<std::size_t>(writer.number)];
        EXPECT_TRUE(waitUntil([&process] { return process.hasEnded(); }) ||
                    waitUntil([&process] { return process.hasEnded(); }));
        EXPECT_TRUE(writer.dies ? process.diedOf(SIGKILL) : process.succeeded()) << writer.number;
    }
    asProgram("last", [] {});
    expectAChain(nullptr);
    for (const Writer& writer : writers) {
        const std::string program = "writer" + std::to_string(writer.number);
        int own = 0;
        int others = 0;
        for (const QRVHistorySave& save :
             HistorySupport::saves({.prefix = "Writer" + std::to_string(writer.number)}))
            ++(save.program == program ? own : others);
        EXPECT_TRUE(writer.takesPart || own == 0) << program;
        // Where saves are merged nobody else changes it.
        if (merges && writer.takesPart && !writer.dies) {
            EXPECT_EQ(own, saves) << program;
            EXPECT_EQ(others, 0) << program;
        }
    }
}

}  // namespace

TEST(HistoryTogether, AChainIsLeftByWritersThatMerge) {
    writeTogether(isSanitized ? 6 : 24, isSanitized ? 3 : 5, true);
}

TEST(HistoryTogether, AChainIsLeftByWritersOfWholeTrees) {
    writeTogether(isSanitized ? 6 : 24, isSanitized ? 3 : 5, false);
}

TEST(HistoryTogether, AChainIsLeftByTwoHundredWriters) {
    writeTogether(isSanitized ? 8 : 200, 1, true);
}
