// SPDX-License-Identifier: MIT
// What can be asked, and the file that holds it.

#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "HistorySupport.h"

using namespace HistorySupport;
namespace fs = std::filesystem;

namespace {

unsigned modeOf(const fs::path& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
}

}  // namespace

TEST(History, IsInTheStateFolderAndForTheUserAlone) {
    start();
    set(1, "A");
    const fs::path path = QRVHistoryLocation();
    EXPECT_EQ(path, fs::path(getenv("XDG_STATE_HOME")) / "org.qrv.monitor" / "history.sqlite");
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(modeOf(path.parent_path()), 0700U);
    for (const auto& entry : fs::directory_iterator(path.parent_path()))
        EXPECT_EQ(modeOf(entry), 0600U) << entry.path();
}

TEST(History, GetsItsModeBack) {
    start();
    set(1, "A");
    fs::permissions(QRVHistoryLocation(), fs::perms(0644));
    set(2, "A");
    EXPECT_EQ(modeOf(QRVHistoryLocation()), 0600U);
}

TEST(History, ThatRootMakesInSomebodysHomeBelongsToThatUser) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to give files away";
    constexpr uid_t nobody = 65534;
    const fs::path state = getenv("XDG_STATE_HOME");
    fs::create_directories(state);
    ASSERT_EQ(chown(state.c_str(), nobody, nobody), 0);
    start();
    set(1, "A");
    set(2, "A");
    const fs::path path = QRVHistoryLocation();
    std::vector<fs::path> made{path.parent_path()};
    for (const auto& entry : fs::directory_iterator(path.parent_path())) made.push_back(entry);
    ASSERT_GE(made.size(), 2U);
    for (const fs::path& each : made) {
        struct stat status {};
        ASSERT_EQ(stat(each.c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, nobody) << each;
    }
}

TEST(History, IsEmptyBeforeItsBegin) {
    EXPECT_EQ(lines(), Lines{});
    EXPECT_FALSE(fs::exists(QRVHistoryLocation()));
    EXPECT_EQ(QRVHistoryClear(), "");
}

TEST(History, AnswersByPrefixOfWholeKeys) {
    start();
    set(1, "CPU.Menubar.Shown");
    set(1, "CPU.MenubarX");
    set(1, "CPU");
    QRVSettingsSetObjectForKeyPath(nullptr, "CPU");
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(1, "Disks.A_B");
    QRVSettingsSetObjectForKeyPath(2, "DisksXA");
    QRVSettingsCommitBatchSave();
    wait();
    EXPECT_EQ(lines({.prefix = "CPU.Menubar"}).size(), 2U);  // stored, and gone with "CPU"
    EXPECT_EQ(lines({.prefix = "Disks"}).size(), 1U);
    EXPECT_TRUE(lines({.prefix = "Disks"}).at(0).ends_with(": Disks.A_B none > 1"));
    EXPECT_EQ(lines({.prefix = "Disk"}), Lines{});
}

TEST(History, AnswersTheLatestFirstAndNoMoreThanTheLimit) {
    start();
    for (int value = 1; value <= 5; ++value) set(value, "A");
    const auto latest = saves({.limit = 2});
    ASSERT_EQ(latest.size(), 2U);
    EXPECT_EQ(latest[0].changes.at(0).after, 5);
    EXPECT_EQ(latest[1].changes.at(0).after, 4);
    EXPECT_GT(latest[0].order, latest[1].order);
}

TEST(History, AnswersByTimeAndByNumber) {
    start();
    for (int value = 1; value <= 3; ++value) set(value, "A");
    const auto all = saves();
    EXPECT_EQ(saves({.since = all[1].time}).size(), 2U);
    EXPECT_EQ(saves({.since = NSDate(all[0].time.timeIntervalSinceReferenceDate() + 1)}).size(),
              0U);
    const auto chosen = saves({.ids = {all[2].id, all[0].id}});
    ASSERT_EQ(chosen.size(), 2U);
    EXPECT_EQ(chosen[0].id, all[0].id);
    EXPECT_EQ(chosen[1].id, all[2].id);
    std::set<std::int64_t> ids;
    for (const QRVHistorySave& save : all) ids.insert(save.id);
    EXPECT_EQ(ids.size(), 3U);
}

TEST(History, TellsTheLastChangeOfAKeyPath) {
    start();
    set(1, "A.B");
    set(2, "A.B");
    set(3, "C");
    const auto last = QRVHistoryLastChange("A.B").saves;
    ASSERT_EQ(last.size(), 1U);
    EXPECT_EQ(lineOf(last[0]), "test/set: A.B 1 > 2");
    EXPECT_EQ(QRVHistoryLastChange("D").saves.size(), 0U);
}

TEST(History, IsCleared) {
    start();
    set("a secret of some length", "A");
    set(2, "A");
    EXPECT_EQ(QRVHistoryClear(), "");
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(StoreSupport::contentsOf(QRVHistoryLocation()).find("secret"), std::string::npos);
    set(3, "A");
    EXPECT_EQ(lines(), Lines{"test/set: A 2 > 3"});
}
