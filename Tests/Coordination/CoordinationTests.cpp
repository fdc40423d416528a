// SPDX-License-Identifier: MIT
// Coordination on one thread: what it makes on disk, and what it refuses.

#include <gtest/gtest.h>
#include <unistd.h>

#include <optional>
#include <stdexcept>

#include "Coordination/KernelLocks.h"
#include "Files/TestFiles.h"
#include "Platform/Coordination/FileLock.h"
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
        [&](const std::string&) { isHeld = !FileLock::shared(".file.lock").isHeld(); }));
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

TEST(Coordination, AnExceptionPassesOnWithTheLockReleased) {
    NSFileCoordinator coordinator;
    const auto fail = [](const std::string&) { throw std::out_of_range("passes"); };
    EXPECT_THROW(coordinator.coordinateWritingItemAtURL("file", WritingOptions::None, fail),
                 std::out_of_range);
    EXPECT_TRUE(FileLock::shared(".file.lock").isHeld());
    EXPECT_THROW(coordinator.coordinateReadingItemAtURL("file", ReadingOptions::None, fail),
                 std::out_of_range);
    EXPECT_EQ(writeAt("file").runs, 1);
}

TEST(Coordination, ReadersShareTheLockAndExcludeWriters) {
    writeAt("file");
    NSFileCoordinator coordinator;
    bool isShared = false;
    bool isHeld = false;
    coordinator.coordinateReadingItemAtURL("file", ReadingOptions::None, [&](const std::string&) {
        isShared = FileLock::shared(".file.lock").isHeld();
        isHeld = isHeldBySomeone(".file.lock");
    });
    EXPECT_TRUE(isShared);
    EXPECT_TRUE(isHeld);
    EXPECT_FALSE(isHeldBySomeone(".file.lock"));
}

TEST(Coordination, AccessesToDifferentFilesDoNotExcludeEachOther) {
    NSFileCoordinator coordinator;
    Access inner;
    coordinator.coordinateWritingItemAtURL("one", WritingOptions::None,
                                           [&](const std::string&) { inner = writeAt("two"); });
    EXPECT_EQ(inner.runs, 1);
}

TEST(Coordination, AForkedChildDoesNotKeepTheLock) {
    NSFileCoordinator coordinator;
    const Gate end;
    std::optional<ChildProcess> child;
    coordinator.coordinateWritingItemAtURL("file", WritingOptions::None, [&](const std::string&) {
        child.emplace([&] { return end.wait(); });
    });
    EXPECT_TRUE(FileLock::shared(".file.lock").isHeld());
    end.open();
    EXPECT_TRUE(child->succeeded());
}
