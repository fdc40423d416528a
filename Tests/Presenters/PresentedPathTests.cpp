// SPDX-License-Identifier: MIT
// What happens on the way to a presented file: links and folders.

#include <gtest/gtest.h>

#include <filesystem>

#include "Platform/Presenters/RouteSteps.h"
#include "Presenters/PresenterSupport.h"

using namespace QRVPlatform;

using namespace PresenterSupport;
namespace fs = std::filesystem;

namespace {

std::string linkTo(const std::string& target, const std::string& link) {
    fs::create_symlink(target, link);
    return link;
}

/// In one step, as careful programs do it.
void switchLink(const std::string& link, const std::string& target) {
    fs::rename(linkTo(target, link + ".new"), link);
}

std::vector<std::string> namesOnTheWayTo(const std::string& path) {
    std::vector<std::string> names;
    for (const RouteStep& step : stepsToFile(path))
        names.push_back(step.folder + ":" + step.name + (step.isFile ? "*" : ""));
    return names;
}

}  // namespace

TEST(StepsToAFile, NameEveryFolderAndLinkAndEndAtWhatIsMissing) {
    using Names = std::vector<std::string>;
    const std::string here = fs::canonical(".");
    const std::size_t above = stepsToFile(here).size();
    fs::create_directories("a/b");
    fs::create_symlink("../a/./b//", "a/link");
    fs::create_symlink(here + "/a/link/target", "file");
    const auto tail = [&](const std::string& path) {
        Names names = namesOnTheWayTo(path);
        names.erase(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(above));
        return names;
    };
    EXPECT_EQ(tail(here + "/a/b/x"), (Names{here + ":a", here + "/a:b", here + "/a/b:x*"}));
    EXPECT_EQ(tail(here + "/a/link/x"),
              (Names{here + ":a", here + "/a:link", here + ":a", here + "/a:b", here + "/a/b:x*"}));
    EXPECT_EQ(tail(here + "/a/missing/x/y"), (Names{here + ":a", here + "/a:missing"}));
    const Names all = tail(here + "/file");
    EXPECT_EQ(all.front(), here + ":file");
    EXPECT_EQ(all.back(), here + "/a/b:target*");
    EXPECT_EQ(namesOnTheWayTo("//tmp/../" + here + "/./y").back(), here + ":y*");
}

TEST(StepsToAFile, EndInALoopOfLinks) {
    linkTo("two", "one");
    linkTo("one", "two");
    EXPECT_FALSE(stepsToFile(fs::current_path() / "one").back().isFile);
}

TEST(PresentedLink, TheTargetChangesInAnotherFolder) {
    fs::create_directories("elsewhere/deep");
    writePlainly("elsewhere/deep/target", "old");
    const Reader reader(linkTo("elsewhere/deep/target", "file"));
    writePlainly("elsewhere/deep/target", "in place");
    EXPECT_TRUE(reader.sees("in place"));
    ASSERT_TRUE(save(nullptr, "file", "through the link"));
    EXPECT_TRUE(reader.sees("through the link"));
    replaceByRename("elsewhere/deep/target", "beside the target");
    EXPECT_TRUE(reader.sees("beside the target"));
}

TEST(PresentedLink, IsSwitchedToAnotherTarget) {
    for (const char* folder : {"one", "two"}) {
        fs::create_directory(folder);
        writePlainly(std::string(folder) + "/target", folder);
    }
    const Reader reader(linkTo("one/target", "file"));
    switchLink("file", "two/target");
    EXPECT_TRUE(reader.sees("two"));
    writePlainly("two/target", "changed");
    EXPECT_TRUE(reader.sees("changed"));
    const int count = finalCount(reader);
    writePlainly("one/target", "not presented any more");
    EXPECT_EQ(finalCount(reader), count);
    fs::remove("file");
    linkTo("one/target", "file");
    EXPECT_TRUE(reader.sees("not presented any more"));
}

TEST(PresentedLink, AMiddleOneIsSwitched) {
    writePlainly("one", "1");
    writePlainly("two", "2");
    linkTo("one", "middle");
    const Reader reader(linkTo("middle", "file"));
    switchLink("middle", "two");
    EXPECT_TRUE(reader.sees("2"));
}

TEST(PresentedLink, TheTargetComesLater) {
    const Reader reader(linkTo("a/b/target", "file"));
    fs::create_directories("a/b");
    writePlainly("a/b/target", "there");
    EXPECT_TRUE(reader.sees("there"));
}

TEST(PresentedLink, TakesTheFilesPlaceAndGivesItBack) {
    fs::create_directory("elsewhere");
    writePlainly("elsewhere/target", "of the link");
    writePlainly("file", "old");
    const Reader reader("file");
    switchLink("file", "elsewhere/target");
    EXPECT_TRUE(reader.sees("of the link"));
    writePlainly("elsewhere/target", "changed");
    EXPECT_TRUE(reader.sees("changed"));
    replaceByRename("file", "a file again");
    EXPECT_TRUE(reader.sees("a file again"));
    fs::remove("file");
    linkTo("elsewhere/target", "file");
    EXPECT_TRUE(reader.sees("changed"));
}

TEST(PresentedFolder, ComesLevelByLevel) {
    const Reader reader("a/b/c/file");
    for (const char* folder : {"a", "a/b", "a/b/c"}) {
        fs::create_directory(folder);
        EXPECT_EQ(finalCount(reader), 0);
    }
    writePlainly("a/b/c/file", "there");
    EXPECT_TRUE(reader.sees("there"));
}

TEST(PresentedFolder, ComesAllAtOnce) {
    for (int round = 0; round < 300; ++round) {
        const std::string folder = std::to_string(round) + "/a/b/c/d/e/f";
        const Reader reader(folder + "/file");
        fs::create_directories(folder);
        writePlainly(folder + "/file", "there");
        ASSERT_TRUE(reader.sees("there")) << round;
    }
}

TEST(PresentedFolder, IsDeletedAndMadeAnew) {
    fs::create_directories("a/b");
    writePlainly("a/b/file", "old");
    const Reader reader("a/b/file");
    for (const char* gone : {"a/b", "a"}) {
        fs::remove_all(gone);
        EXPECT_TRUE(reader.sees(missing));
        fs::create_directories("a/b");
        writePlainly("a/b/file", gone);
        EXPECT_TRUE(reader.sees(gone));
    }
}

TEST(PresentedFolder, IsDeletedWhileSomebodyHasItOpen) {
    fs::create_directory("a");
    const Reader reader("a/file");
    const int open = ::open("a", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    fs::remove("a");
    fs::create_directory("a");
    writePlainly("a/file", "there");
    EXPECT_TRUE(reader.sees("there"));
    close(open);
}

TEST(PresentedFolder, IsRenamedAwayAndComesBack) {
    fs::create_directories("a/b");
    writePlainly("a/b/file", "old");
    const Reader reader("a/b/file");
    for (const char* moved : {"a/b", "a"}) {
        fs::rename(moved, "away");
        EXPECT_TRUE(reader.sees(missing));
        fs::rename("away", moved);
        EXPECT_TRUE(reader.sees(readPlainly("a/b/file")));
        writePlainly("a/b/file", moved);
        EXPECT_TRUE(reader.sees(moved));
    }
}

TEST(PresentedFolder, IsRenamedAwayAndTheFileChangesThereOnly) {
    fs::create_directory("a");
    writePlainly("a/file", "old");
    const Reader reader("a/file");
    fs::rename("a", "away");
    fs::create_directory("a");
    writePlainly("a/file", "new");
    EXPECT_TRUE(reader.sees("new"));
    const int count = finalCount(reader);
    writePlainly("away/file", "not presented any more");
    EXPECT_EQ(finalCount(reader), count);
    EXPECT_TRUE(reader.sees("new"));
}

TEST(PresentedFolder, IsReplacedByALinkToElsewhere) {
    fs::create_directories("a/b");
    fs::create_directory("elsewhere");
    writePlainly("a/b/file", "old");
    writePlainly("elsewhere/file", "of elsewhere");
    const Reader reader("a/b/file");
    fs::rename("a/b", "away");
    linkTo("../elsewhere", "a/b");
    EXPECT_TRUE(reader.sees("of elsewhere"));
    writePlainly("elsewhere/file", "changed");
    EXPECT_TRUE(reader.sees("changed"));
    switchLink("a/b", fs::current_path() / "away");
    EXPECT_TRUE(reader.sees("old"));
}

TEST(PresentedFolder, TheFilesPlaceIsTakenByAFolder) {
    const Reader reader("file");
    fs::create_directory("file");
    EXPECT_TRUE(reader.isNotifiedMoreThan(0));
    fs::remove("file");
    EXPECT_TRUE(reader.sees(missing));
}

TEST(PresentedFolder, IsMadeAndUnmadeWhileItIsLookedAt) {
    const Reader reader("a/b/file");
    for (int round = 0; round < 200; ++round) {
        fs::create_directories("a/b");
        writePlainly("a/b/file", std::to_string(round));
        if (round % 2 == 0)
            fs::remove_all("a");
        else
            fs::rename("a", "away-" + std::to_string(round));
    }
    fs::create_directories("a/b");
    writePlainly("a/b/file", "last");
    EXPECT_TRUE(reader.sees("last"));
}
