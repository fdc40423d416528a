// SPDX-License-Identifier: MIT
// What the events of a watched file and of the names beside it mean.
#include "Platform/Presenters/RouteWatch.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "Files/TestFiles.h"

using namespace QRVPlatform;

namespace {

using Kind = FolderWatch::Kind;
using Meaning = RouteWatch::Meaning;

/// Watches `file` in the working folder, where it has been made by `make`.
class WatchedFile {
  public:
    explicit WatchedFile(const std::function<void()>& make = [] { writePlainly("file", "old"); })
        : watch_(std::filesystem::absolute("file").string()) {
        make();
        isArmed_ = !watch_.arm(folders_);
    }

    [[nodiscard]] bool isArmed() const { return isArmed_; }
    [[nodiscard]] Meaning meaningOf(const std::string& name) const {
        return watch_.meaningOf({Kind::WritingEnded, watch_.route().back().watch, name});
    }
    [[nodiscard]] bool isWatchedItself() const { return watch_.fileWatch() >= 0; }
    /// Without those of the folders above, where others are at work.
    [[nodiscard]] std::size_t countOfEvents() {
        const auto events = folders_.takeEvents();
        const auto isOfTheFile = [&](const auto& event) {
            const auto isStep = [&](const auto& step) { return step.watch == event.watch; };
            return watch_.route().back().watch == event.watch ||
                   std::none_of(watch_.route().begin(), watch_.route().end(), isStep);
        };
        return static_cast<std::size_t>(std::count_if(events.begin(), events.end(), isOfTheFile));
    }
    bool follow() { return watch_.followFile(folders_); }
    bool armAgain() { return !watch_.arm(folders_); }
    /// The weightiest since the last time.
    [[nodiscard]] Meaning meaningOfWhatHappened() {
        Meaning meaning = Meaning::Nothing;
        for (const auto& event : folders_.takeEvents())
            meaning = std::max(meaning, watch_.meaningOf(event));
        return meaning;
    }

  private:
    FolderWatch folders_;
    RouteWatch watch_;
    bool isArmed_ = false;
};

/// As a save does it, up to the rename.
void makeTemporaryFile() {
    writePlainly(".file.tmp", "new");
    chmod(".file.tmp", 0640);
    const timespec times[2] = {{0, UTIME_OMIT}, {1'000'000'000, 0}};
    EXPECT_EQ(utimensat(AT_FDCWD, ".file.tmp", times, 0), 0);
    writePlainly(".file.lock", "");
}

std::set<std::string> namesReported(FolderWatch& folders, int watch) {
    std::set<std::string> names;
    for (const auto& event : folders.takeEvents())
        if (event.watch == watch) names.insert(event.name);
    return names;
}

}  // namespace

TEST(RouteWatch, TheNamesThatSavingUsesMeanNothing) {
    const WatchedFile file;
    ASSERT_TRUE(file.isArmed());
    EXPECT_EQ(file.meaningOf(".file.tmp"), Meaning::Nothing);
    EXPECT_EQ(file.meaningOf(".file.lock"), Meaning::Nothing);
}

TEST(RouteWatch, AnyOtherNameBesideTheFileIsANeighbour) {
    const WatchedFile file;
    ASSERT_TRUE(file.isArmed());
    for (const char* name : {"alias", "file.tmp", ".file.tmp2", ".file", ".fil.tmp", ".other.tmp",
                             "file.damaged-1", ".", ""})
        EXPECT_EQ(file.meaningOf(name), Meaning::Neighbour) << name;
}

TEST(RouteWatch, ATemporaryFileMattersWhenItIsRenamedToTheFile) {
    WatchedFile file;
    ASSERT_TRUE(file.isArmed());
    writePlainly(".file.tmp", "new");
    EXPECT_EQ(file.meaningOfWhatHappened(), Meaning::Nothing);
    std::filesystem::rename(".file.tmp", "file");
    EXPECT_EQ(file.meaningOfWhatHappened(), Meaning::File);
}

TEST(RouteWatch, AFileThatIsMadeAndWrittenBesideTheFileIsNoEvent) {
    WatchedFile file;
    ASSERT_TRUE(file.isWatchedItself());
    static_cast<void>(file.countOfEvents());
    for (int round = 0; round < 3; ++round) {
        makeTemporaryFile();
        ASSERT_EQ(file.countOfEvents(), 0U);
        std::filesystem::rename(".file.tmp", "file");
        ASSERT_EQ(file.meaningOfWhatHappened(), Meaning::File);
        ASSERT_TRUE(file.follow());
        static_cast<void>(file.countOfEvents());
    }
}

TEST(RouteWatch, WhatHappensToTheFileThatWasFollowedIsAnEventAndToTheFormerOneNone) {
    WatchedFile file;
    std::filesystem::create_hard_link("file", "former");
    writePlainly("new", "new");
    std::filesystem::rename("new", "file");
    ASSERT_TRUE(file.follow());
    static_cast<void>(file.countOfEvents());
    writePlainly("former", "changed");
    EXPECT_EQ(file.countOfEvents(), 0U);
    writePlainly("file", "changed");
    EXPECT_EQ(file.meaningOfWhatHappened(), Meaning::Contents);
    chmod("file", 0640);
    EXPECT_EQ(file.meaningOfWhatHappened(), Meaning::Contents);
}

TEST(RouteWatch, WithoutTheFileItsFolderReportsWhatIsMadeThere) {
    WatchedFile file;
    std::filesystem::remove("file");
    EXPECT_EQ(file.meaningOfWhatHappened(), Meaning::File);
    EXPECT_FALSE(file.follow());
    ASSERT_TRUE(file.armAgain());
    EXPECT_FALSE(file.isWatchedItself());
    static_cast<void>(file.countOfEvents());
    writePlainly("file", "new");
    EXPECT_EQ(file.meaningOfWhatHappened(), Meaning::File);
    ASSERT_TRUE(file.follow());
    EXPECT_TRUE(file.isWatchedItself());
    static_cast<void>(file.countOfEvents());
    makeTemporaryFile();
    EXPECT_EQ(file.countOfEvents(), 0U);
}

TEST(RouteWatch, WhatIsNoRegularFileIsWatchedThroughItsFolder) {
    const std::vector<std::function<void()>> makers = {
        [] { std::filesystem::create_directory("file"); },
        [] { EXPECT_EQ(mkfifo("file", 0600), 0); }};
    for (const auto& make : makers) {
        WatchedFile file(make);
        ASSERT_TRUE(file.isArmed());
        EXPECT_FALSE(file.isWatchedItself());
        static_cast<void>(file.countOfEvents());
        chmod("file", 0750);
        EXPECT_EQ(file.meaningOfWhatHappened(), Meaning::File);
        std::filesystem::remove("file");
    }
}

TEST(RouteWatch, AFileInTheSameFolderStillComesWhileAnotherIsWatchedItself) {
    FolderWatch folders;
    RouteWatch missing(std::filesystem::absolute("missing").string());
    RouteWatch present(std::filesystem::absolute("file").string());
    writePlainly("file", "old");
    ASSERT_FALSE(missing.arm(folders));
    ASSERT_FALSE(present.arm(folders));
    static_cast<void>(folders.takeEvents());
    writePlainly("missing", "new");
    EXPECT_THAT(namesReported(folders, missing.route().back().watch), testing::Contains("missing"));
    present.release(folders);
    missing.release(folders);
}

TEST(FolderWatch, NarrowedByThePathOfAnotherFolderReportsThatEventsMayBeLost) {
    using Interest = FolderWatch::Interest;
    FolderWatch folders;
    for (const char* folder : {"one", "two"}) std::filesystem::create_directory(folder);
    const int one = folders.add("one", Interest::NamesAndContents).number;
    const int two = folders.add("two", Interest::NamesAndContents).number;
    std::filesystem::rename("one", "away");
    std::filesystem::rename("two", "one");
    static_cast<void>(folders.takeEvents());
    folders.narrow(one, "one", Interest::NamesAndContents, Interest::NamesInUse);
    const auto events = folders.takeEvents();
    EXPECT_TRUE(std::any_of(events.begin(), events.end(),
                            [](const auto& event) { return event.kind == Kind::EventsLost; }));
    writePlainly("one/file", "new");
    EXPECT_THAT(namesReported(folders, two), testing::Contains("file"));
    EXPECT_TRUE(folders.takeEvents().empty());
}
