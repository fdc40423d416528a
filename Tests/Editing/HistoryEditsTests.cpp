// SPDX-License-Identifier: MIT
// Edits that take back saves of the history, beside what the tool's undo does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Edits/Comparison.h"
#include "Edits/HistoryEdits.h"
#include "History/ToolHistory.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Tool/ToolSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;
using Tool::jsonText;
using Tool::PendingEdits;
using ToolSupport::run;

namespace {

NSDictionary fileTree() {
    return NSPropertyListSerialization::propertyListWithData(
               ToolSupport::contentsOf(ToolSupport::settingsFile()))
        .value.dictionary();
}

void runAll(const std::vector<std::vector<std::string>>& commands) {
    for (const auto& arguments : commands) {
        const ToolSupport::Outcome outcome = run(arguments);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    }
}

std::vector<std::string> textsOf(const std::vector<PendingEdits::Request>& requests) {
    std::vector<std::string> texts;
    for (const PendingEdits::Request& one : requests)
        texts.push_back(one.place.profile + ":" + one.place.keyPath + " " + jsonText(one.value));
    return texts;
}

std::vector<PendingEdits::Request> requestsOf(
    const std::vector<QRVHistorySave>& saves,
    QRVHistoryConflicts conflicts = QRVHistoryConflicts::LeaveOut) {
    return Tool::requestsToTakeBack(saves, Tool::snapshotOfSettings(fileTree()), conflicts);
}

std::string made(const std::vector<PendingEdits::Request>& requests) {
    PendingEdits edits;
    edits.edit(requests, fileTree(), "Take back");
    return jsonText(edits.appliedTo(fileTree()));
}

}  // namespace

TEST(HistoryEdits, TakeBackWhatTheUndoOfTheToolTakesBack) {
    runAll({{"set", "A", "1"},
            {"set", "A", "2"},
            {"set", "Level.x", "text"},
            {"set", "--profile", "travel", "B", "true"},
            {"set", "Level", "[1]"}});
    const std::vector<QRVHistorySave> saves = Tool::savesInHistory({});
    ASSERT_EQ(saves.size(), 5U);
    EXPECT_THAT(textsOf(requestsOf({saves[1]})), ElementsAre("travel:B null"));
    for (const QRVHistorySave& save : saves) {
        const std::string byEdits = made(requestsOf({save}));
        const std::string id = std::to_string(save.id);
        const ToolSupport::Outcome undo = run({"undo", id});
        if (undo.exitCode != 0) {  // The first value of A is a conflict.
            EXPECT_EQ(save.id, saves.back().id) << undo.errors;
            EXPECT_EQ(byEdits, jsonText(fileTree()));
            continue;
        }
        EXPECT_EQ(byEdits, jsonText(fileTree())) << id;
        runAll({{"undo", "--last"}});  // What was undone is there again.
    }
}

TEST(HistoryEdits, LeaveOutOrOverwriteWhatWasChangedSince) {
    runAll({{"set", "Kept", "1"}, {"set", "A", "1"}, {"set", "A", "2"}});
    const std::vector<QRVHistorySave> saves = Tool::savesInHistory({});
    EXPECT_THAT(requestsOf({saves[1]}), IsEmpty());
    EXPECT_THAT(textsOf(requestsOf({saves[1]}, QRVHistoryConflicts::Overwrite)),
                ElementsAre(":A null"));
    // Both together are no conflict.
    EXPECT_THAT(textsOf(requestsOf({saves[0], saves[1]})), ElementsAre(":A null"));
}

TEST(HistoryEdits, TakeBackNoRecordOfTheStore) {
    runAll({{"set", "A", "1"}});
    const std::vector<QRVHistorySave> saves = Tool::savesInHistory({});
    ASSERT_EQ(saves.size(), 1U);
    EXPECT_GT(saves.front().changes.size(), 1U);  // with the records of the first start
    const auto undoable = Tool::undoableSaves(saves, fileTree());
    ASSERT_EQ(undoable.size(), 1U);
    ASSERT_EQ(undoable.front().changes.size(), 1U);
    EXPECT_EQ(undoable.front().changes.front().keyPath, "A");
    EXPECT_THAT(textsOf(requestsOf(saves)), ElementsAre(":A null"));
}

TEST(HistoryEdits, TakeBackNothingThatAMigrationHasCopied) {
    ToolSupport::writeSettings(ToolSupport::propertyList(
        "<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key><false/></dict></dict>"));
    runAll({{"set", "A", "1"}});
    const std::vector<QRVHistorySave> saves = Tool::savesInHistory({});
    ASSERT_FALSE(saves.empty());
    const std::string copied = "Profiles.Settings.default.CPU.Menubar.Enabled";
    ASSERT_EQ(Tool::valueAt(fileTree(), copied), PropertyListValue(false));
    EXPECT_THAT(textsOf(requestsOf({saves.front()})), ElementsAre(":A null"));
}

TEST(HistoryEdits, OfTheSavesSinceAMomentLeadToTheTreeOfThatMoment) {
    runAll({{"set", "A", "1"}, {"set", "L.x", "1"}, {"set", "L.y", "2"}});
    const std::string then = jsonText(fileTree());
    const std::size_t count = Tool::savesInHistory({}).size();
    runAll({{"set", "A", "2"}, {"unset", "L.x", "L.y"}, {"set", "L", "5"}, {"set", "N", "1"}});
    std::vector<QRVHistorySave> since = Tool::savesInHistory({});
    since.resize(since.size() - count);
    EXPECT_EQ(made(requestsOf(since)), then);
    EXPECT_EQ(jsonText(Tool::treeBefore(since, fileTree())), then);
}
