// SPDX-License-Identifier: MIT
// Presenters of several processes, and of processes that lack something.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

#include "Files/SystemCallFilter.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Presenters/PresenterSupport.h"
#include "Support/Shortages.h"

using namespace QRVPlatform;

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
    const Reader reader("file",
                        [&](Reader&) { seen = std::max(seen.load(), countsIn("file").*other); });
    for (int round = 0; round < rounds; ++round) isSaved = countUp(&reader, own) && isSaved;
    return isSaved && waitUntil([&] { return seen == rounds; });
}

/// A child in which system calls fail sees all changes of a file and of what is on its way.
bool childSeesChangesWithout(std::initializer_list<SystemCall> calls, int error) {
    const Gate isReady;
    const Gate hasSeenTheFirst;
    ChildProcess child([&] {
        for (const SystemCall call : calls) failCall(call, error);
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

/// How often the threads of that name have gone to sleep.
std::size_t sleepsOf(const std::string& thread) {
    std::size_t count = 0;
    for (const auto& task : fs::directory_iterator("/proc/self/task")) {
        if (readPlainly(task.path() / "comm") != thread + "\n") continue;
        std::ifstream status(task.path() / "status");
        for (std::string word; status >> word;) {
            std::size_t sleeps = 0;
            if (word == "voluntary_ctxt_switches:" && status >> sleeps) count += sleeps;
        }
    }
    return count;
}

/// This process has an inotify watch of the folder or file: the kernel lists their inode numbers.
bool isWatching(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    std::ostringstream inode;
    inode << " ino:" << std::hex << status.st_ino << " ";
    for (const auto& entry : fs::directory_iterator("/proc/self/fdinfo"))
        if (readPlainly(entry.path()).find(inode.str()) != std::string::npos) return true;
    return false;
}

}  // namespace

TEST(PresentersAmongProcesses, AreNotifiedOfWhatAnotherProcessSaves) {
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

TEST(PresentersAmongProcesses, ASaveOfAnotherProcessWakesTheWatchingThreadOnceOrTwice) {
    constexpr int saves = 100;
    const Gate isWanted;
    ChildProcess child([&] {
        std::ifstream wanted(isWanted.pathToWait());
        for (int number = 0; number < saves; ++number) {
            wanted.get();
            if (!save(nullptr, "file", std::to_string(number))) return false;
        }
        return true;
    });
    writePlainly("file", "old");
    const Reader reader("file");
    ASSERT_TRUE(finishEvents());
    // What others do in folders above is an event, too: so the quietest ten saves count.
    constexpr int together = 10;
    std::size_t least = SIZE_MAX;
    std::size_t before = sleepsOf("file-presenters");
    for (int number = 0; number < saves; ++number) {
        isWanted.open();
        ASSERT_TRUE(reader.sees(std::to_string(number)));
        if (number % together != together - 1) continue;
        const std::size_t now = sleepsOf("file-presenters");
        least = std::min(least, now - std::exchange(before, now));
    }
    EXPECT_TRUE(child.succeeded());
    EXPECT_LE(least, 3U * together);
}

TEST(PresentersAmongProcesses, NoNotificationComesWhenAllIsQuiet) {
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

TEST(PresentersAmongProcesses, AForkedChildGoesOnWithThoseOfItsParent) {
    Reader parents("file");
    ASSERT_TRUE(save(&parents, "file", "own"));
    ASSERT_TRUE(finishEvents());
    const Gate isReady;
    ChildProcess child([&] {
        // A use of a queue, as of any program that expects something on its main thread.
        static_cast<void>(DispatchMainQueue::shared().wait(std::chrono::nanoseconds(0)));
        if (!parents.sees("own")) return false;
        isReady.open();
        if (!parents.sees("theirs")) return false;
        const int count = finalCount(parents);
        return save(&parents, "file", "the child's") && finalCount(parents) == count;
    });
    ASSERT_TRUE(isReady.wait());
    // Its events go to both.
    replaceByRename("file", "theirs");
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(parents.sees("the child's"));
}

TEST(PresentersAmongProcesses, AForkedChildNoticesWhatHappensBeforeItsThreadStarts) {
    Reader parents("file");
    ASSERT_TRUE(finishEvents());
    const Gate hasChanged;
    ChildProcess child([&] {
        if (!hasChanged.wait()) return false;
        const int before = parents.count();
        static_cast<void>(DispatchMainQueue::shared().drain());
        return parents.isNotifiedMoreThan(before) && parents.sees("theirs");
    });
    replaceByRename("file", "theirs");
    hasChanged.open();
    EXPECT_TRUE(child.succeeded());
}

TEST(PresentersAmongProcesses, TheDescriptorOfAForkedChildAsksForTheDrainThatWatchesAgain) {
    Reader parents("file");
    ASSERT_TRUE(finishEvents());
    const int number = DispatchMainQueue::shared().fd();
    ChildProcess child([&] {
        pollfd entry{number, POLLIN, 0};
        if (poll(&entry, 1, 20000) != 1) return false;
        if (DispatchMainQueue::shared().drain() != 0 || poll(&entry, 1, 0) != 0) return false;
        if (!parents.isNotifiedMoreThan(0)) return false;
        replaceByRename("file", "x");
        return parents.sees("x");
    });
    EXPECT_TRUE(child.succeeded());
    pollfd entry{number, POLLIN, 0};
    EXPECT_EQ(poll(&entry, 1, 0), 0);
}

TEST(PresentersAmongProcesses, AForkedChildMayRemoveThoseOfItsParentAndAddItsOwn) {
    Reader parents("file");
    ASSERT_TRUE(finishEvents());
    ChildProcess child([&] {
        NSFileCoordinator::removeFilePresenter(parents);
        const Reader own("file");
        replaceByRename("file", "x");
        return own.sees("x") && parents.count() == 0;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_TRUE(parents.sees("x"));
}

TEST(PresentersAmongProcesses, AGrandchildWatchesWhenItsParentNeverDid) {
    Reader reader("file");
    ASSERT_TRUE(finishEvents());
    ChildProcess child([&] {
        ChildProcess grandchild([&] {
            static_cast<void>(DispatchMainQueue::shared().drain());
            replaceByRename("file", "x");
            return reader.sees("x");
        });
        return grandchild.succeeded() && reader.count() == 0;
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(PresentersAmongProcesses, AForkedChildTakesNoEventsAway) {
    if (isSanitized)
        GTEST_SKIP()
            << "a fork beside threads may leave the sanitizer's allocator locked in the child";
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
    EXPECT_TRUE(childSeesChangesWithout({SystemCall::InotifyStart}, EMFILE));
}

TEST(PresentersWithoutMeans, WithoutMoreInotifyWatchesTheFileIsPolled) {
    EXPECT_TRUE(childSeesChangesWithout({SystemCall::InotifyAdd}, ENOSPC));
}

TEST(PresentersWithoutMeans, WithoutMemoryForAWatchTheFileIsPolled) {
    EXPECT_TRUE(childSeesChangesWithout({SystemCall::InotifyAdd}, ENOMEM));
}

TEST(PresentersWithoutMeans, WithoutAnyDescriptorLeftTheFileIsPolled) {
    EXPECT_TRUE(
        childSeesChangesWithout({SystemCall::InotifyStart, SystemCall::EventDescriptor}, EMFILE));
}

TEST(PresentersWithoutMeans, WithoutAThreadNotificationsComeAfterTheNextUseOfAQueue) {
    letNobodyIn();
    ChildProcess child([] {
        std::vector<std::string> reported;
        setFileFailureHandler(
            [&](const FileFailure& failure) { reported.push_back(failure.operation); });
        std::optional<NoThreads> shortage(std::in_place);
        const Reader reader("file");
        const Reader another("file");
        replaceByRename("file", "x");
        reader.presentedItemOperationQueue()->addOperation([] {});
        static_cast<void>(DispatchMainQueue::shared().drain());
        shortage.reset();
        static_cast<void>(DispatchMainQueue::shared().drain());
        return reader.sees("x") && another.sees("x") &&
               reported == std::vector<std::string>(
                               {"start a thread to watch files", "start a thread for operations"});
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(PresentersWithoutMeans, AFileIsPolledAlsoWhenOthersAreWatched) {
    // Nothing that is watched takes part in the change.
    fs::create_directories("a/b");
    const Gate isReady;
    ChildProcess child([&] {
        const Reader watched("watched");
        if (!finishEvents()) return false;
        failCall(SystemCall::InotifyAdd, ENOSPC);
        const Reader polled("a/b/polled");
        isReady.open();
        return polled.sees("there");
    });
    ASSERT_TRUE(isReady.wait());
    writePlainly("a/b/polled", "there");
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
        return isWatching(above + "/open") && reader.sees("x");
    });
    EXPECT_TRUE(child.succeeded());
}

TEST(PresentersWithoutMeans, AFileThatMayNotBeReadIsWatchedThroughItsFolder) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    fs::create_directory("open");
    const std::string folder = fs::current_path() / "open";
    const std::string path = folder + "/file";
    writePlainly(path, "old");
    chmod(path.c_str(), 0600);
    chmod(".", 0711);
    const Gate isReady;
    const Gate hasSeenOne;
    ChildProcess child([&] {
        constexpr uid_t nobody = 65534;
        if (setuid(nobody) != 0 || ::open(path.c_str(), O_RDONLY) >= 0) return false;
        const Reader reader(path);
        const bool isWatched = isWatching(folder) && !isWatching(path);
        isReady.open();
        if (!isWatched || !reader.isNotifiedMoreThan(0)) return false;
        const int count = reader.count();
        hasSeenOne.open();
        return reader.isNotifiedMoreThan(count) && reader.sees("new");
    });
    ASSERT_TRUE(isReady.wait());
    writePlainly(path, "in place");
    ASSERT_TRUE(hasSeenOne.wait());
    writePlainly("new", "new");
    chmod("new", 0644);
    fs::rename("new", path);
    EXPECT_TRUE(child.succeeded());
}

TEST(PresentersWithoutMeans, AFileInAFolderThatMayNotBeReadIsPolledUntilItMay) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    const std::string folder = fs::current_path() / "secret";
    const std::string path = folder + "/file";
    fs::create_directory(folder);
    writePlainly(path, "old");
    chmod(".", 0711);
    chmod("secret", 0711);
    const Gate isReady;
    const Gate hasSeenIt;
    ChildProcess child([&] {
        constexpr uid_t nobody = 65534;
        if (setuid(nobody) != 0) return false;
        const Reader reader(path);
        const bool isPolled = !isWatching(folder);
        isReady.open();
        if (!isPolled || !reader.sees("new")) return false;
        hasSeenIt.open();
        return waitUntil([&] { return isWatching(folder); });
    });
    ASSERT_TRUE(isReady.wait());
    replaceByRename(path, "new");
    ASSERT_TRUE(hasSeenIt.wait());
    chmod("secret", 0755);
    EXPECT_TRUE(child.succeeded());
}
