// SPDX-License-Identifier: MIT
// Edits that are pending: steps, undo and redo, conflicts, and what becomes of a tree.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Edits/PendingEdits.h"
#include "Text/JSON.h"

using testing::ElementsAre;
using testing::IsEmpty;
using Tool::jsonText;
using Tool::PendingEdit;
using Tool::PendingEdits;
using Tool::SettingPlace;

namespace {

SettingPlace placeOf(const std::string& keyPath, const std::string& profile = "") {
    return {keyPath, profile};
}

/// A file and the edits of it.
struct Editing {
    NSDictionary stored;
    PendingEdits edits;

    bool edit(const std::string& keyPath, const PropertyListValue& value,
              bool isContinued = false) {
        return edits.edit({{placeOf(keyPath), value, nullptr}}, stored, "Edit " + keyPath,
                          isContinued);
    }
    [[nodiscard]] std::string tree() const { return jsonText(edits.appliedTo(stored)); }
    [[nodiscard]] std::vector<PendingEdit> all() const {
        std::vector<PendingEdit> all;
        for (const auto& [place, edit] : edits.edits()) all.push_back(edit);
        return all;
    }
    void apply(const std::string& name = "Apply") {
        const std::vector<PendingEdit> applied = all();
        stored = edits.appliedTo(stored);
        edits.applied(applied, name);
    }
    [[nodiscard]] std::vector<std::string> conflicts() const {
        std::vector<std::string> texts;
        for (const Tool::EditConflict& one : edits.conflicts(stored))
            texts.push_back(one.edit.place.storedKeyPath() + " " + jsonText(one.edit.base) + " " +
                            jsonText(one.edit.value) + " " + jsonText(one.theirs));
        return texts;
    }
};

Editing editingOf(const NSDictionary& stored) {
    return {stored, {}};
}

}  // namespace

TEST(PendingEdits, OfAProfileLieInTheTreeOfTheProfile) {
    EXPECT_EQ(placeOf("A.B").storedKeyPath(), "A.B");
    EXPECT_EQ(placeOf("A.B", "travel").storedKeyPath(), "Profiles.Settings.travel.A.B");
    Editing one = editingOf(nullptr);
    EXPECT_TRUE(one.edits.edit({{placeOf("A", "travel"), 1, nullptr}}, one.stored, "Edit"));
    EXPECT_EQ(one.tree(), R"({"Profiles":{"Settings":{"travel":{"A":1}}}})");
    // The same setting by its other name.
    EXPECT_TRUE(one.edit("Profiles.Settings.travel.A", 2));
    EXPECT_EQ(one.edits.edits().size(), 1U);
    EXPECT_EQ(one.edits.at(placeOf("A", "travel"))->value, PropertyListValue(2));
}

TEST(PendingEdits, AreBasedOnWhatThePersonSawWhoBeganToType) {
    Editing one = editingOf({{"A", 2}, {"B", 2}, {"C", 2}});
    const auto typed = [&one](const std::string& keyPath, int value) {
        return one.edits.edit({{placeOf(keyPath), value, nullptr, 1}}, one.stored, "Edit");
    };
    EXPECT_TRUE(typed("A", 3));
    EXPECT_THAT(one.conflicts(), ElementsAre("A 1 3 2"));
    EXPECT_FALSE(typed("B", 2)) << "the file holds it already";
    EXPECT_TRUE(typed("C", 1)) << "what was seen is wanted again";
    EXPECT_THAT(one.conflicts(), ElementsAre("A 1 3 2"));
    EXPECT_TRUE(typed("A", 4)) << "the first edit has said what it is based on";
    EXPECT_THAT(one.conflicts(), ElementsAre("A 1 4 2"));
    one.edits.undo();
    one.edits.undo();
    one.edits.undo();
    EXPECT_TRUE(one.edits.edits().empty());
}

TEST(PendingEdits, ThatAreUndoneOnTheirWayToTheFileCanBeUndoneThere) {
    Editing one = editingOf({{"A", 1}});
    EXPECT_TRUE(one.edit("A", 2));
    const std::vector<PendingEdit> underWay = one.all();
    one.edits.undo();
    EXPECT_TRUE(one.edits.edits().empty());
    one.stored = {{"A", 2}};
    one.edits.applied(underWay, "Apply");
    EXPECT_TRUE(one.edits.edits().empty());
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":1})");
    EXPECT_THAT(one.conflicts(), IsEmpty());
}

TEST(PendingEdits, AreOneStepForEachActionAndNoneForNothing) {
    Editing one = editingOf({{"A", 1}, {"B", 2}});
    EXPECT_FALSE(one.edit("A", 1));
    EXPECT_FALSE(one.edit("C", nullptr));
    EXPECT_FALSE(one.edits.canUndo());
    EXPECT_TRUE(one.edits.edit({{placeOf("A"), 5, nullptr}, {placeOf("B"), nullptr, nullptr}},
                               one.stored, "Edit two"));
    EXPECT_EQ(one.edits.undoCount(), 1U);
    EXPECT_EQ(one.edits.undoName(), "Edit two");
    EXPECT_EQ(one.edits.redoName(), "");
    EXPECT_EQ(one.tree(), R"({"A":5})");
    EXPECT_THAT(one.edits.undo(), testing::UnorderedElementsAre(placeOf("A"), placeOf("B")));
    EXPECT_EQ(one.tree(), R"({"A":1,"B":2})");
    EXPECT_THAT(one.all(), IsEmpty());
    EXPECT_EQ(one.edits.redoName(), "Edit two");
    one.edits.redo();
    EXPECT_EQ(one.tree(), R"({"A":5})");
    EXPECT_THAT(one.edits.redo(), IsEmpty());
}

TEST(PendingEdits, CompareValuesWithTheirKind) {
    Editing one = editingOf({{"A", 1}});
    EXPECT_TRUE(one.edit("A", 1.0));
    EXPECT_EQ(one.tree(), R"({"A":1.0})");
    EXPECT_TRUE(one.edit("A", 1));
    EXPECT_THAT(one.all(), IsEmpty());
    EXPECT_TRUE(one.edit("A", "1"));
    EXPECT_TRUE(one.edit("A", true));
    EXPECT_EQ(one.edits.undoCount(), 4U);
}

TEST(PendingEdits, ThatEqualTheDefaultStoreNothing) {
    Editing one = editingOf({{"A", NSDictionary{{"B", 1}}}});
    EXPECT_TRUE(one.edits.edit({{placeOf("A.B"), 7, 7}}, one.stored, "Edit"));
    EXPECT_TRUE(one.edits.at(placeOf("A.B"))->value.isNull());
    EXPECT_EQ(one.tree(), "{}");
    EXPECT_TRUE(one.edits.edit({{placeOf("A.B"), 7.0, 7}}, one.stored, "Edit"));
    EXPECT_EQ(one.tree(), R"({"A":{"B":7.0}})");
}

TEST(PendingEdits, HoldDatesAsAFileDoes) {
    Editing one = editingOf({{"A", NSDate(5)}});
    EXPECT_FALSE(one.edit("A", NSDate(5.25)));
    EXPECT_TRUE(one.edit("A", NSDate(6.25)));
    EXPECT_EQ(one.edits.at(placeOf("A"))->value, PropertyListValue(NSDate(6)));
}

TEST(PendingEdits, OfADragAreOneStep) {
    Editing one = editingOf({{"A", 1}});
    one.edit("B", 1);
    for (int value = 2; value < 50; ++value) one.edit("A", value, value > 2);
    EXPECT_EQ(one.edits.undoCount(), 2U);
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":1,"B":1})");
    one.edits.redo();
    EXPECT_EQ(one.tree(), R"({"A":49,"B":1})");
    // After undo or redo, and for another setting, it is a new step.
    one.edit("A", 50, true);
    one.edit("B", 2, true);
    EXPECT_EQ(one.edits.undoCount(), 4U);
}

TEST(PendingEdits, OfADragThatEndsWhereItBeganAreNoStep) {
    Editing one = editingOf({{"A", 1}});
    one.edit("A", 10);
    one.edit("A", 11, false);
    one.edit("A", 12, true);
    one.edit("A", 10, true);
    EXPECT_EQ(one.edits.undoCount(), 1U);
    // The drag goes on, and does not become a part of the step before it.
    one.edit("A", 13, true);
    EXPECT_EQ(one.edits.undoCount(), 2U);
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":10})");
    // Its first move has changed nothing.
    one.edit("A", 10);
    one.edit("A", 14, true);
    EXPECT_EQ(one.edits.undoCount(), 2U);
}

TEST(PendingEdits, AreDiscardedInOneStep) {
    Editing one = editingOf(nullptr);
    for (const char* name : {"A", "B", "C"}) one.edit(name, 1);
    EXPECT_FALSE(one.edits.discard({placeOf("D")}, "Discard"));
    EXPECT_TRUE(one.edits.discard({placeOf("B")}, "Discard"));
    EXPECT_EQ(one.tree(), R"({"A":1,"C":1})");
    EXPECT_TRUE(one.edits.discard({}, "Discard all"));
    EXPECT_EQ(one.tree(), "{}");
    EXPECT_EQ(one.edits.undoName(), "Discard all");
    one.edits.undo();
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":1,"B":1,"C":1})");
}

TEST(PendingEdits, AboveOthersReplaceThem) {
    Editing one = editingOf({{"A", NSDictionary{{"B", 1}, {"C", 2}}}});
    one.edit("A.B", 5);
    one.edit("A", "text");
    EXPECT_EQ(one.edits.edits().size(), 1U);
    EXPECT_EQ(one.tree(), R"({"A":"text"})");
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":{"B":5,"C":2}})");
    EXPECT_EQ(one.all().front().place, placeOf("A.B"));
}

TEST(PendingEdits, BelowAnotherBecomeAPartOfIt) {
    Editing one = editingOf({{"A", 5}});
    // At once, in whichever order: a dictionary replaces a value, and a value a dictionary.
    EXPECT_TRUE(one.edits.edit({{placeOf("A.B"), 1, nullptr}, {placeOf("A"), nullptr, nullptr}},
                               one.stored, "Edit"));
    EXPECT_EQ(one.tree(), R"({"A":{"B":1}})");
    EXPECT_THAT(one.conflicts(), IsEmpty());
    EXPECT_TRUE(one.edits.edit({{placeOf("A"), 6, nullptr}, {placeOf("A.B"), nullptr, nullptr}},
                               one.stored, "Edit"));
    EXPECT_EQ(one.tree(), R"({"A":6})");
    one.edit("A.B.C", 1);
    one.edit("A.D", 2);
    EXPECT_EQ(one.edits.edits().size(), 1U);
    EXPECT_EQ(one.tree(), R"({"A":{"B":{"C":1},"D":2}})");
    one.edit("A.B.C", nullptr);
    EXPECT_EQ(one.tree(), R"({"A":{"D":2}})");
    one.edit("A.D", nullptr);
    EXPECT_EQ(one.tree(), "{}");
    EXPECT_FALSE(one.edit("A.X", nullptr));
}

TEST(PendingEdits, LeaveNoEmptyLevelsAboveWhatTheyRemove) {
    Editing one = editingOf({{"A", NSDictionary{{"B", NSDictionary{{"C", 1}}}}},
                             {"E", NSDictionary{}},
                             {"F", NSDictionary{{"G", NSDictionary{}}}}});
    one.edit("A.B.C", nullptr);
    EXPECT_EQ(one.tree(), R"({"E":{},"F":{"G":{}}})");
    one.edit("F.G", nullptr);
    EXPECT_EQ(one.tree(), R"({"E":{}})");
    // What is not set is not removed.
    EXPECT_FALSE(one.edit("E.X", nullptr));
    one.edit("E.X", 1);
    EXPECT_EQ(one.tree(), R"({"E":{"X":1}})");
}

TEST(PendingEdits, BehindAStoredValueAreLeftOut) {
    Editing one = editingOf({{"A", 5}, {"B", 1}});
    EXPECT_FALSE(one.edit("A.X", 1));
    one.edit("C.X", 1);
    one.edit("D", 1);
    // Another process puts a value in its way.
    one.stored = {{"B", 2}, {"C", 5}};
    EXPECT_EQ(one.tree(), R"({"B":2,"C":5,"D":1})");
}

TEST(PendingEdits, DoNotChangeTheTreeTheyAreMadeIn) {
    const NSMutableDictionary below{{"B", 1}};
    const NSMutableDictionary stored{{"A", below}};
    Editing one{stored, {}};
    one.edit("A.B", 2);
    const NSDictionary tree = one.edits.appliedTo(stored);
    EXPECT_EQ(jsonText(stored), R"({"A":{"B":1}})");
    below.setObjectForKey(3, "B");
    EXPECT_EQ(jsonText(tree), R"({"A":{"B":2}})");
}

TEST(PendingEdits, AreConflictsWhereAnotherProcessHasChangedTheSetting) {
    Editing one = editingOf({{"A", 1}, {"B", 1}, {"C", 1}});
    one.edit("A", 2);
    one.edit("B", 2);
    one.edit("C", 2);
    EXPECT_THAT(one.conflicts(), IsEmpty());
    one.stored = {{"A", 7}, {"B", 2}, {"C", 1}};
    // B is what the edit wants already.
    EXPECT_THAT(one.conflicts(), ElementsAre("A 1 2 7"));
    one.stored = {{"A", 1.0}, {"B", 1}};
    EXPECT_THAT(one.conflicts(), ElementsAre("A 1 2 1.0", "C 1 2 null"));
}

TEST(PendingEdits, AreSettledOneWayOrTheOtherAndBothCanBeUndone) {
    Editing one = editingOf({{"A", 1}, {"B", 1}});
    one.edit("A", 2);
    one.edit("B", 2);
    one.stored = {{"A", 7}, {"B", 7}};
    one.edits.keepMine(placeOf("A"), one.stored, "Keep mine");
    EXPECT_EQ(one.edits.undoName(), "Keep mine");
    one.edits.takeTheirs(placeOf("B"), "Take theirs");
    EXPECT_THAT(one.conflicts(), IsEmpty());
    EXPECT_EQ(one.tree(), R"({"A":2,"B":7})");
    one.edits.undo();
    EXPECT_THAT(one.conflicts(), ElementsAre("B 1 2 7"));
    one.edits.undo();
    EXPECT_THAT(one.conflicts(), ElementsAre("A 1 2 7", "B 1 2 7"));
    // Without their edits the settings are what the other process has made of them.
    one.edits.undo();
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":7,"B":7})");
    for (int step = 0; step < 4; ++step) one.edits.redo();
    EXPECT_THAT(one.conflicts(), IsEmpty());
    EXPECT_EQ(one.tree(), R"({"A":2,"B":7})");
    one.apply();
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":7,"B":7})");
}

TEST(PendingEdits, ThatWantTheValueOfBeforeStandOnWhatIsThereNow) {
    Editing one = editingOf({{"A", 1}});
    one.edit("A", 2);
    one.stored = {{"A", 7}};
    one.edit("A", 1);
    EXPECT_THAT(one.conflicts(), IsEmpty());
    EXPECT_EQ(one.tree(), R"({"A":1})");
    one.edits.undo();
    EXPECT_THAT(one.conflicts(), ElementsAre("A 1 2 7"));
}

TEST(PendingEdits, ThatWereAppliedAreUndoneByEditsThatLeadBack) {
    Editing one = editingOf({{"A", 1}});
    one.edit("A", 2);
    one.edit("A", 3);
    one.edit("B", true);
    one.apply("Apply 2");
    EXPECT_THAT(one.all(), IsEmpty());
    EXPECT_EQ(one.edits.undoCount(), 1U);
    EXPECT_EQ(one.edits.undoName(), "Apply 2");
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":1})");
    EXPECT_EQ(jsonText(one.stored), R"({"A":3,"B":true})");
    EXPECT_EQ(one.all().size(), 2U);
    EXPECT_THAT(one.conflicts(), IsEmpty());
    one.edits.redo();
    EXPECT_THAT(one.all(), IsEmpty());
    one.edits.undo();
    one.apply("Apply the undo");
    EXPECT_FALSE(one.edits.canUndo());
    EXPECT_EQ(jsonText(one.stored), R"({"A":1})");
    one.edits.redo();
    EXPECT_EQ(one.tree(), R"({"A":3,"B":true})");
    EXPECT_THAT(one.conflicts(), IsEmpty());
}

TEST(PendingEdits, ThatLeadBackAreConflictsWhereAnotherProcessHasChangedTheSettingSince) {
    Editing one = editingOf({{"A", 1}});
    one.edit("A", 2);
    one.apply();
    one.stored = {{"A", 7}};
    one.edits.undo();
    EXPECT_THAT(one.conflicts(), ElementsAre("A 2 1 7"));
    one.edits.redo();
    EXPECT_THAT(one.all(), IsEmpty());
    EXPECT_EQ(one.tree(), R"({"A":7})");
}

TEST(PendingEdits, ThatWereAppliedInPartLeaveTheStepsOfTheOthers) {
    Editing one = editingOf(nullptr);
    one.edit("A", 1);
    one.edit("B", 1);
    one.edit("A", 2);
    const PendingEdit applied = *one.edits.at(placeOf("A"));
    one.stored = {{"A", 2}};
    one.edits.applied({applied}, "Apply A");
    EXPECT_EQ(one.tree(), R"({"A":2,"B":1})");
    EXPECT_EQ(one.edits.undoCount(), 2U);
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"B":1})");
    one.edits.undo();
    EXPECT_EQ(one.tree(), "{}");
}

TEST(PendingEdits, ThatWereEditedAgainWhileTheyWereAppliedStayPending) {
    Editing one = editingOf({{"A", 1}});
    one.edit("A", 2);
    const std::vector<PendingEdit> underWay = one.all();
    one.edit("A", 3);
    one.stored = {{"A", 2}};
    one.edits.applied(underWay, "Apply");
    EXPECT_THAT(one.conflicts(), IsEmpty());
    EXPECT_EQ(one.tree(), R"({"A":3})");
    EXPECT_EQ(one.edits.undoName(), "Edit A");
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":2})");
    EXPECT_EQ(one.edits.undoName(), "Apply");
    one.edits.undo();
    EXPECT_EQ(one.tree(), R"({"A":1})");
    one.edits.redo();
    one.edits.redo();
    EXPECT_EQ(one.tree(), R"({"A":3})");
}

TEST(PendingEdits, ForgetTheOldestStepsOfVeryMany) {
    Editing one = editingOf(nullptr);
    const auto editAll = [&one](int value) {
        std::vector<PendingEdits::Request> requests;
        for (int index = 0; index < 50'000; ++index)
            requests.push_back({placeOf("K" + std::to_string(index)), value, nullptr});
        one.edits.edit(requests, one.stored, "Edit all");
    };
    for (int value = 0; value < 6; ++value) editAll(value);
    EXPECT_EQ(one.edits.undoCount(), 4U);
    while (one.edits.canUndo()) one.edits.undo();
    EXPECT_EQ(one.edits.at(placeOf("K7"))->value, PropertyListValue(1));
}
