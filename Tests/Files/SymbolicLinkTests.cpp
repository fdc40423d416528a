// SPDX-License-Identifier: MIT
// Symbolic links, which reading, replacement, backups and coordination follow.

#include <gtest/gtest.h>

#include <filesystem>

#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"

using namespace QRVPlatform;

namespace fs = std::filesystem;

namespace {

struct Outcome {
    std::error_code error;
    std::string url;
};

/// Replaces the file at `path` by "new" under coordination.
Outcome replaceCoordinated(const std::string& path) {
    Outcome outcome;
    outcome.error = NSFileCoordinator().coordinateWritingItemAtURL(
        path, NSFileCoordinator::WritingOptions::ForReplacing, [&](const std::string& url) {
            outcome.url = url;
            EXPECT_FALSE(replaceFile(url, "new"));
        });
    return outcome;
}

std::string urlForReading(const std::string& path) {
    std::string seen = "none";
    NSFileCoordinator().coordinateReadingItemAtURL(path, NSFileCoordinator::ReadingOptions::None,
                                                   [&](const std::string& url) { seen = url; });
    return seen;
}

void makeTarget() {
    fs::create_directory("place");
    writePlainly("place/target", "old");
}

/// link-1 leads to link-2 and so on, the last one to "place/target".
void makeChain(int length) {
    for (int number = 1; number <= length; ++number)
        fs::create_symlink(number == length ? "place/target" : "link-" + std::to_string(number + 1),
                           "link-" + std::to_string(number));
}

void expectTargetReplacedAndLinkKept(const std::string& link) {
    EXPECT_EQ(readPlainly("place/target"), "new");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(fs::exists("place/.target.lock")) << "the lock is beside the target";
    EXPECT_FALSE(fs::exists("." + link + ".lock"));
}

}  // namespace

TEST(SymbolicLinks, ARelativeLinkIsFollowedAndStays) {
    makeTarget();
    fs::create_symlink("place/target", "link");
    const Outcome outcome = replaceCoordinated("link");
    EXPECT_FALSE(outcome.error);
    EXPECT_EQ(outcome.url, "place/target");
    EXPECT_EQ(urlForReading("link"), "place/target");
    expectTargetReplacedAndLinkKept("link");
}

TEST(SymbolicLinks, ARelativeLinkIsRelativeToItsOwnFolder) {
    makeTarget();
    fs::create_directory("links");
    fs::create_symlink("../place/target", "links/link");
    EXPECT_EQ(replaceCoordinated("links/link").url, "links/../place/target");
    expectTargetReplacedAndLinkKept("links/link");
}

TEST(SymbolicLinks, AnAbsoluteLinkIsFollowedAndStays) {
    makeTarget();
    const std::string target = fs::current_path() / "place/target";
    fs::create_symlink(target, "link");
    EXPECT_EQ(replaceCoordinated("link").url, target);
    expectTargetReplacedAndLinkKept("link");
}

TEST(SymbolicLinks, TwoHopsAreFollowed) {
    makeTarget();
    makeChain(2);
    EXPECT_EQ(replaceCoordinated("link-1").url, "place/target");
    expectTargetReplacedAndLinkKept("link-1");
    EXPECT_TRUE(fs::is_symlink("link-2"));
}

TEST(SymbolicLinks, ADanglingLinkLeadsToWhereTheFileIsMade) {
    fs::create_symlink("place/far/target", "link");
    EXPECT_EQ(urlForReading("link"), "place/far/target");
    EXPECT_FALSE(fs::exists("place"));
    EXPECT_FALSE(replaceCoordinated("link").error);
    EXPECT_EQ(readPlainly("place/far/target"), "new");
    EXPECT_TRUE(fs::is_symlink("link"));
    EXPECT_EQ(modeOf("place/far"), 0700U);
}

TEST(SymbolicLinks, ALoopIsAnErrorAndRunsNothing) {
    fs::create_symlink("second", "first");
    fs::create_symlink("first", "second");
    EXPECT_EQ(replaceCoordinated("first").error, std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(urlForReading("first"), "none");
    EXPECT_EQ(replaceFile("first", "x"), std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(backUpFile("first").error, std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(everythingIn("."), (std::set<std::string>{"first", "second"}));
}

TEST(SymbolicLinks, AsManyAsTheLimitAreFollowed) {
    makeTarget();
    makeChain(maximumSymbolicLinks);
    EXPECT_EQ(replaceCoordinated("link-1").url, "place/target");
}

TEST(SymbolicLinks, OneMoreThanTheLimitIsTooMany) {
    makeTarget();
    makeChain(maximumSymbolicLinks + 1);
    EXPECT_EQ(replaceCoordinated("link-1").error, std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(readPlainly("place/target"), "old");
}

TEST(SymbolicLinks, ALinkAndItsTargetExcludeEachOther) {
    makeTarget();
    fs::create_symlink("place", "other-place");
    fs::create_symlink("other-place/target", "link");
    replaceCoordinated("link");
    replaceCoordinated("place/target");
    EXPECT_EQ(everythingIn("place"), (std::set<std::string>{".target.lock", "target"}));
}

TEST(SymbolicLinks, ReplacingAndBackingUpFollowThemWithoutCoordinationToo) {
    makeTarget();
    fs::create_symlink("place/target", "link");
    EXPECT_EQ(backUpFile("link").path, "place/target.damaged-1");
    EXPECT_FALSE(replaceFile("link", "new"));
    EXPECT_TRUE(fs::is_symlink("link"));
    EXPECT_EQ(readPlainly("place/target"), "new");
    EXPECT_EQ(readPlainly("place/target.damaged-1"), "old");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status("place/target.damaged-1")));
}
