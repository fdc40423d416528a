// SPDX-License-Identifier: MIT
// Settings as rows.
#include "Rows/SettingsTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Editing/RowsSupport.h"
#include "Rows/RowFilter.h"
#include "Tool/ToolSupport.h"

using namespace Tool;
using RowsSupport::keyPathsOf;
using RowsSupport::migrated;
using RowsSupport::readAgain;
using RowsSupport::Settings;
using RowsSupport::shownRows;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr const char* count = "CPU.Menu.Processes.Count";
constexpr const char* enabled = "CPU.Menubar.Enabled";
constexpr const char* enabledAtWork = "Profiles.Settings.work.CPU.Menubar.Enabled";

/// The key paths that a command prints before a tab.
std::vector<std::string> printedKeyPaths(const std::vector<std::string>& arguments) {
    std::istringstream lines(ToolSupport::run(arguments).output);
    std::vector<std::string> keyPaths;
    for (std::string line; std::getline(lines, line);)
        keyPaths.push_back(line.substr(0, line.find('\t')));
    std::ranges::sort(keyPaths, standsBefore);
    return keyPaths;
}

std::vector<std::string> modifiedRows(const SettingsTable& table, bool showsRecords) {
    RowList list(table);
    list.setShowsRecords(showsRecords);
    list.setFilter(RowFilter("is:modified"));
    list.arrange();
    return shownRows(list);
}

}  // namespace

TEST(SettingsTable, HasARowForEachKnownSettingAndDefault) {
    const Settings settings(nullptr);
    for (const QRVKnownSetting& known : QRVKnownSettings()) {
        if (isLevel(QRVSettingsDefaultForKeyPath(known.keyPath))) {
            EXPECT_EQ(settings.table.at(known.keyPath), nullptr) << known.keyPath;
            continue;
        }
        const SettingRow& row = settings.row(std::string(known.keyPath));
        ASSERT_NE(row.known, nullptr) << known.keyPath;
        EXPECT_EQ(row.known->keyPath, known.keyPath);
        EXPECT_EQ(!row.byDefault.isNull(), known.hasDefault) << known.keyPath;
    }
}

TEST(SettingsTable, HasARowForEachDefaultOfALevel) {
    const Settings settings(nullptr);
    NSMutableDictionary defaults;
    NSDictionaryQRV::flatten(QRVSettings::sharedSettings().defaults(), defaults);
    EXPECT_GT(defaults.count(), 80U);
    for (const auto& [keyPath, value] : defaults) {
        const SettingRow& row = settings.row(std::string(keyPath));
        EXPECT_EQ(row.effective, value) << keyPath;
        EXPECT_EQ(row.byDefault, value) << keyPath;
        EXPECT_EQ(row.layer, AnsweringLayer::Default) << keyPath;
        EXPECT_FALSE(row.isModified) << keyPath;
    }
}

TEST(SettingsTable, HasARowForWhatIsStored) {
    const Settings settings(migrated({{count, 7}, {"Own.Setting", "text"}}));
    const SettingRow& row = settings.row(count);
    EXPECT_EQ(row.effective, PropertyListValue(7));
    EXPECT_EQ(row.stored, PropertyListValue(7));
    EXPECT_EQ(row.byDefault, PropertyListValue(5));
    EXPECT_EQ(row.layer, AnsweringLayer::Stored);
    EXPECT_TRUE(row.isModified);
    EXPECT_FALSE(row.isOfOtherKind);
    EXPECT_EQ(settings.row("Own.Setting").known, nullptr);
    EXPECT_TRUE(settings.row("Own.Setting").isModified);
}

TEST(SettingsTable, IsSortedByLevels) {
    EXPECT_TRUE(standsBefore("A", "A.B"));
    EXPECT_TRUE(standsBefore("A.B", "A-B"));
    EXPECT_TRUE(standsBefore("A.B", std::string("A\0", 2)));
    EXPECT_TRUE(standsBefore("", ".A"));
    EXPECT_TRUE(standsBefore("A", "\u00c4"));
    EXPECT_FALSE(standsBefore("A.B", "A.B"));
    EXPECT_FALSE(standsBefore("A.B", "A"));
    const Settings settings(migrated({{"A-B", 1}, {"A.B", 1}, {"A.B-C.D", 1}, {"A.C.D", 1}}));
    EXPECT_TRUE(std::ranges::is_sorted(keyPathsOf(settings.table), standsBefore));
}

TEST(SettingsTable, FindsRowsByKeyPath) {
    const Settings settings(migrated({{"A.B", 1}}));
    for (std::size_t index = 0; index < settings.table.rows().size(); ++index)
        EXPECT_EQ(settings.table.indexOf(settings.table.rows()[index].keyPath), index);
    for (const char* const other : {"", "A", "A.", "A.B.", "A.B.C", "ZZZ"}) {
        EXPECT_FALSE(settings.table.indexOf(other)) << other;
        EXPECT_EQ(settings.table.at(other), nullptr) << other;
    }
}

TEST(SettingsTable, OfAProfileHasItsValueThenTheDefaultAndNeverThePlainValue) {
    const NSDictionary tree = migrated({{enabled, false}, {enabledAtWork, false}, {count, 7}});
    const Settings atWork(tree, "work");
    EXPECT_EQ(atWork.row(enabled).effective, PropertyListValue(false));
    EXPECT_EQ(atWork.row(enabled).layer, AnsweringLayer::Profile);
    EXPECT_EQ(atWork.row(count).effective, PropertyListValue(5));
    EXPECT_TRUE(atWork.row(count).stored.isNull());
    EXPECT_EQ(atWork.row(count).layer, AnsweringLayer::Default);
    EXPECT_EQ(atWork.table.at("Device.Device"), nullptr);
    const Settings atHome(tree, "home");
    EXPECT_EQ(atHome.row(enabled).effective, PropertyListValue(true));
    EXPECT_FALSE(atHome.row(enabled).isModified);
}

TEST(SettingsTable, ShowsAnotherScopeOfTheSameSettings) {
    const NSDictionary tree = migrated({{enabled, 1}, {enabledAtWork, false}});
    Settings settings(tree);
    settings.table.setProfile("work");
    EXPECT_EQ(settings.row(enabled).layer, AnsweringLayer::Profile);
    EXPECT_EQ(keyPathsOf(settings.table), keyPathsOf(Settings(tree, "work").table));
    settings.table.setProfile("");
    EXPECT_TRUE(settings.row(enabled).isOfOtherKind);
    EXPECT_EQ(keyPathsOf(settings.table), keyPathsOf(Settings(tree).table));
}

TEST(SettingsTable, NamesTheProfiles) {
    EXPECT_THAT(Settings(nullptr).table.profileNames(), ElementsAre("default"));
    EXPECT_THAT(Settings(migrated({{enabledAtWork, true}})).table.profileNames(),
                ElementsAre("default", "work"));
    EXPECT_THAT(Settings({{"Profiles", 5}, {"Device", 5}}).table.profileNames(),
                ElementsAre("default"));
}

TEST(SettingsTable, TellsKindsApart) {
    const auto row = [](const PropertyListValue& stored) {
        return Settings(migrated({{count, stored}})).row(count);
    };
    EXPECT_TRUE(row(5.0).isModified) << "diff prints it, too";
    EXPECT_FALSE(row(5.0).isOfOtherKind);
    EXPECT_TRUE(row("5").isModified);
    EXPECT_TRUE(row("5").isOfOtherKind);
    EXPECT_TRUE(row(true).isOfOtherKind);
    EXPECT_FALSE(row(5).isModified) << "stored, and no different";
    EXPECT_EQ(row(5).layer, AnsweringLayer::Stored);
}

TEST(SettingsTable, HasARowWhereAStoredValueHidesDefaults) {
    const Settings settings(migrated({{"CPU.Menu", 5}}));
    EXPECT_EQ(settings.row("CPU.Menu").effective, PropertyListValue(5));
    EXPECT_TRUE(settings.row("CPU.Menu").isOfOtherKind);
    EXPECT_EQ(settings.row(count).effective, PropertyListValue(5)) << "the default answers below";
    EXPECT_EQ(settings.row(count).layer, AnsweringLayer::Default);
}

TEST(SettingsTable, HasNoRowWhereADictionaryHidesADefault) {
    const Settings settings(migrated({{"UpdateFrequency.A", 5}}));
    EXPECT_EQ(settings.table.at("UpdateFrequency"), nullptr);
    EXPECT_EQ(settings.row("UpdateFrequency.A").effective, PropertyListValue(5));
}

TEST(SettingsTable, HasARowForAnEmptyDictionary) {
    const Settings settings(
        migrated({{"Own.Empty", NSDictionary{}}, {"UpdateFrequency", NSDictionary{}}}));
    EXPECT_TRUE(settings.row("Own.Empty").effective.isDictionary());
    EXPECT_FALSE(settings.row("Own.Empty").isModified);
    EXPECT_TRUE(settings.row("UpdateFrequency").isModified) << "it hides a default";
}

TEST(SettingsTable, CountsWhatNoKeyPathReaches) {
    const NSMutableDictionary tree = migrated({{"A.B", 1}});
    tree.setObjectForKey(NSDictionary{{"C", 1}, {"D", NSDictionary{}}}, "X.Y");
    tree.setObjectForKey(NSDictionary{{"a.b", 1}, {"c", 2}}, "Z");
    Settings settings(tree);
    EXPECT_EQ(settings.table.unreachedCount(), 3U);
    EXPECT_EQ(settings.table.at("X.Y.C"), nullptr);
    EXPECT_EQ(settings.table.at("Z.a.b"), nullptr);
    EXPECT_NE(settings.table.at("Z.c"), nullptr);
    tree.setObjectForKey(5, "X.Y");
    settings.table.update(snapshotOfSettings(readAgain(tree)));
    EXPECT_EQ(settings.table.unreachedCount(), 2U);
    settings.table.setProfile("work");
    EXPECT_EQ(settings.table.unreachedCount(), 0U);
    settings.table.setProfile("");
    EXPECT_EQ(settings.table.unreachedCount(), 2U);
}

TEST(SettingsTable, TellsRecordsOfTheStore) {
    const Settings settings(nullptr);
    for (const char* const record :
         {"Device.Device", "Migration.Profiles", "MenubarCurrentApperance",
          "Profiles.Settings.default.CPU.Menubar", "Combined.Menubar.Items"})
        EXPECT_TRUE(settings.row(record).isRecord) << record;
    for (const char* const setting : {enabled, count, "Combined.Menu.Items"})
        EXPECT_FALSE(settings.row(setting).isRecord) << setting;
}

TEST(SettingsTable, TellsWhatTheSiteGivesAndLocks) {
    SiteSupport::writeList(SiteSupport::cpu(false));
    SiteSupport::writeLocks("CPU.Menubar.*\n");
    const NSDictionary tree =
        migrated({{enabled, true}, {"CPU.Menubar.Empty", NSDictionary{}}, {enabledAtWork, true}});
    Settings settings(tree);
    EXPECT_TRUE(settings.row(enabled).isLocked);
    EXPECT_EQ(settings.row(enabled).effective, PropertyListValue(false));
    EXPECT_EQ(settings.row(enabled).stored, PropertyListValue(true));
    EXPECT_EQ(settings.row(enabled).layer, AnsweringLayer::Site);
    EXPECT_FALSE(settings.row(count).isLocked);
    settings.table.setProfile("work");
    EXPECT_TRUE(settings.row(enabled).isLocked);
    EXPECT_EQ(settings.row(enabled).effective, PropertyListValue(false));
}

TEST(SettingsTable, ShowsWhatIsLockedInADictionaryAboveIt) {
    SiteSupport::writeList({{"Own", NSDictionary{{"Level", NSDictionary{{"A", 1}}}}}});
    SiteSupport::writeLocks("Own.Level.A\n");
    Settings settings(migrated({{"Own.Level", NSDictionary{}}}));
    EXPECT_EQ(settings.row("Own.Level").effective, PropertyListValue(NSDictionary{{"A", 1}}));
    SiteSupport::writeList({{"Own", NSDictionary{{"Level", NSDictionary{{"A", 2}}}}}});
    settings.table.update(snapshotOfSettings(migrated({{"Own.Level", NSDictionary{}}})));
    EXPECT_EQ(settings.row("Own.Level").effective, PropertyListValue(NSDictionary{{"A", 2}}));
}

TEST(SettingsTable, HasARowForWhatTheFileHoldsAlsoWhereTheStartRemovesIt) {
    const char* const sensors = "Profiles.Settings.work.Sensors.Menubar.Sensors";
    const NSDictionary tree = migrated({{"Device.Model", "another"}, {sensors, NSArray{"fan"}}});
    const Settings settings(tree);
    EXPECT_EQ(settings.row(sensors).stored, PropertyListValue(NSArray{"fan"}));
    EXPECT_TRUE(settings.row(sensors).effective.isNull());
    EXPECT_EQ(settings.row(sensors).layer, AnsweringLayer::None);
    EXPECT_TRUE(settings.row(sensors).isModified);
}

TEST(SettingsTable, NoticesLocksThatComeAndGo) {
    const NSDictionary tree = migrated({{enabled, false}});
    Settings settings(tree);
    SiteSupport::writeLocks("CPU.Menubar.Enabled\n");
    const auto change = settings.table.update(snapshotOfSettings(tree));
    EXPECT_THAT(change.changed, ElementsAre(enabled));
    EXPECT_TRUE(settings.row(enabled).isLocked);
    SiteSupport::writeLocks("");
    EXPECT_THAT(settings.table.update(snapshotOfSettings(tree)).changed, ElementsAre(enabled));
    EXPECT_EQ(settings.row(enabled).effective, PropertyListValue(false));
}

TEST(SettingsTable, TellsWhatAnUpdateHasChanged) {
    Settings settings(migrated({{count, 7}, {"Own.A", 1}, {"Own.B", 1}}));
    const auto change = settings.table.update(
        snapshotOfSettings(migrated({{count, 8}, {"Own.B", 1}, {"Own.C", 1}})));
    EXPECT_THAT(change.changed, ElementsAre(count));
    EXPECT_THAT(change.added, ElementsAre("Own.C"));
    EXPECT_THAT(change.removed, ElementsAre("Own.A"));
    EXPECT_EQ(settings.row(count).effective, PropertyListValue(8));
}

TEST(SettingsTable, FindsNoChangeInAnEqualTree) {
    const NSDictionary tree = RowsSupport::Random(5).tree();
    Settings settings(tree);
    EXPECT_TRUE(settings.table.update(snapshotOfSettings(tree)).isEmpty());
    EXPECT_TRUE(settings.table.update(snapshotOfSettings(readAgain(tree))).isEmpty());
}

TEST(SettingsTable, HasARowForEachPendingEdit) {
    Settings settings(migrated({{"Own.A", 1}}));
    const auto change = settings.table.setAdditionalKeyPaths({"Own.A", "Own.B", "Own"});
    EXPECT_THAT(change.added, ElementsAre("Own", "Own.B"));
    EXPECT_TRUE(settings.row("Own.B").effective.isNull());
    EXPECT_EQ(settings.row("Own.B").layer, AnsweringLayer::None);
    EXPECT_EQ(settings.row("Own").effective.dictionary().count(), 1U);
    settings.table.update(snapshotOfSettings(nullptr));
    EXPECT_NE(settings.table.at("Own.A"), nullptr);
    const auto fewer = settings.table.setAdditionalKeyPaths({"Own.B"});
    EXPECT_THAT(fewer.removed, ElementsAre("Own", "Own.A"));
    settings.table.setProfile("work");
    EXPECT_NE(settings.table.at("Own.B"), nullptr);
}

TEST(SettingsTable, MakesTheTextOfARowAgainAfterAChange) {
    Settings settings(migrated({{"Own.A", "Before"}, {"Own.B", "Same"}}));
    const auto textOf = [&settings](const std::string& keyPath) {
        return std::string(settings.table.searchableTextOf(*settings.table.indexOf(keyPath)));
    };
    EXPECT_EQ(textOf("Own.A"), "own.a\nbefore");
    EXPECT_EQ(textOf("Own.B"), "own.b\nsame");
    settings.table.update(
        snapshotOfSettings(migrated({{"Own.A", "After"}, {"Own.B", "Same"}, {"Own.A-", 1}})));
    EXPECT_EQ(textOf("Own.A"), "own.a\nafter");
    EXPECT_EQ(textOf("Own.B"), "own.b\nsame");
    for (std::size_t row = 0; row < settings.table.rows().size(); ++row)
        EXPECT_EQ(settings.table.searchableTextOf(row), searchableText(settings.table.rows()[row]));
}

TEST(SettingsTable, OfAFreshFileWithTwoChangesHasTwoModifiedRows) {
    ASSERT_EQ(ToolSupport::run({"set", count, "7"}).exitCode, 0);
    ASSERT_EQ(ToolSupport::run({"set", "Menu.Theme.Dark", "blue"}).exitCode, 0);
    const Settings settings(StoreSupport::fileTree());
    EXPECT_THAT(modifiedRows(settings.table, false), ElementsAre(count, "Menu.Theme.Dark"));
    EXPECT_EQ(modifiedRows(settings.table, false), printedKeyPaths({"diff"}));
    EXPECT_EQ(modifiedRows(settings.table, true), printedKeyPaths({"diff", "--records"}));
}

TEST(SettingsTable, OfAProfileHasAsModifiedWhatDiffPrints) {
    ASSERT_EQ(ToolSupport::run({"set", count, "7"}).exitCode, 0);
    ASSERT_EQ(ToolSupport::run({"set", enabled, "false", "--profile", "work"}).exitCode, 0);
    const Settings settings(StoreSupport::fileTree(), "work");
    EXPECT_THAT(modifiedRows(settings.table, false), ElementsAre(enabled));
    EXPECT_EQ(modifiedRows(settings.table, false), printedKeyPaths({"diff", "--profile", "work"}));
    const Settings plain(StoreSupport::fileTree());
    EXPECT_THAT(modifiedRows(plain.table, false), ElementsAre(count, enabledAtWork));
    EXPECT_EQ(modifiedRows(plain.table, false), printedKeyPaths({"diff"}));
    EXPECT_EQ(modifiedRows(plain.table, true), printedKeyPaths({"diff", "--records"}));
}
