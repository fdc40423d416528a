// SPDX-License-Identifier: MIT
// Who may do what with a file that was replaced, made or copied: access lists, attributes, modes.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Files/OtherUsers.h"
#include "Files/SystemCallFilter.h"
#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"

using namespace QRVPlatform;

using OtherUsers::mayOpen;
using OtherUsers::nobody;

namespace fs = std::filesystem;

namespace {

constexpr uid_t friendOfOwner = 12345;
constexpr uid_t stranger = 23456;
const std::string newContents(much, 'n');

/// False where the file system has no access lists.
bool setAccessList(const std::string& entries, const std::string& path) {
    return std::system(("setfacl -m " + entries + " " + path).c_str()) == 0;
}

/// As `getfacl` prints it: the entries that the mode makes ineffective say so.
std::string accessListOf(const std::string& path) {
    std::string text;
    FILE* const stream = popen(("getfacl --omit-header " + path).c_str(), "r");
    std::array<char, 256> line{};
    while (fgets(line.data(), line.size(), stream) != nullptr) text += line.data();
    EXPECT_EQ(pclose(stream), 0);
    return text;
}

void makeFile(unsigned mode) {
    writePlainly("file", "old");
    chmod("file", mode);
}

bool setAttribute(const char* name, const std::string& value) {
    return setxattr("file", name, value.data(), value.size(), 0) == 0;
}

std::optional<std::string> attribute(const char* name, const char* path = "file") {
    std::array<char, 256> value{};
    const ssize_t size = getxattr(path, name, value.data(), value.size());
    return size < 0 ? std::nullopt
                    : std::optional(std::string(value.data(), static_cast<std::size_t>(size)));
}

bool replacesUnder(SystemCall call, int error) {
    ChildProcess child([&] {
        failCall(call, error);
        return !replaceFile("file", newContents);
    });
    return child.succeeded();
}

bool diesReplacing(SystemCall call) {
    ChildProcess child([&] {
        dieAtCall(call);
        replaceFile("file", newContents);
        return false;
    });
    return child.diedOf(SIGSYS);
}

/// How often the handler is called while the file is replaced twice.
struct Saves {
    bool haveSucceeded = true;
    std::vector<FileFailure> failures;

    Saves() {
        setFileFailureHandler([this](const FileFailure& failure) { failures.push_back(failure); });
        for (int count = 0; count < 2; ++count)
            if (replaceFile("file", newContents)) haveSucceeded = false;
        setFileFailureHandler(nullptr);
    }
};

class AccessLists : public testing::Test {
  protected:
    void SetUp() override {
        makeFile(0600);
        if (!setAccessList("u:54321:r", "file")) GTEST_SKIP() << "no access lists here";
        fs::remove("file");
    }
};

}  // namespace

TEST_F(AccessLists, StaysWithAFileThatIsReplaced) {
    makeFile(0600);
    ASSERT_TRUE(setAccessList("u:12345:r", "file"));
    const std::string before = accessListOf("file");
    EXPECT_FALSE(replaceFile("file", "new"));
    EXPECT_EQ(accessListOf("file"), before);
    EXPECT_EQ(modeOf("file"), 0640U) << "which shows the mask of the list";
}

TEST_F(AccessLists, LetsInTheSameUsersAfterAReplacement) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    chmod(".", 0755);
    makeFile(0600);
    ASSERT_TRUE(setAccessList("u:12345:r", "file"));
    EXPECT_FALSE(replaceFile("file", "new"));
    EXPECT_TRUE(mayOpen(friendOfOwner, nobody, "file"));
    EXPECT_FALSE(mayOpen(friendOfOwner, nobody, "file", O_WRONLY));
    EXPECT_FALSE(mayOpen(stranger, getegid(), "file")) << "the group may not read";
}

TEST_F(AccessLists, OfTheFolderForNewFilesIsNotForAFileThatHadNone) {
    makeFile(0640);
    const std::string before = accessListOf("file");
    ASSERT_TRUE(setAccessList("d:u:12345:rw", "."));
    EXPECT_FALSE(replaceFile("file", "new"));
    EXPECT_EQ(accessListOf("file"), before);
    EXPECT_EQ(modeOf("file"), 0640U);
}

TEST_F(AccessLists, OfTheFolderForNewFilesIsNotForSettings) {
    ASSERT_TRUE(setAccessList("d:u:12345:rw,d:o:r", "."));
    NSFileCoordinator().coordinateWritingItemAtURL(
        "folder/file", NSFileCoordinator::WritingOptions::None,
        [](const std::string& path) { EXPECT_FALSE(replaceFile(path, "new")); });
    EXPECT_EQ(accessListOf("folder/file"), "user::rw-\ngroup::---\nother::---\n\n");
    EXPECT_EQ(modeOf("folder/file"), 0600U);
    EXPECT_EQ(modeOf("folder/.file.lock"), 0600U) << "the mask lets nobody in";
    EXPECT_EQ(modeOf("folder"), 0700U);
}

TEST_F(AccessLists, ThatCannotBeKeptLeavesTheFileToItsOwner) {
    for (const int error : {EPERM, ENOSPC, EOPNOTSUPP}) {
        makeFile(0604);
        ASSERT_TRUE(setAccessList("u:12345:r", "file"));
        ASSERT_EQ(modeOf("file"), 0644U);
        ASSERT_TRUE(replacesUnder(SystemCall::SetAttribute, error));
        EXPECT_EQ(accessListOf("file"), "user::rw-\ngroup::---\nother::---\n\n");
        fs::remove("file");
    }
}

TEST_F(AccessLists, OfTheFolderThatCannotBeRemovedLetsNobodyIn) {
    makeFile(0664);
    ASSERT_TRUE(setAccessList("d:u:12345:rw", "."));
    ASSERT_TRUE(replacesUnder(SystemCall::RemoveAttribute, EPERM));
    EXPECT_EQ(modeOf("file"), 0600U) << "so the mask of the list is empty";
    EXPECT_EQ(readPlainly("file"), newContents);
}

TEST_F(AccessLists, IsReadyBeforeTheFirstByteAndNeverWider) {
    const mode_t before = umask(0);
    ASSERT_TRUE(setAccessList("d:u:23456:rw,d:o:rw", "."));
    makeFile(0600);
    ASSERT_TRUE(setAccessList("u:12345:r", "file"));
    for (const SystemCall call : {SystemCall::ChangeOwner, SystemCall::SetAttribute}) {
        ASSERT_TRUE(diesReplacing(call));
        EXPECT_EQ(modeOf(".file.tmp") & 0077U, 0U) << "private until it has its list";
    }
    ASSERT_TRUE(diesReplacing(SystemCall::WriteMuch));
    EXPECT_EQ(accessListOf(".file.tmp"), accessListOf("file"));
    EXPECT_EQ(readPlainly(".file.tmp"), "");
    umask(before);
}

TEST_F(AccessLists, IsNotKeptForAnotherGroup) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    chmod(".", 0777);
    makeFile(0660);
    ASSERT_TRUE(setAccessList("u:65534:rw", "file"));
    EXPECT_TRUE(OtherUsers::succeedsAs(nobody, nobody, [] { return !replaceFile("file", "new"); }));
    EXPECT_EQ(modeOf("file"), 0600U);
    EXPECT_FALSE(attribute("system.posix_acl_access"));
}

TEST_F(AccessLists, IsThatOfTheFileInABackupThatIsACopy) {
    makeFile(0600);
    ASSERT_TRUE(setAccessList("u:12345:r", "file"));
    ChildProcess child([] {
        failCall(SystemCall::Link, EPERM);
        return backUpFile("file").path == "file.damaged-1";
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(fs::hard_link_count("file"), 1U);
    EXPECT_EQ(accessListOf("file.damaged-1"), accessListOf("file"));
}

TEST(Attributes, OfUsersStayWithAFileThatIsReplaced) {
    makeFile(0600);
    if (!setAttribute("user.origin", "elsewhere")) GTEST_SKIP() << "no attributes here";
    ASSERT_TRUE(setAttribute("user.empty", ""));
    EXPECT_FALSE(replaceFile("file", "new"));
    EXPECT_EQ(attribute("user.origin"), "elsewhere");
    EXPECT_EQ(attribute("user.empty"), "");
}

TEST(Attributes, OfAFileThatItsOwnerMayOnlyReadStayToo) {
    makeFile(0600);
    if (!setAttribute("user.origin", "elsewhere")) GTEST_SKIP() << "no attributes here";
    chmod("file", 0400);
    const auto replace = [] { return !replaceFile("file", "new"); };
    if (geteuid() == 0) {
        ASSERT_EQ(chown("file", nobody, nobody), 0);
        chmod(".", 0777);
        EXPECT_TRUE(OtherUsers::succeedsAs(nobody, nobody, replace));
    } else {
        EXPECT_TRUE(replace());
    }
    EXPECT_EQ(attribute("user.origin"), "elsewhere");
    EXPECT_EQ(modeOf("file"), 0400U);
}

TEST(Attributes, OfSecurityModulesStayButForThoseOfTheBytes) {
    makeFile(0644);
    if (!setAttribute("security.label", "secret"))
        GTEST_SKIP() << "takes root, and a file system with attributes";
    // A capability of a program, in the form of the system: version 2, CAP_NET_RAW.
    const std::string capability("\0\0\0\2\0\x20\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20);
    ASSERT_TRUE(setAttribute("security.capability", capability));
    EXPECT_FALSE(replaceFile("file", ""));
    EXPECT_EQ(attribute("security.label"), "secret");
    EXPECT_FALSE(attribute("security.capability"));
}

TEST(Attributes, ThatCannotBeKeptDoNotStopASave) {
    makeFile(0644);
    if (!setAttribute("user.origin", "elsewhere")) GTEST_SKIP() << "no attributes here";
    ASSERT_TRUE(replacesUnder(SystemCall::SetAttribute, ENOSPC));
    EXPECT_EQ(readPlainly("file"), newContents);
    EXPECT_FALSE(attribute("user.origin"));
    EXPECT_EQ(modeOf("file"), 0644U);
}

TEST(Mode, OfOthersIsNotForTheMembersOfALostGroup) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    chmod(".", 0777);
    makeFile(0604);
    ASSERT_EQ(chown("file", 0, stranger), 0);
    ASSERT_FALSE(mayOpen(stranger, stranger, "file"));
    EXPECT_TRUE(OtherUsers::succeedsAs(nobody, nobody, [] { return !replaceFile("file", "new"); }));
    EXPECT_FALSE(mayOpen(stranger, stranger, "file"));
    EXPECT_EQ(modeOf("file"), 0600U);
}

TEST(RefusedMode, ThatIsAsWantedAnywayIsNoFailure) {
    makeFile(0600);
    ChildProcess child([] {
        failCall(SystemCall::ChangeMode, EPERM);
        const Saves saves;
        return saves.haveSucceeded && saves.failures.empty();
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), newContents);
}

TEST(RefusedMode, ThatCannotBeHadIsReportedOnceAndTheFileSaved) {
    for (const int error : {EPERM, EOPNOTSUPP, ENOSYS}) {
        makeFile(0664);
        ChildProcess child([&] {
            failCall(SystemCall::ChangeMode, error);
            const Saves saves;
            if (!saves.haveSucceeded || saves.failures.size() != 1) return false;
            const FileFailure& failure = saves.failures.front();
            return failure.operation == "set mode of file" && failure.path == ".file.tmp" &&
                   failure.error == std::error_code(error, std::generic_category());
        });
        EXPECT_TRUE(child.succeeded()) << error;
        EXPECT_EQ(readPlainly("file"), newContents);
        EXPECT_EQ(modeOf("file"), 0600U);
    }
}

TEST(RefusedMode, OfANewFileIsReportedAndTheFileSaved) {
    ChildProcess child([] {
        umask(0377);
        failCall(SystemCall::ChangeMode, EPERM);
        const Saves saves;
        return saves.haveSucceeded && saves.failures.size() == 1;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(modeOf("file"), 0400U);
}

TEST(RefusedMode, ThatWouldBeWiderThanTheOldOneRefusesTheSave) {
    makeFile(0400);
    ChildProcess child([] {
        failCall(SystemCall::ChangeMode, EPERM);
        return replaceFile("file", newContents) == std::errc::operation_not_permitted;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), "old");
    EXPECT_EQ(everythingIn("."), std::set<std::string>{"file"});
}

TEST(RefusedMode, ComesWithRefusedOwnersAndDatesWhichStopNoSaveEither) {
    makeFile(0600);
    ChildProcess child([] {
        for (const SystemCall call :
             {SystemCall::ChangeOwner, SystemCall::ChangeMode, SystemCall::ChangeDate})
            failCall(call, EPERM);
        return !replaceFile("file", newContents);
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readPlainly("file"), newContents);
    EXPECT_FALSE(replaceFile("file", "old"));
    ChildProcess broken([] {
        failCall(SystemCall::ChangeDate, EIO);
        return replaceFile("file", newContents) == std::errc::io_error;
    });
    EXPECT_TRUE(broken.succeeded());
    EXPECT_EQ(readPlainly("file"), "old");
}
