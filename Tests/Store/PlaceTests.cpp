// SPDX-License-Identifier: MIT
// Settings files in places where they cannot be replaced, or lead elsewhere: what a save does
// there, and that nothing is lost. Where mounts or other users are not to be had, a test skips
// itself.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

#include "Files/TestFiles.h"
#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::writeSettings;
using testing::ElementsAre;

namespace fs = std::filesystem;

namespace {

const NSDictionary stored{{"Key", "old"}};

fs::path settingsFile() {
    return QRVSettingsLocation();
}

fs::path folder() {
    return settingsFile().parent_path();
}

fs::path lockFile() {
    return folder() / ("." + settingsFile().filename().string() + ".lock");
}

void makeLockFile(unsigned mode) {
    writePlainly(lockFile(), "");
    fs::permissions(lockFile(), fs::perms(mode));
}

/// Other users may read the settings file; `mode` says what they may do in its folder.
void letOthersIn(unsigned mode) {
    const fs::path outside = fs::current_path().parent_path();
    for (fs::path part = folder(); part != outside; part = part.parent_path())
        fs::permissions(part, fs::perms(mode));
    fs::permissions(settingsFile(), fs::perms(0644));
}

/// What failed during its life, in the order of time.
class Failures {
  public:
    Failures() {
        setFileFailureHandler([this](const FileFailure& failure) {
            codes_.push_back(failure.error.default_error_condition().value());
        });
    }
    Failures(const Failures&) = delete;
    Failures& operator=(const Failures&) = delete;
    ~Failures() { setFileFailureHandler(nullptr); }
    [[nodiscard]] const std::vector<int>& codes() const { return codes_; }

  private:
    std::vector<int> codes_;
};

void save(const char* keyPath, const PropertyListValue& value) {
    QRVSettingsSetObjectForKeyPath(value, keyPath);
    finishSaves();
}

/// The save is refused with `code`; the file, its folder and the settings of this process stay as
/// they were.
void expectRefusedSave(int code) {
    const std::string bytes = readPlainly(settingsFile());
    const std::set<std::string> beside = everythingIn(folder());
    {
        const Failures failures;
        save("New", 1);
        EXPECT_THAT(failures.codes(), ElementsAre(code));
    }
    EXPECT_EQ(readPlainly(settingsFile()), bytes);
    std::set<std::string> allowed = beside;
    allowed.insert(lockFile().filename());
    for (const std::string& name : everythingIn(folder()))
        EXPECT_TRUE(allowed.contains(name)) << name;
    EXPECT_EQ(QRVSettingsObjectForKeyPath("New"), 1);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Key"), "old");
}

/// The obstacle is gone: the next save brings everything.
void expectCompleteSave() {
    save("Next", 2);
    EXPECT_EQ(fileTree(), NSDictionary({{"Key", "old"}, {"New", 1}, {"Next", 2}}));
}

/// Mounts of this process from now on are seen by nobody else. False when it may have none.
bool hasOwnMounts() {
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// A mount that ends with this.
class Mount {
  public:
    Mount(const fs::path& source, fs::path target) : target_(std::move(target)) {
        EXPECT_EQ(mount(source.c_str(), target_.c_str(), nullptr, MS_BIND, nullptr), 0);
    }
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;
    ~Mount() { EXPECT_EQ(umount2(target_.c_str(), MNT_DETACH), 0); }
    void makeReadOnly() const {
        EXPECT_EQ(
            mount(nullptr, target_.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0);
    }

  private:
    fs::path target_;
};

/// False where the file system or the user has no such right.
bool setImmutable(const fs::path& path, bool isImmutable) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    int flags = 0;
    bool isDone = ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
    flags = isImmutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    isDone = isDone && ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
    close(file);
    return isDone;
}

constexpr uid_t nobody = 65534;

bool becomeNobody() {
    return setgid(nobody) == 0 && setuid(nobody) == 0;
}

/// Runs `body` in a process of its own, whose expectations count.
void expectInAnotherProcess(const std::function<void()>& body) {
    ChildProcess child([&] {
        body();
        return !testing::Test::HasFailure();
    });
    EXPECT_TRUE(child.succeeded());
}

}  // namespace

TEST(Places, AFileThatIsAMountIsNotReplaced) {
    if (!hasOwnMounts()) GTEST_SKIP() << "no mounts of one's own here";
    writeSettings(stored);
    const fs::path elsewhere = "elsewhere";
    fs::copy_file(settingsFile(), elsewhere);
    {
        const Mount mount(elsewhere, settingsFile());
        expectRefusedSave(EBUSY);
        expectRefusedSave(EBUSY);
    }
    expectCompleteSave();
    EXPECT_NE(readPlainly(elsewhere), readPlainly(settingsFile()));
}

TEST(Places, InAFolderThatIsAMountAFileIsReplacedAsAnywhere) {
    if (!hasOwnMounts()) GTEST_SKIP() << "no mounts of one's own here";
    fs::create_directories(folder());
    fs::create_directory("elsewhere");
    const Mount mount("elsewhere", folder());
    writeSettings(stored);
    save("New", 1);
    expectCompleteSave();
    EXPECT_TRUE(fs::exists("elsewhere" / settingsFile().filename()));
}

TEST(Places, AReadOnlyMountIsReadAndRefusesSaves) {
    if (!hasOwnMounts()) GTEST_SKIP() << "no mounts of one's own here";
    writeSettings(stored);
    {
        const Mount mount(folder(), folder());
        mount.makeReadOnly();
        expectRefusedSave(EROFS);
        EXPECT_EQ(everythingIn(folder()),
                  std::set<std::string>{settingsFile().filename().string()});
    }
    expectCompleteSave();
}

TEST(Places, AReadOnlyFolderIsReadAndRefusesSaves) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    writeSettings(stored);
    makeLockFile(0666);
    letOthersIn(0755);
    expectInAnotherProcess([] {
        ASSERT_TRUE(becomeNobody());
        expectRefusedSave(EACCES);
    });
}

TEST(Places, ALockFileOfAnotherUserRefusesSaves) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to become someone else";
    writeSettings(stored);
    makeLockFile(0600);
    letOthersIn(0777);
    expectInAnotherProcess([] {
        ASSERT_TRUE(becomeNobody());
        expectRefusedSave(EACCES);
    });
    fs::permissions(lockFile(), fs::perms(0666));
    expectInAnotherProcess([] {
        ASSERT_TRUE(becomeNobody());
        save("New", 1);
        EXPECT_EQ(fileTree(), NSDictionary({{"Key", "old"}, {"New", 1}}));
    });
}

TEST(Places, AFileThatMustNotChangeIsNotReplaced) {
    writeSettings(stored);
    if (!setImmutable(settingsFile(), true)) GTEST_SKIP() << "no immutable files here";
    expectRefusedSave(EPERM);
    ASSERT_TRUE(setImmutable(settingsFile(), false));
    expectCompleteSave();
}

TEST(Places, AFolderThatMustNotChangeRefusesSaves) {
    writeSettings(stored);
    if (!setImmutable(folder(), true)) GTEST_SKIP() << "no immutable folders here";
    expectRefusedSave(EPERM);
    ASSERT_TRUE(setImmutable(folder(), false));
    expectCompleteSave();
}

TEST(Places, ALinkToAnotherFileSystemIsFollowedAndTheFileReplacedThere) {
    if (!hasOwnMounts()) GTEST_SKIP() << "no mounts of one's own here";
    fs::create_directories(folder());
    fs::create_directory("other-system");
    ASSERT_EQ(mount("none", "other-system", "tmpfs", 0, nullptr), 0);
    const fs::path target = fs::current_path() / "other-system/settings";
    fs::create_symlink(target, settingsFile());
    writePlainly(target, NSPropertyListSerialization::dataWithPropertyList(stored).bytes);
    save("New", 1);
    expectCompleteSave();
    EXPECT_EQ(fs::read_symlink(settingsFile()), target);
    EXPECT_EQ(everythingIn("other-system"), (std::set<std::string>{".settings.lock", "settings"}));
    EXPECT_EQ(umount("other-system"), 0);
}

TEST(Places, AFolderThatIsALinkIsFollowedAtEachSave) {
    for (const char* place : {"first", "second"}) fs::create_directory(place);
    fs::create_directories(folder().parent_path());
    fs::create_directory_symlink(fs::current_path() / "first", folder());
    writeSettings(stored);
    save("New", 1);
    fs::create_directory_symlink(fs::current_path() / "second", "switched");
    fs::rename("switched", folder());
    expectCompleteSave();
    const std::string name = settingsFile().filename();
    EXPECT_EQ(NSPropertyListSerialization::propertyListWithData(readPlainly("first/" + name)).value,
              NSDictionary({{"Key", "old"}, {"New", 1}}))
        << "what lies in the first place is left as it was";
    EXPECT_EQ(everythingIn("second"), (std::set<std::string>{"." + name + ".lock", name}));
}

TEST(Places, AFullDiskRefusesSaves) {
    if (!hasOwnMounts()) GTEST_SKIP() << "no mounts of one's own here";
    fs::create_directories(folder());
    ASSERT_EQ(mount("none", folder().c_str(), "tmpfs", 0, "size=64k"), 0);
    writeSettings(stored);
    save("Key", "old");
    const fs::path ballast = folder() / "ballast";
    for (std::string bytes(4096, 'x'); !bytes.empty();) {
        std::ofstream file(ballast, std::ios::binary | std::ios::app);
        if (!(file << bytes).flush()) break;
    }
    expectRefusedSave(ENOSPC);
    fs::remove(ballast);
    expectCompleteSave();
    EXPECT_EQ(umount2(folder().c_str(), MNT_DETACH), 0);
}
