// SPDX-License-Identifier: MIT
// Coordination among real processes, some of which are stopped or killed.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "Coordination/KernelLocks.h"
#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace {

bool write(const NSFileCoordinator::Accessor& accessor) {
    return !NSFileCoordinator().coordinateWritingItemAtURL(
        "file", NSFileCoordinator::WritingOptions::ForReplacing, accessor);
}

bool read(const NSFileCoordinator::Accessor& accessor) {
    return !NSFileCoordinator().coordinateReadingItemAtURL(
        "file", NSFileCoordinator::ReadingOptions::None, accessor);
}

/// A process that has the write lock until it is released.
class Holder {
  public:
    Holder()
        : process_([this] {
              bool isReleased = false;
              return write([&](const std::string&) {
                         holds_.open();
                         isReleased = end_.wait();
                     }) &&
                     isReleased;
          }) {}
    [[nodiscard]] bool holds() const { return holds_.wait(); }
    void release() const { end_.open(); }
    ChildProcess& process() { return process_; }

  private:
    Gate holds_;
    Gate end_;
    ChildProcess process_;
};

/// Adds 1 to the number in the file, in a way that loses counts when two do it at once.
void increment(const std::string& path) {
    const std::string text = readPlainly(path);
    writePlainly(path, std::to_string(text.empty() ? 1 : std::stoi(text) + 1));
}

/// How long a stopped holder stays so: QRV_STOPPED_SECONDS, and without it only for a moment.
std::chrono::seconds longStop() {
    const char* const text = std::getenv("QRV_STOPPED_SECONDS");
    return std::chrono::seconds(text == nullptr ? 0 : std::stoi(text));
}

std::string oneLetter(std::size_t round) {
    return std::string(1000 + 7919 * (round % 26), static_cast<char>('a' + round % 26));
}

bool isOneLetter(const std::string& bytes) {
    return !bytes.empty() && bytes == oneLetter(static_cast<std::size_t>(bytes[0] - 'a'));
}

}  // namespace

TEST(CoordinationAmongProcesses, WritersExcludeEachOther) {
    const auto countTo200 = [] {
        for (int count = 0; count < 200; ++count)
            if (!write(increment)) return false;
        return true;
    };
    ChildProcess first(countTo200);
    ChildProcess second(countTo200);
    EXPECT_TRUE(countTo200());
    EXPECT_TRUE(first.succeeded());
    EXPECT_TRUE(second.succeeded());
    EXPECT_EQ(readPlainly("file"), "600");
}

TEST(CoordinationAmongProcesses, AWriterWaitsForTheHolder) {
    const Holder holder;
    ASSERT_TRUE(holder.holds());
    ChildProcess writer([] { return write([](const std::string&) {}); });
    ASSERT_TRUE(waitUntil([&] { return isWaitingForALock(writer.pid()); }));
    EXPECT_FALSE(writer.hasEnded());
    holder.release();
    EXPECT_TRUE(writer.succeeded());
}

TEST(CoordinationAmongProcesses, AKilledHolderFreesTheLocks) {
    writePlainly("file", "x");
    Holder holder;
    ASSERT_TRUE(holder.holds());
    holder.process().send(SIGKILL);
    ASSERT_TRUE(holder.process().diedOf(SIGKILL));
    EXPECT_FALSE(isLocked(".file.lock"));
    EXPECT_FALSE(isLocked("file"));
    EXPECT_TRUE(write([](const std::string&) {}));
}

TEST(CoordinationAmongProcesses, AChildThatAKilledHolderHasForkedDoesNotKeepTheLocks) {
    writePlainly("file", "x");
    const Gate childLives;
    const Gate end;
    ChildProcess holder([&] {
        return write([&](const std::string&) {
            if (fork() == 0) {
                childLives.open();
                static_cast<void>(end.wait());
                _exit(0);
            }
            pause();
        });
    });
    ASSERT_TRUE(childLives.wait());
    holder.send(SIGKILL);
    ASSERT_TRUE(holder.diedOf(SIGKILL));
    EXPECT_FALSE(isLocked(".file.lock"));
    EXPECT_FALSE(isLocked("file"));
    EXPECT_TRUE(write([](const std::string&) {}));
    end.open();
}

TEST(CoordinationAmongProcesses, AProgramThatAKilledHolderHasStartedDoesNotKeepTheLocks) {
    writePlainly("file", "x");
    const Gate programRuns;
    const Gate end;
    ChildProcess holder([&] {
        return write([&](const std::string&) {
            if (fork() == 0) {
                execl("/bin/sh", "sh", "-c", "echo > $0; head -c1 < $1",
                      programRuns.pathToOpen().c_str(), end.pathToWait().c_str(), nullptr);
                _exit(1);
            }
            pause();
        });
    });
    ASSERT_TRUE(programRuns.wait());
    holder.send(SIGKILL);
    ASSERT_TRUE(holder.diedOf(SIGKILL));
    EXPECT_FALSE(isLocked(".file.lock"));
    EXPECT_FALSE(isLocked("file"));
    EXPECT_TRUE(write([](const std::string&) {}));
    end.open();
}

TEST(CoordinationAmongProcesses, AForkedChildThatLeavesTheAccessLeavesItsParentTheLocks) {
    writePlainly("file", "x");
    pid_t child = -1;
    bool isStillHeld = false;
    write([&](const std::string&) {
        child = fork();
        if (child == 0) return;
        waitpid(child, nullptr, 0);
        isStillHeld = isLockedAlone(".file.lock") && isLockedAlone("file");
    });
    if (child == 0) _exit(0);
    EXPECT_TRUE(isStillHeld);
    EXPECT_FALSE(isLocked(".file.lock"));
    EXPECT_FALSE(isLocked("file"));
}

TEST(CoordinationAmongProcesses, BehindAStoppedHolderAReaderReadsAndAWriterWaits) {
    replaceFile("file", "whole");
    Holder holder;
    ASSERT_TRUE(holder.holds());
    ASSERT_TRUE(holder.process().stop());
    ChildProcess writer([] { return write([](const std::string&) {}); });
    ASSERT_TRUE(waitUntil([&] { return isWaitingForALock(writer.pid()); }));

    const auto start = std::chrono::steady_clock::now();
    std::string seen;
    EXPECT_TRUE(read([&](const std::string& path) { seen = readPlainly(path); }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, readerLockTimeout);
    EXPECT_EQ(seen, "whole");

    std::this_thread::sleep_for(longStop());
    holder.release();
    EXPECT_TRUE(isWaitingForALock(writer.pid()));
    EXPECT_FALSE(writer.hasEnded());
    holder.process().send(SIGCONT);
    EXPECT_TRUE(writer.succeeded());
}

TEST(CoordinationAmongProcesses, AWriterNoticesThatTheLockFileWasReplaced) {
    const Holder first;
    ASSERT_TRUE(first.holds());
    ChildProcess writer([] { return write([](const std::string&) {}); });
    ASSERT_TRUE(waitUntil([&] { return isWaitingForALock(writer.pid()); }));

    std::filesystem::remove(".file.lock");
    const Holder second;
    ASSERT_TRUE(second.holds()) << "the new lock file is free";
    struct stat status {};
    ASSERT_EQ(stat(".file.lock", &status), 0);
    first.release();
    EXPECT_TRUE(waitUntil([&] {
        return isWaitingForALock(writer.pid(), std::to_string(status.st_ino));
    })) << "the writer has turned to the new lock file";
    EXPECT_FALSE(writer.hasEnded());
    second.release();
    EXPECT_TRUE(writer.succeeded());
}

TEST(CoordinationAmongProcesses, EveryReadDuringReplacementsIsWholeWithAndWithoutTheLock) {
    replaceFile("file", oneLetter(0));
    ChildProcess writer([] {
        for (std::size_t round = 0; round < 300; ++round)
            if (!write([&](const std::string& path) { replaceFile(path, oneLetter(round)); }))
                return false;
        return true;
    });
    int count = 0;
    while (!writer.hasEnded()) {
        ASSERT_TRUE(isOneLetter(readPlainly("file")));
        read([](const std::string& path) {
            const FileContents contents = contentsOfFile(path, 1 << 20);
            EXPECT_FALSE(contents.error);
            EXPECT_TRUE(isOneLetter(contents.bytes));
        });
        ++count;
    }
    EXPECT_TRUE(writer.succeeded());
    EXPECT_GT(count, 0);
    EXPECT_EQ(readPlainly("file"), oneLetter(299));
}

TEST(CoordinationAmongProcesses, AKillAtAnyMomentOfAReplacementLeavesAWholeFile) {
    replaceFile("file", oneLetter(0));
    for (unsigned round = 0; round < 30; ++round) {
        const Gate isStarted;
        ChildProcess writer([&] {
            isStarted.open();
            for (std::size_t number = 0;; ++number)
                write([&](const std::string& path) { replaceFile(path, oneLetter(number)); });
            return false;
        });
        ASSERT_TRUE(isStarted.wait());
        std::this_thread::sleep_for(std::chrono::microseconds(997 * round));
        writer.send(SIGKILL);
        ASSERT_TRUE(writer.diedOf(SIGKILL));
        ASSERT_TRUE(isOneLetter(readPlainly("file"))) << round;
        ASSERT_TRUE(
            write([](const std::string& path) { EXPECT_FALSE(replaceFile(path, oneLetter(1))); }));
        EXPECT_EQ(everythingIn("."), (std::set<std::string>{".file.lock", "file"}));
    }
}
