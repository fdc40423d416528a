// SPDX-License-Identifier: MIT
// What happens to a presented file, done by others than presenters.

#include <gtest/gtest.h>

#include <filesystem>

#include "Platform/Presenters/PresenterRegistry.h"
#include "Platform/Values/PropertyListValue.h"
#include "Presenters/PresenterSupport.h"

using namespace QRVPlatform;

using namespace PresenterSupport;
namespace fs = std::filesystem;

TEST(FilePresenter, IsNotifiedOfAReplacement) {
    const Reader reader("file");
    ASSERT_TRUE(save(nullptr, "file", "new"));
    EXPECT_TRUE(reader.sees("new"));
    replaceByRename("file", "newer");
    EXPECT_TRUE(reader.sees("newer"));
}

TEST(FilePresenter, IsNotifiedOfAFileWrittenInPlaceInSeveralPieces) {
    writePlainly("file", "old");
    const Reader reader("file");
    {
        std::ofstream file("file", std::ios::binary);
        for (int piece = 0; piece < 5; ++piece) file << piece << std::flush;
    }
    EXPECT_TRUE(reader.sees("01234"));
}

TEST(FilePresenter, IsNotifiedOfAWriterThatKeepsTheFileOpen) {
    writePlainly("file", "old");
    const Reader reader("file");
    std::ofstream file("file", std::ios::binary | std::ios::app);
    for (const char* piece : {" and", " more"}) {
        file << piece << std::flush;
        EXPECT_TRUE(reader.sees(readPlainly("file")));
    }
}

TEST(FilePresenter, IsNotifiedOfAFileCutShort) {
    writePlainly("file", "long");
    const Reader reader("file");
    ASSERT_EQ(truncate("file", 1), 0);
    EXPECT_TRUE(reader.sees("l"));
}

TEST(FilePresenter, IsNotifiedOfADeletionAndOfTheNewFile) {
    writePlainly("file", "old");
    const Reader reader("file");
    fs::remove("file");
    EXPECT_TRUE(reader.sees(missing));
    writePlainly("file", "new");
    EXPECT_TRUE(reader.sees("new"));
    fs::remove("file");
    writePlainly("file", "newer");
    EXPECT_TRUE(reader.sees("newer"));
    fs::rename("file", "elsewhere");
    EXPECT_TRUE(reader.sees(missing));
    fs::create_hard_link("elsewhere", "file");
    EXPECT_TRUE(reader.sees("newer"));
}

TEST(FilePresenter, IsNotifiedOfAnOlderFilePutBackWithItsDate) {
    writePlainly("file", "new");
    const Reader reader("file");
    writePlainly("backup", "old");
    ASSERT_TRUE(setModificationTime("backup", 1'000'000'000));
    fs::rename("backup", "file");
    EXPECT_TRUE(reader.sees("old"));
    writePlainly("file", "odd");
    ASSERT_TRUE(setModificationTime("file", 1'000'000'000));
    EXPECT_TRUE(reader.sees("odd")) << "the same size and date";
}

TEST(FilePresenter, IsNotifiedOfANewDateAndOfNewPermissions) {
    writePlainly("file", "same");
    const Reader reader("file");
    ASSERT_TRUE(setModificationTime("file", 1'000'000'000));
    ASSERT_TRUE(reader.isNotifiedMoreThan(0));
    const int count = finalCount(reader);
    chmod("file", 0640);
    ASSERT_TRUE(reader.isNotifiedMoreThan(count));
    const int nextCount = finalCount(reader);
    const timespec dates[2] = {{0, UTIME_OMIT}, {1'000'000'001, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, "file", dates, 0), 0);
    EXPECT_TRUE(reader.isNotifiedMoreThan(nextCount)) << "to the system this is a write";
}

TEST(FilePresenter, IsNotifiedOfBytesThatChangeWithoutATrace) {
    writePlainly("file", "before");
    ASSERT_TRUE(setModificationTime("file", 1'000'000'000));
    const Reader reader("file");
    const int file = open("file", O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(write(file, "behind", 6), 6);
    const timespec times[2] = {{0, UTIME_OMIT}, {1'000'000'000, 0}};
    futimens(file, times);
    close(file);
    EXPECT_TRUE(reader.sees("behind"));
}

TEST(FilePresenter, OfManyChangesTheLastOneIsNotifiedLast) {
    const Reader reader("file");
    for (int round = 0; round < 300; ++round) {
        const std::string bytes = std::to_string(round);
        switch (round % 4) {
            case 0:
                writePlainly("file", bytes);
                break;
            case 1:
                replaceByRename("file", bytes);
                break;
            case 2:
                fs::remove("file");
                writePlainly("file", bytes);
                break;
            default:
                ASSERT_TRUE(save(nullptr, "file", bytes));
        }
        if (round % 60 == 59) {
            ASSERT_TRUE(reader.sees(bytes)) << round;
        }
    }
}

TEST(FilePresenter, IsNotNotifiedOfOtherFilesInTheFolderNorOfAccessesThatChangeNothing) {
    writePlainly("file", "same");
    const Reader reader("file");
    for (const char* name : {".file.lock", ".file.tmp", "file~", "fil", "other"}) {
        writePlainly(name, "x");
        chmod(name, 0640);
        fs::remove(name);
    }
    fs::create_hard_link("file", "file.damaged-1");
    fs::remove("file.damaged-1");
    fs::create_directory("folder");
    EXPECT_TRUE(NSFileCoordinator()
                    .coordinateWritingItemAtURL("file", NSFileCoordinator::WritingOptions::None,
                                                [](const std::string&) {})
                    .value() == 0);
    NSFileCoordinator().coordinateReadingItemAtURL("file", NSFileCoordinator::ReadingOptions::None,
                                                   [](const std::string&) {});
    readPlainly("file");
    EXPECT_EQ(finalCount(reader), 0);
}

TEST(FilePresenter, IsNotifiedOfAWriteThroughAnotherNameInTheFolder) {
    writePlainly("file", "old");
    fs::create_hard_link("file", "alias");
    const Reader reader("file");
    writePlainly("alias", "longer");
    EXPECT_TRUE(reader.sees("longer"));
}

TEST(FilePresenter, IsNotifiedAfterEventsWereLost) {
    int limit = 0;
    ASSERT_TRUE(std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit);
    if (limit > 200'000) GTEST_SKIP() << "takes too many events";
    writePlainly("file", "old");
    const Reader reader("file");
    fs::create_directory("busy");
    const Reader busy("busy/file");
    // The watching thread is held up meanwhile.
    PresenterRegistry::replaceFor(&reader, "unused", [&] {
        for (int count = 0; count <= limit; ++count) {
            std::ofstream("busy/" + std::to_string(count % 2), std::ios::app);
        }
        writePlainly("file", "new");
        return std::error_code();
    });
    EXPECT_TRUE(reader.sees("new"));
}

TEST(FilePresenter, NeedsAPathAndAQueue) {
    struct Incomplete : NSFilePresenter {
        [[nodiscard]] std::string presentedItemURL() const override { return path; }
        [[nodiscard]] std::shared_ptr<NSOperationQueue> presentedItemOperationQueue()
            const override {
            return nullptr;
        }
        void presentedItemDidChange() override {}
        std::string path;
    };
    Incomplete presenter;
    EXPECT_THROW(NSFileCoordinator::addFilePresenter(presenter), NSInvalidArgumentException);
    presenter.path = "file";
    EXPECT_THROW(NSFileCoordinator::addFilePresenter(presenter), NSInvalidArgumentException);
    NSFileCoordinator::removeFilePresenter(presenter);
}

TEST(FilePresenter, ARelativePathIsMeantFromTheFolderOfItsRegistration) {
    fs::create_directory("elsewhere");
    const std::string file = fs::current_path() / "file";
    const Reader reader("file");
    fs::current_path("elsewhere");
    writePlainly(file, "x");
    EXPECT_TRUE(reader.isNotifiedMoreThan(0));
    fs::current_path("..");
}
