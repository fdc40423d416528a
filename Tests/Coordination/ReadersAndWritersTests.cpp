// SPDX-License-Identifier: MIT
// Readers beside writers, in real processes: who waits for whom, and for how long.

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "Coordination/KernelLocks.h"
#include "Files/SystemCallFilter.h"
#include "Files/TestFiles.h"
#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Coordination/FileLock.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"
#include "Support/TracedProcess.h"

using namespace QRVPlatform;

namespace {

using Clock = std::chrono::steady_clock;

bool writeCoordinated(const NSFileCoordinator::Accessor& accessor) {
    return !NSFileCoordinator().coordinateWritingItemAtURL(
        "file", NSFileCoordinator::WritingOptions::None, accessor);
}

bool readCoordinated(const NSFileCoordinator::Accessor& accessor) {
    return !NSFileCoordinator().coordinateReadingItemAtURL(
        "file", NSFileCoordinator::ReadingOptions::None, accessor);
}

/// As the store does.
bool save(const std::string& bytes) {
    std::error_code error;
    const auto replace = [&](WriteAccess& access) { error = replaceFile(access, bytes); };
    return !coordinateWriting(NSFileCoordinator(), "file",
                              NSFileCoordinator::WritingOptions::ForReplacing, replace) &&
           !error;
}

std::string textOfRead() {
    std::string seen;
    EXPECT_TRUE(readCoordinated([&](const std::string& path) { seen = readPlainly(path); }));
    return seen;
}

/// A process in the accessor of a read or write until it is released.
class Visitor {
  public:
    using Access = std::function<bool(const NSFileCoordinator::Accessor&)>;
    using Step = std::function<void(const std::string& path)>;
    Visitor(
        const Access& access, const Step& before = [](const std::string&) {},
        const std::function<bool(const std::string& path)>& after =
            [](const std::string&) { return true; })
        : process_([&, this] {
              bool isRight = false;
              return access([&](const std::string& path) {
                         before(path);
                         isInside_.open();
                         isRight = end_.wait() && after(path);
                     }) &&
                     isRight;
          }) {}
    [[nodiscard]] bool isInside() const { return isInside_.wait(); }
    void release() const { end_.open(); }
    ChildProcess& process() { return process_; }

  private:
    Gate isInside_;
    Gate end_;
    ChildProcess process_;
};

bool becomeNobody() {
    constexpr uid_t nobody = 65534;
    return setuid(nobody) == 0;
}

/// In place, so that a reader that comes meanwhile sees a part.
void writeLetterByLetter(const std::string& path, std::size_t count, char letter) {
    std::ofstream file(path, std::ios::binary);
    for (std::size_t position = 0; position < count; ++position) file.put(letter).flush();
}

}  // namespace

TEST(ReadersAndWriters, ASaveWaitsForAReaderOfAFileWithoutALockFile) {
    writePlainly("file", "old");
    Visitor reader(
        readCoordinated, [](const std::string&) {},
        [](const std::string& path) { return readPlainly(path) == "old"; });
    ASSERT_TRUE(reader.isInside());
    ChildProcess writer([] { return save("new"); });
    EXPECT_TRUE(isPollingForTheLockOf(writer, "file"));
    EXPECT_EQ(readPlainly(".file.tmp"), "new") << "all but the rename is done";
    reader.release();
    EXPECT_TRUE(reader.process().succeeded());
    EXPECT_TRUE(writer.succeeded());
    EXPECT_EQ(readPlainly("file"), "new");
}

TEST(ReadersAndWriters, TheAccessorOfAWriterWaitsForAReaderOfAFileWithoutALockFile) {
    writePlainly("file", "old");
    Visitor reader(readCoordinated);
    ASSERT_TRUE(reader.isInside());
    const Gate isWriting;
    ChildProcess writer(
        [&] { return writeCoordinated([&](const std::string&) { isWriting.open(); }); });
    EXPECT_TRUE(isPollingForTheLockOf(writer, "file"));
    EXPECT_FALSE(isWriting.isOpen());
    reader.release();
    EXPECT_TRUE(isWriting.wait());
    EXPECT_TRUE(writer.succeeded());
}

TEST(ReadersAndWriters, AReaderWaitsForAWriterInPlaceWhoseLockFileIsGone) {
    writePlainly("file", "old");
    Visitor writer(
        writeCoordinated,
        [](const std::string& path) {
            std::filesystem::remove(".file.lock");
            writePlainly(path, "ha");
        },
        [](const std::string& path) {
            writePlainly(path, "whole");
            return true;
        });
    ASSERT_TRUE(writer.isInside());
    ChildProcess reader([] { return textOfRead() == "whole"; });
    EXPECT_TRUE(isPollingForTheLockOf(reader, "file"));
    writer.release();
    EXPECT_TRUE(writer.process().succeeded());
    EXPECT_TRUE(reader.succeeded());
}

TEST(ReadersAndWriters, AReaderWaitsForTheEndOfAnAccessorThatHasReplacedTheFile) {
    writePlainly("file", "old");
    const Gate mayReplace;
    Visitor writer(writeCoordinated, [&](const std::string& path) {
        EXPECT_TRUE(mayReplace.wait());
        EXPECT_FALSE(replaceFile(path, "new"));
    });
    const auto readsNew = [] { return textOfRead() == "new"; };
    ASSERT_TRUE(waitUntil([] { return isLockedAlone("file"); }));
    ChildProcess before(readsNew);
    EXPECT_TRUE(isPollingForTheLockOf(before, "file")) << "the old file";
    mayReplace.open();
    ASSERT_TRUE(writer.isInside());
    ChildProcess after(readsNew);
    EXPECT_TRUE(isPollingForTheLockOf(before, "file")) << "it has turned to the new one";
    EXPECT_TRUE(isPollingForTheLockOf(after, "file"));
    writer.release();
    EXPECT_TRUE(before.succeeded());
    EXPECT_TRUE(after.succeeded());
    EXPECT_TRUE(writer.process().succeeded());
}

TEST(ReadersAndWriters, AReaderDoesNotWaitForTheDiskOfASave) {
    ASSERT_TRUE(save("old"));
    const Gate isSyncing;
    ChildProcess writer([&] {
        static const Gate* const gate = &isSyncing;
        const auto hang = [](int) {
            gate->open();
            pause();
        };
        if (signal(SIGSYS, hang) == SIG_ERR) return false;
        answerCallWith(SystemCall::SyncData, SECCOMP_RET_TRAP);
        return save("new");
    });
    ASSERT_TRUE(isSyncing.wait());
    EXPECT_TRUE(isLockedAlone(".file.lock"));
    const auto start = Clock::now();
    EXPECT_TRUE(FileLock::ofReader("file").isHeld());
    EXPECT_EQ(textOfRead(), "old");
    EXPECT_LT(Clock::now() - start, readerLockTimeout);
    EXPECT_FALSE(writer.hasEnded());
}

TEST(ReadersAndWriters, ASaveWaitsForAStoppedReaderOnlyForATime) {
    writePlainly("file", "old");
    std::ifstream open("file");
    Visitor reader(
        readCoordinated, [](const std::string&) {},
        [&open](const std::string&) {
            return std::string(std::istreambuf_iterator<char>(open), {}) == "old";
        });
    ASSERT_TRUE(reader.isInside());
    ASSERT_TRUE(reader.process().stop());
    const auto start = Clock::now();
    EXPECT_TRUE(save("new"));
    EXPECT_GE(Clock::now() - start, readerLockTimeout);
    EXPECT_EQ(textOfRead(), "new");
    reader.release();
    reader.process().send(SIGCONT);
    EXPECT_TRUE(reader.process().succeeded()) << "what it had opened is whole";
}

TEST(ReadersAndWriters, AUserWhoMayOnlyReadHoldsUpASaveOnlyForATime) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    writePlainly("file", "old");
    chmod("file", 0644);
    chmod(".", 0755);
    const Gate isHeld;
    const ChildProcess other([&] {
        const int file = becomeNobody() ? open("file", O_RDONLY | O_CLOEXEC) : -1;
        if (file < 0 || flock(file, LOCK_EX) != 0) return false;
        isHeld.open();
        return pause() == 0;
    });
    ASSERT_TRUE(isHeld.wait());
    EXPECT_TRUE(save("new"));
    EXPECT_EQ(textOfRead(), "new");
}

TEST(ReadersAndWriters, AReaderWhoMayWriteNothingKeepsWritersOut) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    writePlainly("file", "old");
    chmod("file", 0444);
    chmod(".", 0555);
    Visitor reader([](const NSFileCoordinator::Accessor& accessor) {
        return becomeNobody() && ::open("new", O_CREAT | O_WRONLY | O_CLOEXEC, 0600) < 0 &&
               readCoordinated(accessor);
    });
    ASSERT_TRUE(reader.isInside());
    EXPECT_EQ(everythingIn("."), std::set<std::string>{"file"});
    ChildProcess writer([] { return save("new"); });
    EXPECT_TRUE(isPollingForTheLockOf(writer, "file"));
    reader.release();
    EXPECT_TRUE(reader.process().succeeded());
    EXPECT_TRUE(writer.succeeded());
}

TEST(ReadersAndWriters, AReaderDoesNotNeedTheLockFileOfAnotherUser) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    writePlainly("file", "readable");
    chmod("file", 0644);
    writeCoordinated([](const std::string&) {});
    chmod(".", 0755);
    Visitor reader([](const NSFileCoordinator::Accessor& accessor) {
        return becomeNobody() && ::open(".file.lock", O_RDONLY | O_CLOEXEC) < 0 &&
               readCoordinated(accessor);
    });
    ASSERT_TRUE(reader.isInside());
    EXPECT_TRUE(isLocked("file"));
    reader.release();
    EXPECT_TRUE(reader.process().succeeded());
}

TEST(ReadersAndWriters, AFileThatMayNotBeReadHoldsUpNobody) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    writePlainly("file", "secret");
    chmod("file", 0600);
    chmod(".", 0777);
    ChildProcess other([] {
        if (!becomeNobody()) return false;
        bool isRefused = false;
        const auto look = [&](const std::string& path) {
            isRefused = contentsOfFile(path, 100).error == std::errc::permission_denied;
        };
        return readCoordinated(look) && isRefused && save("new");
    });
    EXPECT_TRUE(other.succeeded());
    EXPECT_EQ(readPlainly("file"), "new");
}

TEST(ReadersAndWriters, AKilledReaderHoldsUpNobody) {
    writePlainly("file", "old");
    Visitor reader(readCoordinated);
    ASSERT_TRUE(reader.isInside());
    reader.process().send(SIGKILL);
    ASSERT_TRUE(reader.process().diedOf(SIGKILL));
    EXPECT_FALSE(isLocked("file"));
    EXPECT_TRUE(save("new"));
}

TEST(ReadersAndWriters, WhereThereIsNoFileAReaderReadsAtOnce) {
    Visitor writer(writeCoordinated);
    ASSERT_TRUE(writer.isInside());
    const auto start = Clock::now();
    EXPECT_EQ(textOfRead(), "");
    EXPECT_LT(Clock::now() - start, readerLockTimeout);
    writer.release();
    EXPECT_TRUE(writer.process().succeeded());
}

TEST(ReadersAndWriters, AReaderTurnsToTheFileThatReplacedTheOneThatItHasOpened) {
    if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    writePlainly("file", "old");
    bool isReplaced = false;
    const int status = TracedProcess::run(
        [] {
            bool isRight = false;
            return readCoordinated([&](const std::string& path) {
                       isRight = readPlainly(path) == "new" && isLocked("file");
                   }) &&
                   isRight;
        },
        [&](const TracedProcess::Call& call) {
            if (call.is({SYS_flock}) && !isReplaced) isReplaced = !replaceFile("file", "new");
            return TracedProcess::goesOn;
        });
    EXPECT_TRUE(TracedProcess::succeeded(status));
    EXPECT_TRUE(isReplaced);
}

TEST(ReadersAndWriters, AWriterTurnsToTheFileThatReplacedTheOneThatItHasOpened) {
    if (!TracedProcess::isAllowed()) GTEST_SKIP() << "processes must not be traced here";
    writePlainly("file", "old");
    int locks = 0;
    const int status = TracedProcess::run(
        [] {
            bool isRight = false;
            return writeCoordinated([&](const std::string&) { isRight = isLockedAlone("file"); }) &&
                   isRight;
        },
        [&](const TracedProcess::Call& call) {
            // The first lock is that of the lock file.
            if (call.is({SYS_flock}) && ++locks == 2) replaceFile("file", "new");
            return TracedProcess::goesOn;
        });
    EXPECT_TRUE(TracedProcess::succeeded(status));
    EXPECT_GT(locks, 2);
}

TEST(ReadersAndWriters, AReplacementWaitsForReadersOfAFileThatCameDuringTheAccess) {
    writePlainly("file", "old");
    const Gate mayReplace;
    const Gate mayEnd;
    ChildProcess writer([&] {
        return writeCoordinated([&](const std::string& path) {
            writePlainly("other", "another's");
            std::filesystem::rename("other", path);
            if (mayReplace.wait()) replaceFile(path, "new");
        });
    });
    ASSERT_TRUE(waitUntil([] { return readPlainly("file") == "another's"; }));
    Visitor reader(readCoordinated);
    ASSERT_TRUE(reader.isInside());
    mayReplace.open();
    EXPECT_TRUE(isPollingForTheLockOf(writer, "file"));
    EXPECT_EQ(readPlainly("file"), "another's");
    reader.release();
    EXPECT_TRUE(writer.succeeded());
    EXPECT_EQ(readPlainly("file"), "new");
}

TEST(ReadersAndWriters, WhereOpenFilesCannotBeReplacedReadersShareTheLockFile) {
    writePlainly("file", "old");
    ChildProcess child([] {
        failCall(SystemCall::FileSystem, EIO);  // So it might be such a file system.
        bool isFileLocked = false;
        bool isLockFileShared = false;
        const auto look = [&](const std::string&) {
            isFileLocked = isFileLocked || isLocked("file");
            isLockFileShared = isLocked(".file.lock") && !isLockedAlone(".file.lock");
        };
        const auto replace = [&](const std::string& path) {
            isFileLocked =
                isFileLocked || isLocked("file") || replaceFile(path, "new") || isLocked("file");
        };
        return writeCoordinated(replace) && readCoordinated(look) && isLockFileShared &&
               !isFileLocked;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), "new");
}

TEST(ReadersAndWriters, OfHostsThatWriteInPlaceNeverOverlap) {
    constexpr std::size_t count = 40;
    writePlainly("file", std::string(count, 'a'));
    const auto writeOften = [] {
        for (int round = 0; round < 26; ++round) {
            const char letter = static_cast<char>('a' + round);
            if (!writeCoordinated(
                    [&](const auto& path) { writeLetterByLetter(path, count, letter); }))
                return false;
        }
        return true;
    };
    ChildProcess first(writeOften);
    ChildProcess second(writeOften);
    int reads = 0;
    while (!first.hasEnded() || !second.hasEnded()) {
        const auto start = Clock::now();
        readCoordinated([&](const std::string& path) {
            if (Clock::now() - start >= readerLockTimeout) return;  // Then it may see anything.
            const std::string seen = readPlainly(path);
            EXPECT_EQ(seen, std::string(count, seen.empty() ? '-' : seen[0]));
            ++reads;
        });
    }
    EXPECT_TRUE(first.succeeded());
    EXPECT_TRUE(second.succeeded());
    EXPECT_GT(reads, 0);
}
