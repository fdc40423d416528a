// SPDX-License-Identifier: MIT
// A presenter's own writes, which it is not notified of.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Presenters/ChangeDetector.h"
#include "Platform/Presenters/PresenterRegistry.h"
#include "Presenters/PresenterSupport.h"

using namespace QRVPlatform;

using namespace PresenterSupport;
namespace fs = std::filesystem;

TEST(OwnWrites, AreNoNews) {
    const Reader reader("a/file");
    for (int round = 0; round < 500; ++round)
        ASSERT_TRUE(save(&reader, "a/file", std::to_string(round)));
    EXPECT_EQ(finalCount(reader), 0);
}

TEST(OwnWrites, ThroughALinkAreNoNews) {
    fs::create_directory("elsewhere");
    fs::create_symlink("elsewhere/target", "file");
    const Reader reader("file");
    for (int round = 0; round < 20; ++round)
        ASSERT_TRUE(save(&reader, "file", std::to_string(round)));
    EXPECT_EQ(finalCount(reader), 0);
    EXPECT_TRUE(fs::is_symlink("file"));
}

TEST(OwnWrites, UnderAnySpellingOfThePathAreNoNews) {
    fs::create_directories("a/b");
    fs::create_directory_symlink("a", "folder-link");
    fs::create_symlink("a/file", "file-link");
    const Reader reader("a/file");
    const std::vector<std::string> spellings = {
        "a/file",      "a/./file",  "./a/file",         "a//file",
        "a/b/../file", "file-link", "folder-link/file", fs::absolute("a/file").string()};
    NSFileCoordinator coordinator(&reader);
    for (const std::string& coordinated : spellings)
        for (const std::string& replaced : spellings) {
            coordinator.coordinateWritingItemAtURL(
                coordinated, NSFileCoordinator::WritingOptions::ForReplacing,
                [&](const std::string&) { EXPECT_FALSE(replaceFile(replaced, "new")); });
            ASSERT_EQ(finalCount(reader), 0) << coordinated << ", " << replaced;
        }
}

TEST(OwnWrites, OfTheSameBytesAsBeforeOrBackingUpTheOldFileAreNoNews) {
    writePlainly("file", "damaged");
    const Reader reader("file");
    NSFileCoordinator(&reader).coordinateWritingItemAtURL(
        "file", NSFileCoordinator::WritingOptions::ForReplacing, [](const std::string& url) {
            EXPECT_EQ(backUpFile(url).error.value(), 0);
            EXPECT_FALSE(replaceFile(url, "good"));
            EXPECT_FALSE(replaceFile(url, "good"));
        });
    EXPECT_EQ(finalCount(reader), 0);
}

TEST(OwnWrites, ThatFailAreNoNewsAndHideNothing) {
    const Reader reader("file");
    ASSERT_TRUE(save(&reader, "file", "own"));
    fs::create_directory(".file.tmp");
    EXPECT_FALSE(save(&reader, "file", "fails"));
    EXPECT_EQ(finalCount(reader), 0);
    replaceByRename("file", "another's");
    EXPECT_TRUE(reader.sees("another's"));
}

TEST(OwnWrites, OfAnotherFileHideNothing) {
    writePlainly("file", "old");
    const Reader reader("file");
    ASSERT_TRUE(save(&reader, "other", "own"));
    EXPECT_EQ(finalCount(reader), 0);
    fs::rename("other", "file");
    EXPECT_TRUE(reader.sees("own"));
}

TEST(OwnWrites, WithoutAPerformerOrByAnotherPresenterAreNews) {
    const Reader first("file");
    const Reader second("file");
    ASSERT_TRUE(save(&first, "file", "first"));
    EXPECT_TRUE(second.sees("first"));
    EXPECT_EQ(finalCount(first), 0);
    ASSERT_TRUE(save(&second, "file", "second"));
    EXPECT_TRUE(first.sees("second"));
    const int firstCount = finalCount(first);
    const int secondCount = finalCount(second);
    ASSERT_TRUE(save(nullptr, "file", "nobody"));
    EXPECT_TRUE(first.isNotifiedMoreThan(firstCount));
    EXPECT_TRUE(second.isNotifiedMoreThan(secondCount));
    EXPECT_TRUE(first.sees("nobody"));
    EXPECT_TRUE(second.sees("nobody"));
}

TEST(OwnWrites, OfTwoPresentersOfOneProcessAtOnce) {
    const Reader first("file");
    const Reader second("file");
    const auto saveOften = [](const Reader& reader, const std::string& name) {
        for (int round = 0; round < 200; ++round)
            EXPECT_TRUE(save(&reader, "file", name + std::to_string(round)));
    };
    std::thread thread([&] { saveOften(first, "first"); });
    saveOften(second, "second");
    thread.join();
    ASSERT_TRUE(save(&first, "file", "last of the first"));
    EXPECT_TRUE(second.sees("last of the first"));
    ASSERT_TRUE(save(&second, "file", "last of the second"));
    EXPECT_TRUE(first.sees("last of the second"));
}

TEST(OwnWrites, AnothersChangeBetweenTwoOfThemIsNews) {
    // Not registered: events are handled when the test says so.
    struct Unregistered : NSFilePresenter {
        [[nodiscard]] std::string presentedItemURL() const override { return {}; }
        [[nodiscard]] std::shared_ptr<NSOperationQueue> presentedItemOperationQueue()
            const override {
            return nullptr;
        }
        void presentedItemDidChange() override { ++count; }
        std::atomic<int> count = 0;
    };
    Unregistered presenter;
    const auto notifications =
        std::make_shared<PresenterNotifications>(presenter, std::make_shared<NSOperationQueue>());
    FolderWatch folders;
    const auto now = std::chrono::steady_clock::now();
    ChangeDetector presentation(fs::current_path() / "file", notifications);
    presentation.begin(folders, now);
    const auto replaceAsPresenter = [&] {
        writePlainly("own", "own");
        presentation.replace(OwnFile("own"), [] {
            fs::rename("own", "file");
            return std::error_code();
        });
        if (presentation.takeNews()) notifications->notify();
    };
    const auto handleEvents = [&] {
        for (const auto& event : folders.takeEvents()) presentation.note(event);
        presentation.settle(folders, now);
        if (presentation.takeNews()) notifications->notify();
    };
    replaceAsPresenter();
    replaceAsPresenter();
    handleEvents();
    replaceAsPresenter();
    replaceByRename("file", "theirs");
    replaceAsPresenter();
    handleEvents();
    EXPECT_TRUE(waitUntil([&] { return presenter.count > 0; }));
    notifications->end();
    EXPECT_EQ(presenter.count, 1);
}

TEST(OwnWrites, OfAFileThatSomebodyStillHasOpenAreNoNewsLater) {
    writePlainly("file", "old");
    const Reader reader("file");
    {
        std::ofstream old("file", std::ios::binary | std::ios::app);
        ASSERT_TRUE(save(&reader, "file", "own"));
        old << "lost";
    }
    EXPECT_EQ(finalCount(reader), 0);
}

TEST(OwnWrites, ChangedInPlaceByAnotherAreNews) {
    const Reader reader("file");
    ASSERT_TRUE(save(&reader, "file", "before"));
    writePlainly("file", "behind");
    EXPECT_TRUE(reader.sees("behind"));
    ASSERT_TRUE(save(&reader, "file", "before"));
    const int count = finalCount(reader);
    chmod("file", 0640);
    EXPECT_TRUE(reader.isNotifiedMoreThan(count));
}

TEST(OwnWrites, AnInodeNumberThatComesBackIsNotMistakenForAnOwnFile) {
    const Reader reader("file");
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(save(&reader, "file", "own"));
        const int count = finalCount(reader);
        const FileIdentity own = identityOfFileAtPath("file");
        const timespec date{own.modificationTime / 1'000'000'000,
                            own.modificationTime % 1'000'000'000};
        const timespec dates[2] = {date, date};
        // The watching thread is held up meanwhile, so that it sees the second one only. On many
        // file systems that would get the number of the own file.
        PresenterRegistry::replaceFor(&reader, "unused", [&] {
            for (int times = 0; times < 2; ++times) {
                writePlainly("new", "xyz");
                EXPECT_EQ(utimensat(AT_FDCWD, "new", dates, 0), 0);
                fs::rename("new", "file");
            }
            return std::error_code();
        });
        ASSERT_TRUE(reader.isNotifiedMoreThan(count)) << round;
        ASSERT_TRUE(reader.sees("xyz"));
    }
}

TEST(OwnWrites, FromWithinANotificationMakeNoLoop) {
    const Reader reader("file", [](Reader& self) {
        std::string seen;
        NSFileCoordinator().coordinateReadingItemAtURL(
            "file", NSFileCoordinator::ReadingOptions::None,
            [&](const std::string& url) { seen = readPlainly(url); });
        EXPECT_TRUE(save(&self, "file", seen + "+"));
    });
    ASSERT_TRUE(save(nullptr, "file", "theirs"));
    EXPECT_TRUE(reader.sees("theirs+"));
    EXPECT_EQ(finalCount(reader), 1);
    EXPECT_EQ(readPlainly("file"), "theirs+");
}
