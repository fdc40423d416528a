// SPDX-License-Identifier: MIT
// Two sides of settings: the defaults, another profile, another tree, and a moment of the past.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Edits/Comparison.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Tool/ToolSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;
using Tool::ComparedSetting;
using Tool::jsonText;
using Tool::PendingEdits;

namespace {

std::vector<std::string> textsOf(const std::vector<ComparedSetting>& settings) {
    std::vector<std::string> texts;
    for (const ComparedSetting& one : settings) {
        const std::string sign = one.sign == ComparedSetting::Sign::OnlyHere    ? " here "
                                 : one.sign == ComparedSetting::Sign::OnlyThere ? " there "
                                                                                : " differs ";
        texts.push_back(one.keyPath + sign + jsonText(one.here) + " " + jsonText(one.there));
    }
    return texts;
}

/// As `diff` prints them.
std::string linesOf(const std::vector<ComparedSetting>& settings) {
    std::vector<Tool::Difference> differences;
    for (const ComparedSetting& one : settings)
        differences.push_back({one.keyPath, one.there, one.here});
    return Tool::differenceLines(differences);
}

NSDictionary storedTree() {
    return {
        {"CPU", NSDictionary{{"Menubar", NSDictionary{{"Enabled", "yes"}}}}},
        {"Own", NSDictionary{{"a", 1}, {"b.c", 2}}},
        {"Device", NSDictionary{{"Device", "machine"}}},
        {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}},
        {"Profiles",
         NSDictionary{{"Available", NSDictionary{{"identifier", "default"}}},
                      {"Settings",
                       NSDictionary{{"home", NSDictionary{{"A", 1}, {"B", 2}, {"C", 1}}},
                                    {"away", NSDictionary{{"B", 2.0}, {"C", 1}, {"D", true}}}}}}}};
}

/// What requests make of a tree.
std::string made(const std::vector<PendingEdits::Request>& requests, const NSDictionary& stored) {
    PendingEdits edits;
    edits.edit(requests, stored, "Take");
    return jsonText(edits.appliedTo(stored));
}

QRVHistorySave saveOf(double order, std::vector<QRVHistoryChange> changes) {
    QRVHistorySave save;
    save.order = order;
    save.changes = std::move(changes);
    return save;
}

}  // namespace

TEST(Comparison, WithTheDefaultsIsThatOfDiff) {
    const NSDictionary stored = storedTree();
    ToolSupport::writeSettings(NSPropertyListSerialization::dataWithPropertyList(stored).bytes);
    const Tool::SettingsSnapshot snapshot = Tool::snapshotOfSettings(stored);
    const std::string ofApplication = ToolSupport::run({"diff"}).output;
    EXPECT_THAT(ofApplication, testing::HasSubstr("CPU.Menubar.Enabled"));
    std::istringstream lines(ofApplication);
    std::string ofKeyPaths;  // The tool also prints what no key path reaches.
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with("Own.b.c")) ofKeyPaths += line + "\n";
    EXPECT_EQ(linesOf(Tool::comparedWithDefaults(snapshot, "")), ofKeyPaths);
    EXPECT_EQ(linesOf(Tool::comparedWithDefaults(snapshot, "home")),
              ToolSupport::run({"diff", "--profile", "home"}).output);
}

TEST(Comparison, WithAnotherProfileComparesWhatIsStoredInBoth) {
    Tool::SettingsSnapshot snapshot;
    snapshot.stored = storedTree();
    EXPECT_THAT(textsOf(Tool::comparedWithProfile(snapshot, "home", "away")),
                ElementsAre("A here 1 null", "B differs 2 2.0", "D there null true"));
    // The application's scope without records and profiles.
    EXPECT_THAT(textsOf(Tool::comparedWithProfile(snapshot, "", "missing")),
                ElementsAre(R"(CPU.Menubar.Enabled here "yes" null)", "Own.a here 1 null"));
    EXPECT_THAT(Tool::comparedWithProfile(snapshot, "", ""), IsEmpty());
}

TEST(Comparison, OfTwoTreesLeavesOutRecordsAndWhatNoKeyPathReaches) {
    EXPECT_THAT(textsOf(Tool::comparedWithTree(
                    storedTree(),
                    {{"Own", NSDictionary{{"a", "1"}, {"b.c", 3}}},
                     {"Profiles", NSDictionary{{"Settings", storedTree()
                                                                .objectForKey("Profiles")
                                                                .dictionary()
                                                                .objectForKey("Settings")}}}})),
                ElementsAre(R"(CPU.Menubar.Enabled here "yes" null)", R"(Own.a differs 1 "1")"));
}

TEST(Comparison, GivesTheEditsThatMakeThisSideAsTheOther) {
    Tool::SettingsSnapshot snapshot;
    snapshot.stored = storedTree();
    snapshot.defaults = {{"D", true}};
    const auto requests =
        Tool::requestsToTake(Tool::comparedWithProfile(snapshot, "home", "away"), "home", snapshot);
    PendingEdits edits;
    edits.edit(requests, snapshot.stored, "Take");
    Tool::SettingsSnapshot after = snapshot;
    after.stored = edits.appliedTo(snapshot.stored);
    // What equals the default is not stored.
    EXPECT_THAT(textsOf(Tool::comparedWithProfile(after, "home", "away")),
                ElementsAre("D there null true"));
}

TEST(Comparison, TakesAValueThatReplacesADictionaryAndTheOtherWayAround) {
    const Tool::SettingsSnapshot snapshot;
    const NSDictionary one{{"A", 1}, {"B", NSDictionary{{"x", 1}, {"y", 2}}}};
    const NSDictionary other{{"A", NSDictionary{{"x", 1}}}, {"B", 2}, {"C", NSDictionary{}}};
    for (const auto& [here, there] : {std::pair(one, other), std::pair(other, one)})
        EXPECT_EQ(
            made(Tool::requestsToTake(Tool::comparedWithTree(here, there), "", snapshot), here),
            jsonText(there));
}

TEST(Comparison, GoesBackToTheTreeBeforeSaves) {
    const NSDictionary first{{"A", 1}, {"Kept", NSDictionary{{"x", 1}}}};
    const NSDictionary last{
        {"A", NSDictionary{{"B", 2}}}, {"Kept", NSDictionary{{"x", 1}}}, {"N", 1}};
    const std::vector<QRVHistorySave> saves = {
        saveOf(1, {{"A", 1, 5}, {"N", nullptr, 7}}), saveOf(3, {{"N", 7, 1}}),
        saveOf(2, {{"A", 5, nullptr}, {"A.B", nullptr, 2}, {"Gone.x", nullptr, 1}}),
        saveOf(4, {{"Gone.x", 1, nullptr}})};
    EXPECT_EQ(jsonText(Tool::treeBefore(saves, last)), jsonText(first));
    EXPECT_EQ(jsonText(Tool::treeBefore({saves[1], saves[3]}, last)),
              R"({"A":{"B":2},"Gone":{"x":1},"Kept":{"x":1},"N":7})");
    EXPECT_EQ(jsonText(Tool::treeBefore({}, last)), jsonText(last));
    EXPECT_EQ(jsonText(Tool::treeBefore(saves, nullptr)), R"({"A":1})");
}
