// SPDX-License-Identifier: MIT
// What takes back saves, and what stands in the way.

#include "HistorySupport.h"

using namespace HistorySupport;

namespace {

QRVHistorySave saveOf(double order, std::vector<QRVHistoryChange> changes) {
    QRVHistorySave save;
    save.order = order;
    save.changes = std::move(changes);
    return save;
}

/// `key path=value` for each write, in order.
Lines writesOf(const QRVHistoryInverse& inverse) {
    Lines result;
    for (const QRVHistoryWrite& write : inverse.writes)
        result.push_back(write.keyPath + "=" + textOf(write.value));
    return result;
}

Lines conflictsOf(const QRVHistoryInverse& inverse) {
    Lines result;
    for (const QRVHistoryConflict& conflict : inverse.conflicts)
        result.push_back(conflict.keyPath + ": " + textOf(conflict.expected) + ", " +
                         textOf(conflict.now) + " > " + textOf(conflict.value));
    return result;
}

}  // namespace

TEST(Inverse, HasTheValuesOfBefore) {
    const auto inverse =
        QRVHistoryInverseOf({saveOf(1, {{"A", 1, 2}, {"B", nullptr, 5}, {"C", 7, nullptr}})},
                            NSDictionary{{"A", 2}, {"B", 5}});
    EXPECT_EQ(writesOf(inverse), (Lines{"B=none", "A=1", "C=7"}));
    EXPECT_EQ(conflictsOf(inverse), Lines{});
}

TEST(Inverse, OfSeveralSavesGoesBackToTheOldest) {
    const QRVHistorySave first = saveOf(1, {{"A", 1, 2}});
    const QRVHistorySave second = saveOf(2, {{"A", 2, 3}});
    const NSDictionary stored{{"A", 3}};
    EXPECT_EQ(writesOf(QRVHistoryInverseOf({first, second}, stored)), Lines{"A=1"});
    EXPECT_EQ(writesOf(QRVHistoryInverseOf({second, first}, stored)), Lines{"A=1"});
}

TEST(Inverse, LeavesOutWhatSomebodyHasChangedSince) {
    const std::vector<QRVHistorySave> saves{saveOf(1, {{"A", 1, 2}, {"B", 1, 2}})};
    const NSDictionary stored{{"A", 9}, {"B", 2}};
    const auto inverse = QRVHistoryInverseOf(saves, stored);
    EXPECT_EQ(writesOf(inverse), Lines{"B=1"});
    EXPECT_EQ(conflictsOf(inverse), Lines{"A: 2, 9 > 1"});
    const auto forced = QRVHistoryInverseOf(saves, stored, QRVHistoryConflicts::Overwrite);
    EXPECT_EQ(writesOf(forced), (Lines{"A=1", "B=1"}));
    EXPECT_EQ(conflictsOf(forced), conflictsOf(inverse));
}

TEST(Inverse, OfSavesWithAnotherChangeBetweenThemIsAConflict) {
    const auto inverse = QRVHistoryInverseOf({saveOf(1, {{"A", 1, 2}}), saveOf(3, {{"A", 3, 4}})},
                                             NSDictionary{{"A", 4}});
    EXPECT_EQ(conflictsOf(inverse), Lines{"A: 4, 4 > 1"});
}

TEST(Inverse, HasNoWriteWhereEverythingIsAsBefore) {
    const auto inverse = QRVHistoryInverseOf({saveOf(1, {{"A", 1, 2}})}, NSDictionary{{"A", 1}});
    EXPECT_EQ(writesOf(inverse), Lines{});
    EXPECT_EQ(conflictsOf(inverse), Lines{});
}

TEST(Inverse, MakesALevelOutOfALeafAndBack) {
    const QRVHistorySave toLevel = saveOf(1, {{"A", 1, nullptr}, {"A.B", nullptr, 2}});
    EXPECT_EQ(writesOf(QRVHistoryInverseOf({toLevel}, NSDictionary{{"A", NSDictionary{{"B", 2}}}})),
              (Lines{"A.B=none", "A=1"}));
    const QRVHistorySave toLeaf = saveOf(1, {{"A", nullptr, 1}, {"A.B", 2, nullptr}});
    EXPECT_EQ(writesOf(QRVHistoryInverseOf({toLeaf}, NSDictionary{{"A", 1}})),
              (Lines{"A=none", "A.B=2"}));
}

TEST(Inverse, IsObstructedByWhatIsStoredOnTheWayNow) {
    const QRVHistorySave below = saveOf(1, {{"A.B", 2, nullptr}});
    EXPECT_EQ(conflictsOf(QRVHistoryInverseOf({below}, NSDictionary{{"A", 5}})),
              Lines{"A.B: none, none > 2"});
    const QRVHistorySave above = saveOf(1, {{"A", 2, nullptr}});
    EXPECT_EQ(
        conflictsOf(QRVHistoryInverseOf({above}, NSDictionary{{"A", NSDictionary{{"C", 5}}}})),
        Lines{"A: none, none > 2"});
    EXPECT_EQ(writesOf(QRVHistoryInverseOf({above}, NSDictionary{{"A", NSDictionary()}})),
              Lines{"A=2"});
}

TEST(Inverse, IsObstructedByAConflictThatIsLeftOut) {
    const std::vector<QRVHistorySave> saves{
        saveOf(1, {{"A", nullptr, 1}, {"A.B", 2, nullptr}, {"C", 1, 2}})};
    const NSDictionary stored{{"A", 9}, {"C", 2}};
    const auto inverse = QRVHistoryInverseOf(saves, stored);
    EXPECT_EQ(conflictsOf(inverse), (Lines{"A: 1, 9 > none", "A.B: none, none > 2"}));
    EXPECT_EQ(writesOf(inverse), Lines{"C=1"});
    const auto forced = QRVHistoryInverseOf(saves, stored, QRVHistoryConflicts::Overwrite);
    EXPECT_EQ(conflictsOf(forced), conflictsOf(inverse));
    EXPECT_EQ(writesOf(forced), (Lines{"A=none", "A.B=2", "C=1"}));
}

TEST(Inverse, ThatOverwritesRemovesAValueOnTheWay) {
    const auto forced = QRVHistoryInverseOf({saveOf(1, {{"A.B", 2, nullptr}, {"A.C", 3, nullptr}})},
                                            NSDictionary{{"A", 5}}, QRVHistoryConflicts::Overwrite);
    EXPECT_EQ(writesOf(forced), (Lines{"A=none", "A.B=2", "A.C=3"}));
    QRVSettingsSetObjectForKeyPath(5, "A");
    for (const QRVHistoryWrite& write : forced.writes)
        QRVSettingsSetObjectForKeyPath(write.value, write.keyPath);
    EXPECT_EQ(QRVSettingsStoredValues(), (NSDictionary{{"A", NSDictionary{{"B", 2}, {"C", 3}}}}));
}

TEST(Inverse, TakesASaveBack) {
    start();
    set(1, "A.B");
    QRVSettingsPrepareBatchSave();
    QRVSettingsSetObjectForKeyPath(2, "A.B");
    QRVSettingsSetObjectForKeyPath("x", "C");
    QRVSettingsCommitBatchSave();
    wait();
    const NSDictionary before = StoreSupport::fileTree();
    set(nullptr, "A.B");
    const auto inverse = QRVHistoryInverseOf(saves({.limit = 1}), QRVSettingsStoredValues());
    QRVSettings::sharedSettings().setChangeOrigin("undo");
    QRVSettingsPrepareBatchSave();
    for (const QRVHistoryWrite& write : inverse.writes)
        QRVSettingsSetObjectForKeyPath(write.value, write.keyPath);
    QRVSettingsCommitBatchSave();
    wait();
    EXPECT_EQ(StoreSupport::fileTree(), before);
    EXPECT_EQ(lineOf(saves().at(0)), "test/undo: A.B none > 2");
}
