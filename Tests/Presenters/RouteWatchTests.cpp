// SPDX-License-Identifier: MIT
// What the names beside a watched file mean.
#include "Platform/Presenters/RouteWatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "Files/TestFiles.h"

using namespace QRVPlatform;

namespace {

using Kind = FolderWatch::Kind;
using Meaning = RouteWatch::Meaning;

/// Watches `file` in the working folder, where it has been made.
class WatchedFile {
  public:
    WatchedFile() : watch_(std::filesystem::absolute("file").string()) {
        writePlainly("file", "old");
        isArmed_ = !watch_.arm(folders_);
    }

    [[nodiscard]] bool isArmed() const { return isArmed_; }
    [[nodiscard]] Meaning meaningOf(const std::string& name) const {
        return watch_.meaningOf({Kind::WritingEnded, watch_.route().back().watch, name});
    }
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
