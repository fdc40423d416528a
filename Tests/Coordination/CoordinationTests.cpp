// SPDX-License-Identifier: MIT
// Coordination on one thread: what it makes on disk, and what it refuses.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <stdexcept>

#include "Coordination/KernelLocks.h"
#include "Files/TestFiles.h"
#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

namespace {

using ReadingOptions = NSFileCoordinator::ReadingOptions;
using WritingOptions = NSFileCoordinator::WritingOptions;

struct Access {
    std::error_code error;
    int runs = 0;
    std::string url;
};

Access readAt(const std::string& path) {
    Access access;
    NSFileCoordinator coordinator;
    access.error = coordinator.coordinateReadingItemAtURL(path, ReadingOptions::None,
                                                          [&](const std::string& url) {
                                                              ++access.runs;
                                                              access.url = url;
                                                          });
    return access;
}

Access writeAt(const std::string& path) {
    Access access;
    NSFileCoordinator coordinator;
    access.error = coordinator.coordinateWritingItemAtURL(path, WritingOptions::ForReplacing,
                                                          [&](const std::string& url) {
                                                              ++access.runs;
                                                              access.url = url;
                                                          });
    return access;
}

}  // namespace

TEST(Coordination, OptionsHaveThePlatformsNumbers) {
    EXPECT_EQ(static_cast<unsigned>(ReadingOptions::None), 0U);
    EXPECT_EQ(static_cast<unsigned>(WritingOptions::None), 0U);
    EXPECT_EQ(static_cast<unsigned>(WritingOptions::ForReplacing), 8U);
}

TEST(Coordination, TheAccessorRunsOnceAndGetsThePath) {
    writePlainly("file", "x");
    for (const Access& access : {readAt("file"), writeAt("file"), readAt("file")}) {
        EXPECT_FALSE(access.error);
        EXPECT_EQ(access.runs, 1);
        EXPECT_EQ(access.url, "file");
    }
}

TEST(Coordination, WritingWithoutOptionsIsCoordinatedToo) {
    NSFileCoordinator coordinator;
    bool isHeld = false;
    EXPECT_FALSE(coordinator.coordinateWritingItemAtURL(
        "file", WritingOptions::None,
        [&](const std::string&) { isHeld = isLockedAlone(".file.lock"); }));
    EXPECT_TRUE(isHeld);
}

TEST(Coordination, ReadersCreateNothing) {
    EXPECT_EQ(readAt("missing/folder/file").runs, 1);
    EXPECT_EQ(readAt("file").runs, 1);
    writePlainly("file", "x");
    EXPECT_EQ(readAt("file").runs, 1);
    EXPECT_EQ(everythingIn("."), std::set<std::string>{"file"});
}

TEST(Coordination, WritersCreateTheFoldersAndTheLockFileWithTheirModesUnderAnyUmask) {
    for (const mode_t mask : {0000U, 0022U, 0077U}) {
        const std::string folder = "umask-" + std::to_string(mask);
        const mode_t before = umask(mask);
        const Access access = writeAt(folder + "/a/b/file");
        umask(before);
        EXPECT_FALSE(access.error);
        EXPECT_EQ(access.runs, 1);
        for (const char* part : {"", "/a", "/a/b"}) EXPECT_EQ(modeOf(folder + part), 0700U) << part;
        EXPECT_EQ(modeOf(folder + "/a/b/.file.lock"), 0600U);
        EXPECT_EQ(everythingIn(folder), (std::set<std::string>{"a", "a/b", "a/b/.file.lock"}));
    }
}

TEST(Coordination, TheLockFileHasItsModeEvenWhereTheUmaskTakesTheOwnersBits) {
    const mode_t before = umask(0777);
    const Access access = writeAt("file");
    umask(before);
    EXPECT_FALSE(access.error);
    EXPECT_EQ(modeOf(".file.lock"), 0600U);
}

TEST(Coordination, TheLockFileStaysAndItsModeIsLeftAlone) {
    writeAt("file");
    chmod(".file.lock", 0660);
    writeAt("file");
    EXPECT_EQ(modeOf(".file.lock"), 0660U);
}

TEST(Coordination, SomethingElseInTheLockFilesPlaceIsAnErrorForWriters) {
    std::filesystem::create_directory(".folder.lock");
    writePlainly("elsewhere", "");
    std::filesystem::create_symlink("elsewhere", ".link.lock");
    std::filesystem::create_symlink("nowhere", ".dangling.lock");
    ASSERT_EQ(mkfifo(".pipe.lock", 0600), 0);
    EXPECT_EQ(writeAt("folder").error, std::errc::is_a_directory);
    EXPECT_EQ(writeAt("link").error, std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(writeAt("dangling").error, std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(writeAt("pipe").error, std::errc::invalid_argument);
    for (const char* name : {"folder", "link", "dangling", "pipe"}) {
        EXPECT_EQ(writeAt(name).runs, 0) << name;
        EXPECT_EQ(readAt(name).runs, 1) << name;
    }
    EXPECT_FALSE(std::filesystem::exists("nowhere"));
}

TEST(Coordination, APathThatCannotBeIsAnErrorForWritersOnly) {
    writePlainly("file", "x");
    std::filesystem::create_symlink("nowhere", "dangling-folder");
    EXPECT_EQ(writeAt("file/below").error, std::errc::not_a_directory);
    EXPECT_EQ(writeAt("file/far/below").error, std::errc::not_a_directory);
    EXPECT_EQ(writeAt("dangling-folder/file").error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(writeAt(std::string(300, 'n')).error, std::errc::filename_too_long);
    EXPECT_EQ(writeAt("/proc/nothing/file").error, std::errc::no_such_file_or_directory);
    for (const char* path : {"", "folder/", ".", "folder/.."})
        EXPECT_EQ(writeAt(path).error, std::errc::is_a_directory) << path;
    EXPECT_EQ(readAt("file/below").runs, 1);
    EXPECT_EQ(readAt("").runs, 1);
}

TEST(Coordination, AnExceptionPassesOnWithTheLocksReleased) {
    writePlainly("file", "x");
    NSFileCoordinator coordinator;
    const auto fail = [](const std::string&) { throw std::out_of_range("passes"); };
    EXPECT_THROW(coordinator.coordinateWritingItemAtURL("file", WritingOptions::None, fail),
                 std::out_of_range);
    EXPECT_FALSE(isLocked(".file.lock"));
    EXPECT_FALSE(isLocked("file"));
    EXPECT_THROW(coordinator.coordinateReadingItemAtURL("file", ReadingOptions::None, fail),
                 std::out_of_range);
    EXPECT_FALSE(isLocked("file"));
    EXPECT_EQ(writeAt("file").runs, 1);
}

TEST(Coordination, ReadersShareTheFileItselfWithoutALockFile) {
    writePlainly("file", "x");
    NSFileCoordinator coordinator;
    bool isShared = false;
    Access second;
    coordinator.coordinateReadingItemAtURL("file", ReadingOptions::None, [&](const std::string&) {
        isShared = isLocked("file") && !isLockedAlone("file");
        second = readAt("file");
    });
    EXPECT_TRUE(isShared);
    EXPECT_EQ(second.runs, 1);
    EXPECT_FALSE(isLocked("file"));
    EXPECT_EQ(everythingIn("."), std::set<std::string>{"file"});
}

TEST(Coordination, AReaderLeavesTheLockFileToTheWriters) {
    writePlainly("file", "x");
    writeAt("file");
    bool isLockFileLocked = true;
    NSFileCoordinator().coordinateReadingItemAtURL(
        "file", ReadingOptions::None,
        [&](const std::string&) { isLockFileLocked = isLocked(".file.lock"); });
    EXPECT_FALSE(isLockFileLocked);
}

TEST(Coordination, ThroughALinkReadersLockTheTarget) {
    std::filesystem::create_directory("folder");
    writePlainly("folder/target", "x");
    std::filesystem::create_symlink("folder/target", "link");
    bool isTargetLocked = false;
    NSFileCoordinator().coordinateReadingItemAtURL(
        "link", ReadingOptions::None,
        [&](const std::string&) { isTargetLocked = isLocked("folder/target"); });
    EXPECT_TRUE(isTargetLocked);
}

TEST(Coordination, AWriterHasTheOldFileAndTheNewOneAloneForTheWholeAccess) {
    writePlainly("file", "old");
    bool isOldLocked = false;
    bool isNewLocked = false;
    NSFileCoordinator().coordinateWritingItemAtURL("file", WritingOptions::None,
                                                   [&](const std::string& path) {
                                                       isOldLocked = isLockedAlone("file");
                                                       for (const char* bytes : {"new", "newer"}) {
                                                           EXPECT_FALSE(replaceFile(path, bytes));
                                                           isNewLocked = isLockedAlone("file");
                                                           EXPECT_TRUE(isNewLocked) << bytes;
                                                       }
                                                   });
    EXPECT_TRUE(isOldLocked);
    EXPECT_TRUE(isNewLocked);
    EXPECT_FALSE(isLocked("file"));
    EXPECT_EQ(readPlainly("file"), "newer");
}

TEST(Coordination, AWriterHasAFileThatItCreatesAloneFromItsFirstMoment) {
    bool isNewLocked = false;
    NSFileCoordinator().coordinateWritingItemAtURL("folder/file", WritingOptions::None,
                                                   [&](const std::string& path) {
                                                       EXPECT_FALSE(replaceFile(path, "new"));
                                                       isNewLocked = isLockedAlone("folder/file");
                                                   });
    EXPECT_TRUE(isNewLocked);
    EXPECT_FALSE(isLocked("folder/file"));
}

TEST(Coordination, AWriterThatOnlyReplacesKeepsReadersOutOfNothingBeforeAndAfter) {
    writePlainly("file", "old");
    bool wasLocked = true;
    EXPECT_FALSE(coordinateWriting(NSFileCoordinator(), "file", WritingOptions::ForReplacing,
                                   [&](WriteAccess& access) {
                                       wasLocked = isLocked("file");
                                       EXPECT_FALSE(replaceFile(access, "new"));
                                       wasLocked = wasLocked || isLocked("file");
                                       EXPECT_TRUE(isLockedAlone(".file.lock"));
                                   }));
    EXPECT_FALSE(wasLocked);
    EXPECT_EQ(readPlainly("file"), "new");
}

TEST(Coordination, AReplacementOutsideOfAnAccessWaitsForNobody) {
    writePlainly("file", "old");
    NSFileCoordinator().coordinateReadingItemAtURL(
        "file", ReadingOptions::None, [](const std::string& path) {
            const auto start = std::chrono::steady_clock::now();
            EXPECT_FALSE(replaceFile(path, "new"));
            EXPECT_LT(std::chrono::steady_clock::now() - start, readerLockTimeout);
        });
    EXPECT_EQ(readPlainly("file"), "new");
}

TEST(Coordination, ReadingWithinAWriteOfTheSameThreadWaitsForNobody) {
    writePlainly("file", "old");
    Access inner;
    NSFileCoordinator().coordinateWritingItemAtURL(
        "file", WritingOptions::None, [&](const std::string&) {
            const auto start = std::chrono::steady_clock::now();
            inner = readAt("./file");
            EXPECT_LT(std::chrono::steady_clock::now() - start, readerLockTimeout);
        });
    EXPECT_EQ(inner.runs, 1);
}

TEST(Coordination, WritingWithinAReadGoesOnAfterTheTimeout) {
    writePlainly("file", "old");
    Access inner;
    NSFileCoordinator().coordinateReadingItemAtURL(
        "file", ReadingOptions::None, [&](const std::string&) {
            const auto start = std::chrono::steady_clock::now();
            inner = writeAt("file");
            EXPECT_GE(std::chrono::steady_clock::now() - start, readerLockTimeout);
        });
    EXPECT_EQ(inner.runs, 1);
}

TEST(Coordination, AccessesToDifferentFilesDoNotExcludeEachOther) {
    NSFileCoordinator coordinator;
    Access inner;
    coordinator.coordinateWritingItemAtURL("one", WritingOptions::None,
                                           [&](const std::string&) { inner = writeAt("two"); });
    EXPECT_EQ(inner.runs, 1);
}

TEST(Coordination, AForkedChildDoesNotKeepTheLocks) {
    writePlainly("file", "x");
    NSFileCoordinator coordinator;
    const Gate end;
    std::optional<ChildProcess> ofWriter;
    std::optional<ChildProcess> ofReader;
    coordinator.coordinateWritingItemAtURL("file", WritingOptions::None, [&](const std::string&) {
        ofWriter.emplace([&] { return end.wait(); });
    });
    EXPECT_FALSE(isLocked(".file.lock"));
    EXPECT_FALSE(isLocked("file"));
    coordinator.coordinateReadingItemAtURL("file", ReadingOptions::None, [&](const std::string&) {
        ofReader.emplace([&] { return end.wait(); });
    });
    EXPECT_FALSE(isLocked("file"));
    end.open();
    EXPECT_TRUE(ofWriter->succeeded());
    EXPECT_TRUE(ofReader->succeeded());
}
