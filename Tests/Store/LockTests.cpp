// SPDX-License-Identifier: MIT
// Key paths that the site has locked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QRVSettings/QRVKeys.h"
#include "QRVSettings/QRVSettings+SiteFiles.h"
#include "Store/MergingSupport.h"
#include "Support/SiteSupport.h"

using namespace SiteSupport;

using MergingSupport::MergingHost;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* inProfile = "Profiles.Settings.default.CPU.Menubar.Enabled";

/// A site with `CPU.Menubar.Enabled` false and locked, and a user who has stored true there.
void startWithLock() {
    writeList(cpu(false));
    writeLocks(enabled);
    StoreSupport::writeSettings(cpu("the user's"));
    start();
    MergingHost::drain();  // the machine is recorded
}

PropertyListValue stored(const char* keyPath) {
    return QRVSettingsStoredObjectForKeyPath(keyPath);
}

void expectThatOthersChangeNothingThere(const MergingHost& host) {
    MergingSupport::otherSets(cpu(7).objectForKey("CPU"), "CPU");
    QRVSettings::sharedSettings().presentedItemDidChange();
    EXPECT_TRUE(StoreSupport::drainUntil([] { return stored(enabled) == PropertyListValue(7); }))
        << "the stored tree is that of the file";
    EXPECT_THAT(host.calls(), IsEmpty());
    MergingSupport::otherSets(cpu(8).objectForKey("CPU"), "CPU");
    MergingSupport::otherSets(5, frequency);
    QRVSettings::sharedSettings().presentedItemDidChange();
    EXPECT_TRUE(StoreSupport::drainUntil([&host] { return !host.calls().empty(); }));
    EXPECT_THAT(host.calls(), ElementsAre(ElementsAre(frequency)));
    EXPECT_EQ(QRVSettingsObjectForKeyPath(enabled), PropertyListValue(false));
    EXPECT_EQ(stored(enabled), PropertyListValue(8));
}

std::vector<std::string> locksOf(std::string_view bytes) {
    std::vector<QRVInside::SiteFault> ignored;
    return QRVInside::siteLocks(bytes, "file", ignored);
}
std::vector<std::string> refusedLinesOf(std::string_view bytes) {
    std::vector<QRVInside::SiteFault> faults;
    QRVInside::siteLocks(bytes, "file", faults);
    std::vector<std::string> lines;
    for (const QRVInside::SiteFault& fault : faults)
        lines.push_back(fault.keyPath + ": " + fault.reason);
    return lines;
}

}  // namespace

TEST(Locks, TheSitesValueAnswersAboveTheCacheAndTheStoredValue) {
    writeList(cpu(false));
    writeLocks(enabled);
    StoreSupport::writeSettings(cpu(true));
    EXPECT_TRUE(QRVSettingsBoolForKeyPath(enabled)) << "cached before the defaults are loaded";
    start();
    EXPECT_EQ(QRVSettingsObjectForKeyPath(enabled), PropertyListValue(false));
    EXPECT_FALSE(QRVSettingsBoolForKeyPath(enabled));
    EXPECT_EQ(stored(enabled), PropertyListValue(true)) << "the user's value stays";
    EXPECT_TRUE(QRVSettingsIsLocked(enabled));
    EXPECT_EQ(QRVSettingsLockFileForKeyPath(enabled), locksIn(firstFolder()));
    EXPECT_FALSE(QRVSettingsIsLocked("CPU.Menubar"));
    EXPECT_FALSE(QRVSettingsIsLocked(frequency));
    EXPECT_FALSE(QRVSettingsIsLocked(nullptr));
    EXPECT_FALSE(QRVSettingsIsLocked(""));
}

TEST(Locks, WithoutAValueOfTheSiteTheBuiltInDefaultAnswers) {
    writeLocks(std::string(frequency) + "\nNo.Default\n");
    StoreSupport::writeSettings(NSDictionary{{frequency, 9}, {"No", NSDictionary{{"Default", 1}}}});
    start();
    EXPECT_EQ(QRVSettingsObjectForKeyPath(frequency), PropertyListValue(1));
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("No.Default").isNull());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("No"), PropertyListValue(NSDictionary()));
}

TEST(Locks, AWriteChangesNothingAndIsTold) {
    startWithLock();
    Failures failures;
    QRVSettingsSetObjectForKeyPath(true, enabled);
    ASSERT_THAT(failures.all(), testing::SizeIs(1));
    EXPECT_EQ(failures.all()[0].operation, "write locked setting");
    EXPECT_EQ(failures.all()[0].path, locksIn(firstFolder()));
    EXPECT_EQ(failures.all()[0].keyPath, enabled);
    EXPECT_EQ(failures.all()[0].error, std::errc::operation_not_permitted);
    EXPECT_EQ(stored(enabled), PropertyListValue("the user's"));
    EXPECT_TRUE(StoreSupport::cached(enabled).isNull());
    EXPECT_EQ(QRVSettingsObjectForKeyPath(enabled), PropertyListValue(false));
    failures.take();
    QRVSettingsSetObjectForKeyPath(nullptr, enabled);
    QRVSettingsSetObjectForKeyPath(1, "CPU.Menubar.Enabled.Below");
    QRVSettingsSetColorForKeyPath(NSColor::colorWithSRGBRed(1, 1, 1, 1), enabled);
    EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU.Menubar.Enabled",
                                             "write locked setting: CPU.Menubar.Enabled.Below",
                                             "write locked setting: CPU.Menubar.Enabled"));
    EXPECT_EQ(stored(enabled), PropertyListValue("the user's"));
    EXPECT_THROW(QRVSettingsSetObjectForKeyPath(1, nullptr), NSInvalidArgumentException);
}

TEST(Locks, TheFailureHandlerMayLoadTheDefaultsAgain) {
    startWithLock();
    std::filesystem::remove(locksIn(firstFolder()));
    std::vector<std::string> refused;
    QRVPlatform::setFileFailureHandler([&refused](const QRVPlatform::FileFailure& failure) {
        refused.push_back(failure.keyPath);
        QRVSettings::sharedSettings().loadDefaults();
    });
    const NSDictionary written = cpu(true);
    QRVSettingsSetObjectForKeyPath(written.objectForKey("CPU"), "CPU");
    QRVPlatform::setFileFailureHandler(nullptr);
    EXPECT_THAT(refused, ElementsAre(enabled));
    EXPECT_FALSE(QRVSettingsIsLocked(enabled));
    EXPECT_EQ(stored(enabled), PropertyListValue("the user's"));
}

TEST(Locks, WhatIsWrittenAsItIsLockedIsNoFailure) {
    startWithLock();
    Failures failures;
    QRVSettingsSetObjectForKeyPath(false, enabled);
    QRVSettingsSetObjectForKeyPath("the user's", enabled);
    EXPECT_THAT(failures.take(), IsEmpty());
    EXPECT_EQ(stored(enabled), PropertyListValue("the user's"));
    EXPECT_EQ(QRVSettingsWaitForSaves(std::chrono::milliseconds(0)).state,
              QRVSaveStatus::State::Saved);
}

TEST(Locks, HoldInABatch) {
    startWithLock();
    Failures failures;
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(true, enabled);
    QRVSettingsSetObjectForKeyPath(4, frequency);
    QRVSettingsCommitBatchSave();
    StoreSupport::finishSaves();
    EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU.Menubar.Enabled"));
    EXPECT_EQ(StoreSupport::fileTree().objectForKey(frequency), PropertyListValue(4));
    EXPECT_EQ(stored(enabled), PropertyListValue("the user's"));
}

TEST(Locks, AWriteAboveChangesEverythingElse) {
    startWithLock();
    Failures failures;
    QRVSettingsSetObjectForKeyPath(
        NSDictionary{{"Menubar", NSDictionary{{"Enabled", true}, {"New", 1}}}, {"Other", 2}},
        "CPU");
    EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU.Menubar.Enabled"));
    EXPECT_EQ(stored("CPU"),
              PropertyListValue(NSDictionary{
                  {"Menubar", NSDictionary{{"Enabled", "the user's"}, {"New", 1}}}, {"Other", 2}}));
    QRVSettingsSetObjectForKeyPath(nullptr, "CPU");
    EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU.Menubar.Enabled"));
    EXPECT_EQ(stored("CPU"), cpu("the user's").objectForKey("CPU"));
    QRVSettingsSetObjectForKeyPath(5, "CPU");
    EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU"));
    EXPECT_EQ(stored("CPU"), cpu("the user's").objectForKey("CPU"));
}

TEST(Locks, ADictionaryThatIsReadAndWrittenBackIsNoFailure) {
    startWithLock();
    Failures failures;
    const NSMutableDictionary read =
        QRVSettingsObjectForKeyPath("CPU.Menubar").dictionary().mutableCopy();
    EXPECT_EQ(read.objectForKey("Enabled"), PropertyListValue(false));
    read.setObjectForKey(1, "New");
    QRVSettingsSetObjectForKeyPath(read, "CPU.Menubar");
    EXPECT_THAT(failures.take(), IsEmpty());
    EXPECT_EQ(stored("CPU.Menubar"),
              PropertyListValue(NSDictionary{{"Enabled", "the user's"}, {"New", 1}}));
}

TEST(Locks, ADictionaryAboveHasTheLockedValueInItsPlace) {
    startWithLock();
    const PropertyListValue before = stored("CPU");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("CPU"), cpu(false).objectForKey("CPU"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("CPU"), cpu(false).objectForKey("CPU")) << "cached";
    EXPECT_EQ(stored("CPU"), before);
    EXPECT_EQ(stored(enabled), PropertyListValue("the user's"));
}

TEST(Locks, AValueStoredInTheWayOfALockedOneGivesWay) {
    writeList(cpu(false));
    writeLocks(enabled);
    StoreSupport::writeSettings(NSDictionary{{"CPU", 5}});
    start();
    EXPECT_EQ(QRVSettingsObjectForKeyPath(enabled), PropertyListValue(false));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("CPU"), cpu(false).objectForKey("CPU"));
}

TEST(Locks, OfALevelLockAllBelowIt) {
    for (const char* lock : {"CPU.Menubar", "CPU.Menubar.*", "CPU.*"}) {
        SCOPED_TRACE(lock);
        writeLocks(lock);
        start();
        Failures failures;
        QRVSettingsSetObjectForKeyPath(2, "CPU.Menubar.New");
        EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU.Menubar.New"));
        EXPECT_TRUE(stored("CPU.Menubar.New").isNull());
        EXPECT_TRUE(QRVSettingsIsLocked("CPU.Menubar"));
        EXPECT_TRUE(QRVSettingsIsLocked("CPU.Menubar.Mode.HistoryGraph.Width"));
        EXPECT_EQ(QRVSettingsObjectForKeyPath("CPU.Menubar.Mode.HistoryGraph.Width"),
                  PropertyListValue(40));
        EXPECT_EQ(QRVSettingsObjectForKeyPath("CPU.Menubar").dictionary().objectForKey("Enabled"),
                  PropertyListValue(true));
    }
    EXPECT_TRUE(QRVSettingsIsLocked("CPU.Menu"));
}

TEST(Locks, HoldInEveryProfile) {
    writeList(cpu(false));
    writeLocks(enabled);
    StoreSupport::writeSettings(NSDictionary{
        {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}},
        {"Profiles", NSDictionary{{"Settings", NSDictionary{{"default", cpu(true)}}}}}});
    start();
    QRVSettings& store = QRVSettings::sharedSettings();
    store.prepare();
    Failures failures;
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath(enabled), PropertyListValue(false));
    EXPECT_EQ(QRVSettingsObjectForKeyPath(inProfile), PropertyListValue(false));
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("CPU"), cpu(false).objectForKey("CPU"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Profiles.Settings"),
              PropertyListValue(NSDictionary{{"default", cpu(false)}}));
    EXPECT_TRUE(QRVSettingsIsLocked(inProfile));
    QRVSettingsProfileSetObjectForKeyPath(7, enabled);
    QRVSettingsSetObjectForKeyPath(7, inProfile);
    QRVSettingsSetObjectForKeyPath(NSDictionary{{"default", cpu(7)}, {"new", cpu(8)}},
                                   "Profiles.Settings");
    EXPECT_THAT(failures.take(),
                ElementsAre(std::string("write locked setting: ") + inProfile,
                            std::string("write locked setting: ") + inProfile,
                            std::string("write locked setting: ") + inProfile,
                            "write locked setting: Profiles.Settings.new.CPU.Menubar.Enabled"));
    EXPECT_EQ(stored(inProfile), PropertyListValue(true));
    EXPECT_TRUE(stored("Profiles.Settings.new.CPU.Menubar.Enabled").isNull());
}

TEST(Locks, HoldInAProfileWhoseNameHoldsADot) {
    startWithLock();
    QRVSettings::sharedSettings().setActiveProfile("my.work");
    Failures failures;
    QRVSettingsProfileSetObjectForKeyPath(7, enabled);
    EXPECT_THAT(failures.take(),
                ElementsAre("write locked setting: Profiles.Settings.my.work.CPU.Menubar.Enabled"));
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath(enabled), PropertyListValue(false));
}

TEST(Locks, HoldInAnImport) {
    startWithLock();
    Failures failures;
    const NSMutableDictionary settings = cpu(true).mutableCopy();
    settings.setObjectForKey(4, frequency);
    QRVSettingsImport(settings);
    StoreSupport::finishSaves();
    EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU.Menubar.Enabled"));
    EXPECT_EQ(stored(enabled), PropertyListValue("the user's"));
    EXPECT_EQ(StoreSupport::fileTree().objectForKey(frequency), PropertyListValue(4));
    EXPECT_EQ(StoreSupport::fileTree().objectForKey("CPU"), cpu("the user's").objectForKey("CPU"));
    EXPECT_EQ(settings.objectForKey("CPU"), cpu(true).objectForKey("CPU"))
        << "the caller's tree stays";
}

TEST(Locks, AnImportOfNothingLeavesWhatIsLocked) {
    startWithLock();
    Failures failures;
    QRVSettingsSetObjectForKeyPath(4, frequency);
    QRVSettingsImport(nullptr);
    StoreSupport::finishSaves();
    EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU.Menubar.Enabled"));
    EXPECT_TRUE(StoreSupport::fileTree().objectForKey(frequency).isNull());
    EXPECT_EQ(StoreSupport::fileTree().objectForKey("CPU"), cpu("the user's").objectForKey("CPU"));
}

TEST(Locks, LeaveTheStoresOwnChangesAlone) {
    writeLocks("CPU.*\nSensors.*\nNetwork.*\nCombined.*\n");
    StoreSupport::writeSettings(
        NSDictionary{{"Device", NSDictionary{{"Device", "another"}, {"Model", "another"}}},
                     {"Sensors", NSDictionary{{"Global", NSDictionary{{"Fans", 1}}}}}});
    Failures failures;
    start();
    start();
    QRVSettings::sharedSettings().prepare();
    EXPECT_THAT(failures.take(), IsEmpty());
    EXPECT_EQ(stored("Migration.Profiles"), PropertyListValue(true));
    EXPECT_TRUE(stored("Sensors.Global.Fans").isNull());
}

TEST(Locks, ARemovalOfEmptyLevelsIsNoFailure) {
    writeLocks("CPU.Menubar.*");
    StoreSupport::writeSettings(NSDictionary{{"CPU", NSDictionary{{"Menubar", NSDictionary()}}}});
    start();
    Failures failures;
    QRVSettingsRemoveEmptyLevelsAbove(enabled);
    EXPECT_THAT(failures.take(), IsEmpty());
    EXPECT_EQ(stored("CPU.Menubar"), PropertyListValue(NSDictionary()));
}

TEST(Locks, HoldForTypedKeys) {
    startWithLock();
    Failures failures;
    EXPECT_FALSE(QRVSettingsValue(Keys::CPU::Menubar::Enabled));
    QRVSettingsSetValue(true, Keys::CPU::Menubar::Enabled);
    EXPECT_THAT(failures.take(), ElementsAre("write locked setting: CPU.Menubar.Enabled"));
    EXPECT_FALSE(QRVSettingsValue(Keys::CPU::Menubar::Enabled));
}

TEST(Locks, ALockedColourIsTheDefault) {
    constexpr const char* color = "Network.Menubar.Mode.Status.NoIP.Color";
    writeLocks(color);
    start();
    QRVSettings::sharedSettings().cache().setObjectForKey("cached", color);
    EXPECT_TRUE(QRVSettingsColorForKeyPath(color).isColor());
    EXPECT_EQ(QRVSettingsColorForKeyPath(color).color().redComponent, 1);
}

TEST(Locks, OfAllFoldersCountAndTheFirstIsNamed) {
    setenv("XDG_CONFIG_DIRS", "/proc/self/cwd/one:/proc/self/cwd/two", 1);
    writeList({{frequency, 2}}, "one");
    writeList({{frequency, 3}}, "two");
    writeLocks(std::string(frequency) + "\n" + enabled, "two");
    writeLocks(enabled, "one");
    start();
    EXPECT_EQ(QRVSettingsLockFileForKeyPath(frequency), locksIn("/proc/self/cwd/two"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath(frequency), PropertyListValue(2));
    EXPECT_EQ(QRVSettingsLockFileForKeyPath(enabled), locksIn("/proc/self/cwd/one"));
}

TEST(Locks, OfAFileThatCannotBeReadAreLeftOut) {
    Failures failures;
    std::filesystem::create_directories(locksIn(firstFolder()));
    start();
    EXPECT_THAT(failures.take(), ElementsAre("read site file: "));
    EXPECT_FALSE(QRVSettingsIsLocked(enabled));
    std::filesystem::remove(locksIn(firstFolder()));
    writeLocks(std::string(QRVInside::maximumSizeOfLocks, '\n') + enabled);
    start();
    EXPECT_EQ(QRVSettingsSiteDefaults().faults.at(0).error, std::errc::file_too_large);
    EXPECT_FALSE(QRVSettingsIsLocked(enabled));
}

TEST(Locks, EndWithTheirFile) {
    startWithLock();
    ASSERT_TRUE(QRVSettingsIsLocked(enabled));
    std::filesystem::remove(locksIn(firstFolder()));
    start();
    EXPECT_FALSE(QRVSettingsIsLocked(enabled));
    EXPECT_EQ(QRVSettingsObjectForKeyPath(enabled), PropertyListValue("the user's"));
}

TEST(Locks, AChangeByOthersAtALockedKeyPathIsNoneForAHostThatMergesSaves) {
    const MergingHost host;
    startWithLock();
    expectThatOthersChangeNothingThere(host);
}

TEST(Locks, AChangeByOthersAtALockedKeyPathIsNoneForAHostThatSavesWholeTrees) {
    const MergingHost host;
    QRVSettings::sharedSettings().setMergesSaves(false);
    startWithLock();
    expectThatOthersChangeNothingThere(host);
}

TEST(LockLines, AreKeyPathsBetweenCommentsAndEmptyLines) {
    EXPECT_THAT(locksOf("# comment\n\n  A.B \t\r\nC.*\n\tD e\n#F\nG"),
                ElementsAre("A.B", "C", "D e", "G"));
    EXPECT_THAT(locksOf("\xEF\xBB\xBF"
                        "A\n"),
                ElementsAre("A"));
    EXPECT_THAT(locksOf(""), IsEmpty());
    EXPECT_THAT(locksOf("\n\n \r\n"), IsEmpty());
    EXPECT_THAT(locksOf("A..B\n.A\nA."), ElementsAre("A..B", ".A", "A."));
}

TEST(LockLines, ThatAreNoKeyPathAreLeftOut) {
    using namespace std::string_view_literals;
    EXPECT_THAT(refusedLinesOf("*\n.*\nA.*.B\n*.A\nA*\nA.**\n"),
                ElementsAre("*: names no key path", ".*: names no key path",
                            "A.*.B: holds a * that is not its last key",
                            "*.A: holds a * that is not its last key",
                            "A*: holds a * that is not its last key",
                            "A.**: holds a * that is not its last key"));
    EXPECT_THAT(refusedLinesOf("Device.Device\nProfiles.*\nMigration\nMenubarCurrentApperance"),
                testing::SizeIs(4));
    EXPECT_THAT(refusedLinesOf("A\0B\nC\x01\n\x7F"sv), testing::SizeIs(3));
    EXPECT_THAT(refusedLinesOf("\xFF\xFE"
                               "A"),
                ElementsAre("\xFF\xFE"
                            "A: is not UTF-8"));
    EXPECT_THAT(locksOf("A\0\nB\n"sv), ElementsAre("B"));
}

TEST(LockLines, OfAnyKindEndNothing) {
    EXPECT_THAT(refusedLinesOf(std::string(600'000, '.')), testing::SizeIs(1));
    EXPECT_THAT(locksOf(std::string(511, '.')), testing::SizeIs(1));
    std::string many;
    for (int line = 0; line < 1000; ++line) many += "*\n";
    EXPECT_THAT(refusedLinesOf(many), testing::SizeIs(21));
    std::string binary;
    for (int byte = 0; byte < 100'000; ++byte)
        binary += static_cast<char>(byte * 7919 % 251 + byte % 5);
    writeLocks(binary + "\n" + enabled);
    start();
    EXPECT_TRUE(QRVSettingsIsLocked(enabled));
    writeLocks(std::string(1022, 'A').insert(0, "x.") + "\n" + std::string(511, '.'));
    start();
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("x").isNull());
    EXPECT_TRUE(QRVSettingsIsLocked(std::string(600, '.')));
}
