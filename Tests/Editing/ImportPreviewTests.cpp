// SPDX-License-Identifier: MIT
// What an import would change, beside what the tool's import changes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Edits/Comparison.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/Records.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Tool/ToolSupport.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Tool::ImportPreview;
using Tool::jsonText;
using Tool::PendingEdits;

namespace {

const NSDictionary& records() {
    static const auto& records = *new NSDictionary{
        {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}},
        {"Profiles", NSDictionary{{"Available", NSDictionary{{"identifier", "default"}}}}}};
    return records;
}

NSDictionary withRecords(const NSDictionary& tree) {
    const NSMutableDictionary all = records().mutableCopy();
    all.addEntriesFromDictionary(tree);
    return all.copy();
}

ImportPreview preview(const std::string& bytes, const NSDictionary& stored = nullptr) {
    return Tool::previewOfImport(bytes, "the file", Tool::snapshotOfSettings(stored));
}

std::string refusal(const std::string& bytes, const NSDictionary& stored = nullptr) {
    try {
        preview(bytes, stored);
    } catch (const Tool::Failure& failure) {
        return failure.what();
    }
    return "taken";
}

std::string bytesOf(const NSDictionary& tree) {
    return NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
}

/// What the tool's import makes of the stored settings and what the edits of a preview make of
/// them, without the records of the store.
void expectAsTheToolDoes(const NSDictionary& stored, const std::string& bytes) {
    const ImportPreview previewed = preview(bytes, stored);
    PendingEdits edits;
    edits.edit(previewed.requests, stored, "Import");
    const NSDictionary byEdits = edits.appliedTo(stored);

    ToolSupport::writeSettings(bytesOf(stored));
    ToolSupport::writeFile("imported", bytes);
    const ToolSupport::Outcome outcome = ToolSupport::run({"import", "--portable", "imported"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    const NSDictionary byTool = NSPropertyListSerialization::propertyListWithData(
                                    ToolSupport::contentsOf(ToolSupport::settingsFile()))
                                    .value.dictionary();
    for (const Tool::Difference& one : Tool::differencesBetween(byTool, byEdits))
        EXPECT_TRUE(!one.isReached || Tool::isOfStoreAlone(one.keyPath, one.oldValue, one.newValue))
            << one.keyPath << " " << jsonText(one.oldValue) << " " << jsonText(one.newValue);
}

}  // namespace

TEST(ImportPreview, ChangesWhatTheImportOfTheToolChanges) {
    const NSDictionary stored = withRecords(
        {{"A", 1},
         {"B", NSDictionary{{"x", 1}, {"y", "text"}}},
         {"C", NSDictionary{{"z", true}}},
         {"Device", NSDictionary{{"Device", "another machine"}}},
         {"Network",
          NSDictionary{
              {"Menubar", NSDictionary{{"Global", NSDictionary{{"PrimaryInterface", "eth0"}}}}}}}});
    expectAsTheToolDoes(stored, bytesOf(withRecords({{"A", 1.0},
                                                     {"B", NSDictionary{{"x", 1}}},
                                                     {"C", 5},
                                                     {"D", NSDictionary{{"E", NSArray{1}}}}})));
    expectAsTheToolDoes(stored, R"({"A":{"B":1},"B.x":1,"C":{}})");
    expectAsTheToolDoes(nullptr, R"({"A":{"B":1},"Date":{"$date":"2020-01-01T00:00:00.5Z"}})");
    // Of an earlier version: the import migrates.
    expectAsTheToolDoes(
        withRecords({{"A", 1}}),
        R"({"CPU.Menubar.Mode.HistoryGraph.Width":61,"CPU.Menubar.Enabled":false})");
}

TEST(ImportPreview, OfWhatIsStoredAlreadyIsEmpty) {
    const NSDictionary stored = withRecords({{"A", 1}, {"B", NSDictionary{{"x", NSDate(5)}}}});
    const ImportPreview same = preview(bytesOf(stored), stored);
    EXPECT_THAT(same.requests, IsEmpty());
    EXPECT_THAT(same.remarks, IsEmpty());
}

TEST(ImportPreview, KeepsWhatBelongsToThisMachine) {
    const NSDictionary stored =
        withRecords({{"Sensors", NSDictionary{{"Global", NSDictionary{{"Fans", NSArray{1}}}}}}});
    const ImportPreview kept = preview(
        bytesOf(withRecords(
            {{"Sensors", NSDictionary{{"Global", NSDictionary{{"Fans", NSArray{7}}}}}}, {"A", 1}})),
        stored);
    ASSERT_EQ(kept.requests.size(), 1U);
    EXPECT_EQ(kept.requests.front().place.keyPath, "A");
}

TEST(ImportPreview, MakesEditsOfProfilesAndNoneOfDefaults) {
    const Tool::SettingsSnapshot snapshot = Tool::snapshotOfSettings(records());
    const PropertyListValue byDefault =
        Tool::valueAt(snapshot.defaults, "CPU.Menubar.Mode.HistoryGraph.Width");
    ASSERT_TRUE(byDefault.isInteger());
    const std::string bytes = R"({"CPU.Menubar.Mode.HistoryGraph.Width":)" + jsonText(byDefault) +
                              R"(,"Profiles.Settings.travel.A":1,"Migration.Profiles":true,)" +
                              R"("Migration.CombinedPowerItems":true,)" +
                              R"("Profiles.Available.identifier":"default"})";
    const ImportPreview result = Tool::previewOfImport(bytes, "the file", snapshot);
    ASSERT_EQ(result.requests.size(), 1U);
    EXPECT_EQ(result.requests.front().place, (Tool::SettingPlace{"A", "travel"}));
}

TEST(ImportPreview, RemarksWhatIsUnusual) {
    const ImportPreview result = preview(
        R"({"CPU.Menubar.Enabledd":true,"Text":"\u0001","Date":{"$date":"2020-01-01T00:00:00.5Z"},)"
        R"("Level":{"a.b":1}})");
    EXPECT_THAT(result.remarks,
                Contains(HasSubstr("left out, as no key path reaches this key: Level.a.b")));
    EXPECT_THAT(result.remarks, Contains(HasSubstr("of an earlier version")));
    EXPECT_THAT(result.remarks, Contains(HasSubstr("did you mean CPU.Menubar.Enabled?")));
    EXPECT_THAT(result.remarks, Contains(HasSubstr("strict XML readers refuse")));
    EXPECT_THAT(result.remarks, Contains("fractions of seconds are not kept, the file"));
}

TEST(ImportPreview, RefusesWhatIsNoSettings) {
    EXPECT_EQ(refusal(""), "cannot be imported: empty, the file");
    EXPECT_THAT(refusal("[1]"), StartsWith("cannot be imported: the root is an array"));
    EXPECT_THAT(refusal("{\"A\":}"), HasSubstr("line 1, column 6"));
    EXPECT_THAT(refusal(bytesOf({{"a.b", 1}})),
                HasSubstr("reaches it: a.b; qrvsettings import --keep-dotted-keys takes it"));
}

TEST(ImportPreview, LeavesTheStoreAsTheSnapshotDoes) {
    const NSDictionary stored = withRecords({{"A", 1}});
    const Tool::SettingsSnapshot before = Tool::snapshotOfSettings(stored);
    static_cast<void>(Tool::previewOfImport(R"({"A":2})", "the file", before));
    EXPECT_EQ(jsonText(QRVSettingsStoredValues()), jsonText(before.prepared));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), PropertyListValue(1));
}
