// SPDX-License-Identifier: MIT
// Presenters of several processes, and of processes that lack something.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <filesystem>

#include "Files/PresenterSupport.h"
#include "Files/SystemCallFilter.h"

using namespace PresenterSupport;
namespace fs = std::filesystem;

namespace {

/// The file holds two numbers, each of which one process counts up: "12 34".
struct Counts {
    int first = 0;
    int second = 0;
};

Counts countsIn(const std::string& path) {
    Counts counts;
    std::ifstream(path) >> counts.first >> counts.second;
    return counts;
}

bool countUp(const NSFilePresenter* performer, int Counts::*which) {
    bool isReplaced = false;
    NSFileCoordinator(performer).coordinateWritingItemAtURL(
        "file", NSFileCoordinator::WritingOptions::ForReplacing, [&](const std::string& url) {
            Counts counts = countsIn(url);
            ++(counts.*which);
            isReplaced = !replaceFile(
                url, std::to_string(counts.first) + " " + std::to_string(counts.second));
        });
    return isReplaced;
}

constexpr int rounds = 300;

/// Counts its own number up, and has seen the end of the other's when this returns true.
bool countsUpAndSeesTheOther(int Counts::*own, int Counts::*other) {
    std::atomic<int> seen = 0;
    bool isSaved = true;
    const Reader reader("file", [&] { seen = std::max(seen.load(), countsIn("file").*other); });
    for (int round = 0; round < rounds; ++round) isSaved = countUp(&reader, own) && isSaved;
    return isSaved && waitUntil([&] { return seen == rounds; });
}

/// A child in which a system call fails sees all changes of a file and of what is on its way.
bool childSeesChangesWithout(SystemCall call, int error) {
    const Gate isReady;
    const Gate hasSeenTheFirst;
    ChildProcess child([&] {
        failCall(call, error);
        const Reader reader("a/file");
        isReady.open();
        if (!reader.sees("first")) return false;
        const int count = reader.count();
        if (!save(&reader, "a/file", "own") || !save(&reader, "a/file", "own too")) return false;
        hasSeenTheFirst.open();
        return reader.sees("second") && reader.count() > count;
    });
    if (!isReady.wait()) return false;
    fs::create_directories("a");
    writePlainly("a/file", "first");
    if (!hasSeenTheFirst.wait()) return false;
    fs::rename("a", "away");
    fs::create_directory("elsewhere");
    writePlainly("elsewhere/file", "second");
    fs::create_symlink("elsewhere", "a");
    return child.succeeded();
}

}  // namespace

TEST(PresentersAmongProcesses, AreToldOfWhatAnotherProcessSaves) {
    const Gate isReady;
    ChildProcess child([&] { return isReady.wait() && save(nullptr, "a/file", "theirs"); });
    const Reader reader("a/file");
    isReady.open();
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(reader.sees("theirs"));
}

TEST(PresentersAmongProcesses, EachSeesTheOthersSavesAmongItsOwn) {
    ChildProcess child([] { return countsUpAndSeesTheOther(&Counts::second, &Counts::first); });
    EXPECT_TRUE(countsUpAndSeesTheOther(&Counts::first, &Counts::second));
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), std::to_string(rounds) + " " + std::to_string(rounds));
}

TEST(PresentersAmongProcesses, NothingMoreIsToldWhenAllIsQuiet) {
    ChildProcess child([] {
        for (int round = 0; round < rounds; ++round)
            if (!countUp(nullptr, &Counts::second)) return false;
        return true;
    });
    const Reader reader("file");
    while (!child.hasEnded()) ASSERT_TRUE(countUp(&reader, &Counts::first));
    EXPECT_TRUE(child.succeeded());
    const int count = finalCount(reader);
    for (int round = 0; round < rounds; ++round) ASSERT_TRUE(countUp(&reader, &Counts::first));
    EXPECT_EQ(finalCount(reader), count);
}

TEST(PresentersAmongProcesses, AForkedChildHasNoneAndMayAddItsOwn) {
    const Reader parents("file");
    ASSERT_TRUE(save(&parents, "file", "own"));
    ASSERT_TRUE(finishEvents());
    const Gate isReady;
    ChildProcess child([&] {
        const int before = parents.count();
        Reader own("file");
        if (!finishEvents()) return false;
        isReady.open();
        return own.sees("theirs") && save(&own, "file", "the child's") &&
               finalCount(own) == own.count() && parents.count() == before;
    });
    ASSERT_TRUE(isReady.wait());
    // Its events go to both.
    replaceByRename("file", "theirs");
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(parents.sees("the child's"));
}

TEST(PresentersAmongProcesses, AForkedChildTakesNoEventsAway) {
    const Reader parents("file");
    for (int round = 0; round < 20; ++round) {
        ChildProcess child([] { return finishEvents(); });
        const std::string bytes = std::to_string(round);
        replaceByRename("file", bytes);
        ASSERT_TRUE(child.succeeded());
        ASSERT_TRUE(parents.sees(bytes));
    }
}

TEST(PresentersAmongProcesses, AProcessMayExitAmongItsNotifications) {
    for (int round = 0; round < 10; ++round) {
        const Gate isReady;
        ChildProcess child([&]() -> bool {
            const auto& reader = *new Reader("file");
            isReady.open();
            if (!reader.isNotifiedMoreThan(5)) return false;
            std::exit(0);
        });
        ASSERT_TRUE(isReady.wait());
        while (!child.hasEnded()) replaceByRename("file", "x");
        EXPECT_TRUE(child.succeeded());
    }
}

TEST(PresentersWithoutMeans, WithoutAnInotifyInstanceTheFileIsPolled) {
    EXPECT_TRUE(childSeesChangesWithout(SystemCall::InotifyStart, EMFILE));
}

TEST(PresentersWithoutMeans, WithoutMoreInotifyWatchesTheFileIsPolled) {
    EXPECT_TRUE(childSeesChangesWithout(SystemCall::InotifyAdd, ENOSPC));
}

TEST(PresentersWithoutMeans, WithoutMemoryForAWatchTheFileIsPolled) {
    EXPECT_TRUE(childSeesChangesWithout(SystemCall::InotifyAdd, ENOMEM));
}

TEST(PresentersWithoutMeans, WithoutAnyDescriptorLeftTheFileIsPolledUntilThereAreSome) {
    const Gate isReady;
    const Gate hasSeenTheFirst;
    ChildProcess child([&] {
        rlimit old{};
        getrlimit(RLIMIT_NOFILE, &old);
        const rlimit none{0, old.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        const Reader reader("file");
        setrlimit(RLIMIT_NOFILE, &old);
        isReady.open();
        if (!reader.sees("first")) return false;
        hasSeenTheFirst.open();
        return reader.sees("second");
    });
    ASSERT_TRUE(isReady.wait());
    writePlainly("file", "first");
    ASSERT_TRUE(hasSeenTheFirst.wait());
    writePlainly("file", "second");
    EXPECT_TRUE(child.succeeded());
}

TEST(PresentersWithoutMeans, AFolderFarUpThatMayNotBeReadDoesNotMatter) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    const std::string above = fs::current_path() / "above";
    fs::create_directories("above/open");
    chmod(".", 0711);
    chmod("above", 0711);
    chmod("above/open", 0777);
    ChildProcess child([&] {
        constexpr uid_t nobody = 65534;
        if (setuid(nobody) != 0 || ::open(above.c_str(), O_RDONLY) >= 0) return false;
        const Reader reader(above + "/open/file");
        writePlainly(above + "/open/file", "x");
        return reader.sees("x");
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(PresentersWithoutMeans, AFileInAFolderThatMayNotBeReadIsPolled) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    const std::string path = fs::current_path() / "secret/file";
    fs::create_directory("secret");
    writePlainly(path, "old");
    chmod(".", 0711);
    chmod("secret", 0711);
    const Gate isReady;
    ChildProcess child([&] {
        constexpr uid_t nobody = 65534;
        if (setuid(nobody) != 0) return false;
        const Reader reader(path);
        isReady.open();
        return reader.sees("new");
    });
    ASSERT_TRUE(isReady.wait());
    replaceByRename(path, "new");
    EXPECT_TRUE(child.succeeded());
}
