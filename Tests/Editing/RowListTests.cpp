// SPDX-License-Identifier: MIT
// The lines of a tree or flat list of settings.
#include "Rows/RowList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Editing/RowsSupport.h"

using namespace Tool;
using RowsSupport::migrated;
using RowsSupport::Settings;
using RowsSupport::shownRows;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

/// Of a settings file whose own settings lie below "Own"; a filter leaves out the others.
class RowListTests : public testing::Test {
  protected:
    void setStored(const NSDictionary& valuesByKeyPath) {
        change = settings.table.update(snapshotOfSettings(migrated(valuesByKeyPath)));
    }
    void filter(const std::string& text) {
        list.setFilter(RowFilter(text));
        list.arrange();
    }
    bool follow() { return list.follow(change); }
    /// Each line below "Own", with a mark of levels and a step to the right for each level above.
    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> texts;
        for (const RowLine& line : list.lines()) {
            if (!line.keyPath.starts_with("Own")) continue;
            const char* const mark = line.isLevel() ? (line.isExpanded ? "- " : "+ ") : "";
            texts.push_back(std::string(2 * line.depth, ' ') + mark + line.name);
        }
        return texts;
    }

    Settings settings{nullptr};
    SettingsTable::Change change;
    RowList list{settings.table};
};

}  // namespace

TEST_F(RowListTests, ATreeIsClosedAtFirst) {
    setStored({{"Own.A", 1}, {"Own.B.C", 2}});
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("+ Own"));
    EXPECT_EQ(list.lines()[*list.lineOf("Own")].count, 2U);
    EXPECT_FALSE(list.lineOf("Own.A"));
}

TEST_F(RowListTests, LevelsOpenAndClose) {
    setStored({{"Own.A", 1}, {"Own.B.C", 2}});
    list.setExpanded("Own", true);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("- Own", "  A", "  + B"));
    list.setExpanded("Own.B", true);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("- Own", "  A", "  - B", "    C"));
    list.setExpanded("Own", false);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("+ Own"));
    list.setExpanded("Own", true);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("- Own", "  A", "  - B", "    C")) << "B stays open";
}

TEST_F(RowListTests, ALevelWithASingleLevelIsOneLineWithIt) {
    setStored({{"Own.A.B.C", 1}, {"Own.A.B.D", 2}});
    list.setAllExpanded(true);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("- Own.A.B", "  C", "  D"));
    setStored({{"Own.A.B.C", 1}, {"Own.A.B.D", 2}, {"Own.A.X", 3}});
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("- Own.A", "  - B", "    C", "    D", "  X"));
}

TEST_F(RowListTests, ARowStandsBeforeTheLevelOfItsKeyPath) {
    setStored({{"Own.A.B", 1}, {"Own.C", 1}});
    settings.table.setAdditionalKeyPaths({"Own.A"});
    list.setAllExpanded(true);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("- Own", "  A", "  - A", "    B", "  C"));
    EXPECT_FALSE(list.lines()[*list.lineOf("Own.A")].isLevel());
    EXPECT_THAT(list.keyPathsBelow(*list.lineOf("Own.A") + 1), ElementsAre("Own.A.B"));
}

TEST_F(RowListTests, AFlatListHasNoLevels) {
    setStored({{"Own.A", 1}, {"Own.B.C", 2}});
    list.setForm(RowList::Form::Flat);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("Own.A", "Own.B.C"));
    EXPECT_EQ(list.lines().size(), list.matchCount());
}

TEST_F(RowListTests, AFilterOpensTheLevelsThatAreNotClosedByHand) {
    setStored({{"Own.A.C", 1}, {"Own.B.C", 2}, {"Own.B.D", 3}});
    list.arrange();
    filter("own.");
    EXPECT_THAT(lines(), ElementsAre("- Own", "  - A", "    C", "  - B", "    C", "    D"));
    list.setExpanded("Own.B", false);
    filter("own. .c");
    EXPECT_THAT(lines(), ElementsAre("- Own", "  - A", "    C", "  + B"));
    EXPECT_EQ(list.matchCount(), 2U);
    filter("");
    EXPECT_THAT(lines(), ElementsAre("+ Own")) << "as before";
    filter("own. .c");
    EXPECT_THAT(lines(), ElementsAre("- Own", "  - A", "    C", "  - B", "    C"));
}

TEST_F(RowListTests, AllLevelsCloseAlsoUnderAFilter) {
    setStored({{"Own.A.C", 1}, {"Own.B.C", 2}});
    filter("own.");
    list.setAllExpanded(false);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("+ Own"));
}

TEST_F(RowListTests, ShowsWhatIsRevealed) {
    setStored({{"Own.A.C", 1}, {"Own.B.C", 2}});
    list.reveal("Own.B.C");
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("- Own", "  + A", "  - B", "    C"));
    EXPECT_TRUE(list.lineOf("Own.B.C"));
}

TEST_F(RowListTests, HidesRecordsUnlessSomethingAsksForThem) {
    setStored({});
    list.setForm(RowList::Form::Flat);
    list.arrange();
    EXPECT_FALSE(list.lineOf("Device.Device"));
    filter("is:record");
    EXPECT_TRUE(list.lineOf("Device.Device"));
    EXPECT_FALSE(list.lineOf("UpdateFrequency"));
    filter("device");
    EXPECT_FALSE(list.lineOf("Device.Device"));
    list.setShowsRecords(true);
    list.arrange();
    EXPECT_TRUE(list.lineOf("Device.Device"));
    list.setShowsRecords(false);
    list.arrange();
    EXPECT_FALSE(list.lineOf("Device.Device"));
}

TEST_F(RowListTests, ShowsAKnownSettingInWhichTheStoreHasLeftSomethingButNotAsModified) {
    list.setForm(RowList::Form::Flat);
    setStored({{"Combined.Menubar.Items", NSArray{}}});
    list.arrange();
    EXPECT_TRUE(list.lineOf("Combined.Menubar.Items"));
    filter("is:modified");
    EXPECT_FALSE(list.lineOf("Combined.Menubar.Items"));
    list.setShowsRecords(true);
    list.arrange();
    EXPECT_TRUE(list.lineOf("Combined.Menubar.Items"));
}

TEST_F(RowListTests, AsksForTheMarksOfRows) {
    setStored({{"Own.A", 1}, {"Own.B", 2}});
    list.setMarks(
        [](const std::string& keyPath) { return RowMarks{.isPending = keyPath == "Own.B"}; });
    filter("is:pending");
    EXPECT_THAT(shownRows(list), ElementsAre("Own.B"));
}

TEST_F(RowListTests, HasTheKeyPathsBelowALine) {
    setStored({{"Own.A", 1}, {"Own.B.C", 2}, {"Own-B", 3}});
    list.arrange();
    EXPECT_THAT(list.keyPathsBelow(*list.lineOf("Own")), ElementsAre("Own.A", "Own.B.C"));
    EXPECT_THAT(list.keyPathsBelow(*list.lineOf("Own-B")), ElementsAre("Own-B"));
    filter(".c");
    EXPECT_THAT(list.keyPathsBelow(*list.lineOf("Own.B")), ElementsAre("Own.B.C"))
        << "what the filter leaves out is not there";
}

TEST_F(RowListTests, FindsLines) {
    setStored({{"Own.A", 1}, {"Own.B.C", 2}});
    filter("own.");
    for (std::size_t line = 0; line < list.lines().size(); ++line)
        EXPECT_EQ(list.lineOf(list.lines()[line].keyPath), line);
    EXPECT_FALSE(list.lineOf("Own.B.D"));
}

TEST_F(RowListTests, ARowThatTheFilterLetsThroughNoMoreStays) {
    setStored({{"Own.A", "old"}, {"Own.B", "old"}});
    filter("own. old");
    setStored({{"Own.A", "new"}, {"Own.B", "old"}});
    EXPECT_FALSE(follow());
    EXPECT_THAT(shownRows(list), ElementsAre("Own.A", "Own.B"));
    EXPECT_EQ(list.matchCount(), 1U);
    list.setExpanded("Other", true);
    list.arrange();
    EXPECT_THAT(shownRows(list), ElementsAre("Own.A", "Own.B"));
    filter("own. old");
    EXPECT_THAT(shownRows(list), ElementsAre("Own.B"));
}

TEST_F(RowListTests, ARowThatTheFilterLetsThroughNowIsAdded) {
    setStored({{"Own.A", "old"}, {"Own.B", "new"}});
    filter("own. old");
    setStored({{"Own.A", "old"}, {"Own.B", "old"}, {"Own.C.D", "old"}});
    EXPECT_TRUE(follow());
    EXPECT_THAT(lines(), ElementsAre("- Own", "  A", "  B", "  - C", "    D"));
}

TEST_F(RowListTests, ARowThatIsGoneIsRemoved) {
    setStored({{"Own.A", 1}, {"Own.B.C", 1}});
    filter("own.");
    setStored({{"Own.A", 1}});
    EXPECT_TRUE(follow());
    EXPECT_THAT(lines(), ElementsAre("- Own", "  A"));
}

TEST_F(RowListTests, ALevelStaysALineWhenItIsLeftWithASingleLevel) {
    setStored({{"Own.A", 1}, {"Own.B.C", 1}});
    filter("own.");
    setStored({{"Own.B.C", 1}});
    EXPECT_TRUE(follow());
    EXPECT_THAT(lines(), ElementsAre("- Own", "  - B", "    C"));
    filter("own.");
    EXPECT_THAT(lines(), ElementsAre("- Own.B", "  C"));
}

TEST_F(RowListTests, ALineOfSeveralLevelsStaysInSightWhenOneOfThemGetsMore) {
    setStored({{"Own.A.B.C", 1}});
    list.setExpanded("Own.A.B", true);
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("- Own.A.B", "  C"));
    setStored({{"Own.A.B.C", 1}, {"Own.D.E", 1}});
    EXPECT_TRUE(follow());
    EXPECT_THAT(lines(), ElementsAre("- Own", "  - A.B", "    C", "  + D"));
    list.setExpanded("Own.A.B", false);
    list.arrange();
    setStored({{"Own.A.B.C", 1}, {"Own.D.E", 1}, {"Own.A.X", 1}});
    EXPECT_TRUE(follow());
    EXPECT_THAT(lines(), ElementsAre("- Own", "  - A", "    + B", "    X", "  + D"));
}

TEST_F(RowListTests, AClosedLineOfSeveralLevelsStaysInSightToo) {
    setStored({{"Own.A.B.C", 1}});
    list.arrange();
    EXPECT_THAT(lines(), ElementsAre("+ Own.A.B"));
    setStored({{"Own.A.B.C", 1}, {"Own.D.E", 1}, {"Own.A.X", 1}});
    EXPECT_TRUE(follow());
    EXPECT_THAT(lines(), ElementsAre("- Own", "  - A", "    + B", "    X", "  + D"));
}

TEST_F(RowListTests, RowsInClosedLevelsStayToo) {
    setStored({{"Own.A.B", "old"}, {"Own.C", "old"}});
    filter("own. old");
    list.setExpanded("Own.A", false);
    list.arrange();
    setStored({{"Own.A.B", "new"}, {"Own.C", "old"}});
    EXPECT_FALSE(follow());
    EXPECT_THAT(lines(), ElementsAre("- Own", "  + A", "  C"));
}

TEST_F(RowListTests, WithoutAFilterAChangedValueChangesNoLine) {
    setStored({{"Own.A", 1}, {"Own.B.C", 1}});
    list.setExpanded("Own", true);
    list.arrange();
    setStored({{"Own.A", 2}, {"Own.B.C", 1}});
    EXPECT_THAT(change.changed, ElementsAre("Own.A"));
    EXPECT_FALSE(follow());
    EXPECT_THAT(lines(), ElementsAre("- Own", "  A", "  + B"));
}

TEST_F(RowListTests, KnowsWhichChangesKeepItsLines) {
    const char* const items = "Profiles.Settings.default.Combined.Menubar.Items";
    setStored({{"Own.A", 1}, {items, NSArray{}}});
    list.setForm(RowList::Form::Flat);
    list.arrange();
    setStored({{"Own.A", 2}, {items, NSArray{}}});
    EXPECT_TRUE(list.keepsLines(change));
    SettingsTable::Change ofOthers;
    ofOthers.changed = {"Device.Device", "In.Another.Scope"};
    EXPECT_TRUE(list.keepsLines(ofOthers));
    setStored({{"Own.A", 2}, {items, NSArray{"cpu"}}});
    EXPECT_THAT(change.changed, ElementsAre(items));
    EXPECT_FALSE(list.keepsLines(change)) << "what was a record is a setting now";
    EXPECT_TRUE(follow());
    EXPECT_TRUE(list.lineOf(items));
    setStored({{"Own.A", 2}, {"Own.B", 2}});
    EXPECT_FALSE(list.keepsLines(change));
}

TEST_F(RowListTests, FollowsSeveralChangesOneAfterTheOther) {
    setStored({{"Own.B", 1}});
    list.setExpanded("Own", true);
    list.arrange();
    setStored({{"Own.A", 1}, {"Own.B", 1}});
    const SettingsTable::Change added = change;
    setStored({{"Own.A", 1}, {"Own.B", 2}});
    EXPECT_TRUE(follow()) << "the table has the row of the first change by now";
    EXPECT_FALSE(list.follow(added));
    EXPECT_THAT(lines(), ElementsAre("- Own", "  A", "  B"));
    EXPECT_EQ(settings.table.rows()[list.lines()[*list.lineOf("Own.B")].row].keyPath, "Own.B");
}

TEST_F(RowListTests, FollowsMarks) {
    std::string pending = "Own.A";
    setStored({{"Own.A", 1}, {"Own.B", 2}});
    list.setMarks([&pending](const std::string& keyPath) {
        return RowMarks{.isPending = keyPath == pending};
    });
    filter("is:pending");
    pending = "Own.B";
    EXPECT_TRUE(list.follow({}));
    EXPECT_THAT(shownRows(list), ElementsAre("Own.A", "Own.B"));
}

TEST_F(RowListTests, OfAnotherProfileKeepsNothing) {
    setStored({{"Own.A", "old"}, {"Profiles.Settings.work.Own.B", "old"}});
    filter("own. old -profiles");
    setStored({{"Own.A", "new"},
               {"Profiles.Settings.work.Own.B", "old"},
               {"Profiles.Settings.work.Own.A", "new"}});
    follow();
    EXPECT_THAT(shownRows(list), ElementsAre("Own.A"));
    settings.table.setProfile("work");
    list.arrange();
    EXPECT_THAT(shownRows(list), ElementsAre("Own.B"));
}
