// SPDX-License-Identifier: MIT
// What a process enters: its saves, and what others have done.

#include <chrono>
#include <cmath>

#include "HistorySupport.h"

using namespace HistorySupport;
namespace fs = std::filesystem;

namespace {

/// Both kinds of saves.
class Entry : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override { start(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Saves, Entry, testing::Bool(),
                         [](const auto& suite) { return suite.param ? "Merging" : "Whole"; });

}  // namespace

TEST_P(Entry, OfASaveHasItsChanges) {
    set(true, "CPU.Menubar.Shown");
    set(7, "Host.Width");
    set(nullptr, "Host.Width");
    EXPECT_EQ(lines(), (Lines{"test/set: CPU.Menubar.Shown none > true",
                              "test/set: Host.Width none > 7", "test/set: Host.Width 7 > none"}));
}

TEST_P(Entry, TellsWhenByWhomAndByWhichProcess) {
    const double before = std::floor(NSDate::now().timeIntervalSince1970());
    set(1, "A");
    const QRVHistorySave save = saves().at(0);
    EXPECT_GE(save.time.timeIntervalSince1970(), before);
    EXPECT_LE(save.time.timeIntervalSince1970(), NSDate::now().timeIntervalSince1970());
    EXPECT_EQ(save.program, "test");
    EXPECT_EQ(save.process, getpid());
}

TEST_P(Entry, KeepsTheKindOfEachValue) {
    const NSDictionary values{{"a", true},
                              {"b", 1},
                              {"c", 1.0},
                              {"d", "1 < 2 & \"3\"\n\x01"},
                              {"e", NSData(std::string_view("\0\xff", 2))},
                              {"f", NSDate(5)},
                              {"g", NSArray{1, NSDictionary{{"in", false}}, ""}},
                              {"h", std::uint64_t{0xffff'ffff'ffff'ffff}},
                              {"i", 0.1}};
    QRVSettingsPrepareBatchSave();
    for (const auto& [key, value] : values)
        QRVSettingsSetObjectForKeyPath(value, std::string("Kinds.").append(key));
    QRVSettingsCommitBatchSave();
    wait();
    const QRVHistorySave save = saves().at(0);
    for (const QRVHistoryChange& change : save.changes) {
        const PropertyListValue value = values.objectForKey(change.keyPath.substr(6));
        EXPECT_EQ(change.after, value);
        EXPECT_EQ(change.after.kind(), value.kind()) << change.keyPath;
        EXPECT_TRUE(change.before.isNull());
    }
    EXPECT_EQ(save.changes.size(), 9U);
}

TEST_P(Entry, OfABatchIsOneSave) {
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(1, "A");
    QRVSettingsSetObjectForKeyPath(2, "B");
    QRVSettingsCommitBatchSave();
    wait();
    EXPECT_EQ(lines(), Lines{"test/batch: A none > 1 B none > 2"});
}

TEST_P(Entry, NamesWhatAnImportWas) {
    set(1, "A");
    QRVSettingsImport(NSDictionary{
        {"B", 2}, {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}}});
    wait();
    ASSERT_EQ(lines().size(), 2U);
    EXPECT_TRUE(lines()[1].starts_with("test/import: A 1 > none B none > 2 Migration"))
        << lines()[1];
}

TEST_P(Entry, NamesMigrationAndHardware) {
    QRVSettings::sharedSettings().loadDefaults();
    wait();
    QRVSettings::sharedSettings().prepare();
    wait();
    for (const QRVHistorySave& save : saves()) {
        const bool isOfMachine = save.changes.at(0).keyPath.starts_with("Device.");
        EXPECT_EQ(save.origin, isOfMachine ? "hardware" : "migration") << lineOf(save);
    }
    EXPECT_EQ(saves({.prefix = "Device.Model"}).size(), 1U);
    EXPECT_EQ(saves({.prefix = "Migration.Profiles"}).size(), 1U);
}

TEST_P(Entry, HasTheHostsNameForWhatItDoes) {
    QRVSettings::sharedSettings().setChangeOrigin("undo");
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(1, "A");
    QRVSettingsCommitBatchSave();
    QRVSettings::sharedSettings().setChangeOrigin(std::nullopt);
    wait();
    set(2, "A");
    EXPECT_EQ(lines(), (Lines{"test/undo: A none > 1", "test/set: A 1 > 2"}));
}

TEST_P(Entry, OfASaveWithoutRecordsIsATree) {
    set(1, "A");
    QRVSettingsSaveObject(NSDictionary{{"B", 1}});
    wait();
    EXPECT_EQ(lines().at(1), "test/tree: A 1 > none B none > 1");
}

TEST_P(Entry, OfAnotherProgramIsMadeBeforeTheNextSave) {
    set(1, "A");
    otherReplaces(NSDictionary{{"A", 1}, {"Other", 5}});
    set(2, "A");
    set(3, "A");
    const std::string own = GetParam() ? "test/set: A 1 > 2" : "test/set: A 1 > 2 Other 5 > none";
    EXPECT_EQ(lines(),
              (Lines{"test/set: A none > 1", "?: Other none > 5", own, "test/set: A 2 > 3"}));
    EXPECT_EQ(saves().at(2).process, 0);
    EXPECT_EQ(saves().at(2).origin, "");
}

TEST_P(Entry, OfAnotherProgramIsMadeWhenTheStoreReloads) {
    set(1, "A");
    QRVSettings::sharedSettings().setMonitorFileChanges(true);
    otherReplaces(NSDictionary{{"A", 1}, {"Other", 5}});
    QRVSettings::sharedSettings().presentedItemDidChange();
    QRVSettings::sharedSettings().readQueue().sync([] {});
    wait();
    EXPECT_EQ(lines(), (Lines{"test/set: A none > 1", "?: Other none > 5"}));
}

TEST_P(Entry, OfAnotherProgramThatRemovedTheFileRemovesEverything) {
    set(1, "A");
    fs::remove(QRVSettingsLocation());
    set(2, "B");
    const std::string own = GetParam() ? "test/set: B none > 2" : "test/set: A none > 1 B none > 2";
    EXPECT_EQ(lines(), (Lines{"test/set: A none > 1", "?: A 1 > none", own}));
}

TEST_P(Entry, OfASaveThatReplacesADamagedFileIsWhatDiffersFromTheHistory) {
    set(1, "A");
    StoreSupport::writeSettings("{ damaged");
    set(2, "B");
    EXPECT_EQ(lines(), (Lines{"test/set: A none > 1", "test/set: B none > 2"}));
}

TEST_P(Entry, OfASaveThatChangesNothingIsNotMade) {
    set(1, "A");
    QRVSettingsSetObjectForKeyPath(1.0, "A");
    QRVSettingsSaveObject(QRVSettingsStoredValues());
    wait();
    EXPECT_EQ(lines(), Lines{"test/set: A none > 1"});
}

TEST_P(Entry, OfALeafThatBecomesALevelHasBoth) {
    set(1, "A");
    set(nullptr, "A");
    set(2, "A.B");
    otherReplaces(NSDictionary{{"A", 3}});
    set(4, "C");
    EXPECT_EQ(lines().at(2), "test/set: A.B none > 2");
    EXPECT_EQ(lines().at(3), "?: A none > 3 A.B 2 > none");
}

TEST(EntryOfTheStart, BeginsWithWhatIsStored) {
    StoreSupport::writeSettings(NSDictionary{{"A", 1}, {"B", 2}});
    start();
    wait();
    EXPECT_EQ(lines(), Lines{});
    set(5, "A");
    EXPECT_EQ(lines(), Lines{"test/set: A 1 > 5"});
}

TEST(EntryOfTheStart, OfASecondCallIsNone) {
    start();
    EXPECT_TRUE(QRVHistoryStart("other"));
    set(5, "A");
    EXPECT_EQ(lines(), Lines{"test/set: A none > 5"});
}

TEST(EntryOfTheStart, CallsAProgramByItsExecutable) {
    ASSERT_TRUE(QRVHistoryStart());
    set(5, "A");
    EXPECT_EQ(saves().at(0).program, "HistoryTests");
}

TEST(EntryOfTheStart, IsNotMadeWhenTheHistoryIsSwitchedOff) {
    setenv("QRVSETTINGS_HISTORY", "0", 1);
    EXPECT_TRUE(QRVHistoryIsSwitchedOff());
    EXPECT_FALSE(QRVHistoryStart());
    set(5, "A");  // waits for the save all the same
    EXPECT_EQ(StoreSupport::fileTree().objectForKey("A"), 5);
    EXPECT_FALSE(fs::exists(QRVHistoryLocation()));
    EXPECT_EQ(lines(), Lines{});
}

TEST(EntryOfTheStart, IsMadeForAnyOtherValueOfTheSwitch) {
    setenv("QRVSETTINGS_HISTORY", "1", 1);
    start();
    set(5, "A");
    EXPECT_EQ(lines().size(), 1U);
}

TEST(EntryOfTheStart, LeavesAnUnstartedProcessWithNothingToWaitFor) {
    EXPECT_TRUE(QRVHistoryWait(std::chrono::milliseconds(0)));
}
