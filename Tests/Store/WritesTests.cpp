// SPDX-License-Identifier: MIT
// What unsaved writes make of a tree.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "FlatSettings.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/QRVSettings+Writes.h"
#include "Support/StoreSupport.h"

using QRVInside::frozen;
using QRVInside::RefusedWrite;
using QRVInside::Settled;
using QRVInside::Write;
using QRVInside::Writes;
using StoreSupport::SystemLogLines;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

NSDictionary applied(const Writes& writes, const NSDictionary& tree) {
    return writes.appliedTo(tree, Writes::Logging::Off);
}

Write write(std::string keyPath, const PropertyListValue& value,
            std::shared_ptr<const Settled> unless = nullptr) {
    return {std::move(keyPath), frozen(value), std::move(unless)};
}

Writes writesOf(const std::vector<Write>& list) {
    Writes writes;
    for (const Write& each : list) writes.add(each);
    return writes;
}

bool isFrozen(const PropertyListValue& value) {
    if (value.isArray()) {
        if (value.array().isMutable()) return false;
        for (const PropertyListValue& element : value.array())
            if (!isFrozen(element)) return false;
    }
    if (value.isDictionary()) {
        if (value.dictionary().isMutable()) return false;
        for (const auto& [key, element] : value.dictionary())
            if (!isFrozen(element)) return false;
    }
    return true;
}

/// Dictionaries inside one another, that many.
PropertyListValue nested(int levels) {
    PropertyListValue value = 1;
    for (; levels > 0; --levels) value = NSDictionary{{"a", value}};
    return value;
}

std::vector<std::string> keyPathsOf(const std::vector<RefusedWrite>& refused) {
    std::vector<std::string> keyPaths;
    for (const RefusedWrite& each : refused) keyPaths.push_back(each.keyPath);
    return keyPaths;
}

// --- Random trees and writes. Few keys, so that key paths overlap.

std::string anyKey() {
    return *rc::gen::element<std::string>("A", "B", "");
}

std::string anyKeyPath() {
    std::string keyPath = anyKey();
    for (int more = *rc::gen::inRange(0, 4); more > 0; --more) keyPath += "." + anyKey();
    return keyPath;
}

PropertyListValue anyValue(int levels) {
    const int choice = *rc::gen::inRange(0, levels > 0 ? 6 : 3);
    if (choice < 3) return choice;
    if (choice == 3) {
        const NSMutableArray array{anyValue(levels - 1), 1};
        return *rc::gen::arbitrary<bool>() ? PropertyListValue(array)
                                           : PropertyListValue(array.copy());
    }
    const NSMutableDictionary dictionary;
    for (int count = *rc::gen::inRange(0, 3); count > 0; --count) {
        const std::string key = anyKey();
        dictionary.setObjectForKey(anyValue(levels - 1), key);
    }
    return choice == 4 ? PropertyListValue(dictionary) : PropertyListValue(dictionary.copy());
}

/// Null in one of eight cases.
NSDictionary anyTree() {
    if (*rc::gen::inRange(0, 8) == 0) return nullptr;
    const NSMutableDictionary tree;
    for (int count = *rc::gen::inRange(0, 4); count > 0; --count) {
        const std::string key = anyKey();
        tree.setObjectForKey(anyValue(3), key);
    }
    return frozen(tree).dictionary();
}

Write anyWrite() {
    const bool isRemoval = *rc::gen::inRange(0, 3) == 0;
    return write(anyKeyPath(), isRemoval ? PropertyListValue() : anyValue(2));
}

/// Writes that a store accepts whose stored tree is `own`: it refuses those that lead through a
/// value that it holds.
std::vector<Write> anyWrites(int most, FlatSettings& own) {
    std::vector<Write> list;
    for (int count = *rc::gen::inRange(0, most); count > 0; --count) {
        const Write next = anyWrite();
        if (leadsThroughALeaf(own, next.keyPath)) continue;
        applyWrite(own, next.keyPath, next.value);
        list.push_back(next);
    }
    return list;
}

std::vector<Write> anyWrites(int most) {
    FlatSettings own;
    return anyWrites(most, own);
}

FlatSettings appliedByModel(const std::vector<Write>& list, const NSDictionary& tree) {
    FlatSettings settings = leavesOf(tree);
    for (const Write& each : list) applyWrite(settings, each.keyPath, each.value);
    return settings;
}

}  // namespace

// --- Order and duplicates

TEST(Writes, NoneLeaveTheTreeItself) {
    const NSDictionary tree{{"A", 1}};
    EXPECT_TRUE(Writes().isEmpty());
    EXPECT_TRUE(applied(Writes(), tree).isIdenticalTo(tree));
    EXPECT_TRUE(applied(Writes(), nullptr).isNull());
    EXPECT_TRUE(Writes().records().isNull());
}

TEST(Writes, OfTwoAtOneKeyPathTheLaterIsKept) {
    const Writes writes = writesOf({write("A", 1), write("B", 2), write("A", 3)});
    EXPECT_THAT(writes.keyPaths(), ElementsAre("B", "A"));
    EXPECT_EQ(applied(writes, nullptr), NSDictionary({{"A", 3}, {"B", 2}}));
}

TEST(Writes, ManyAtOneKeyPathTakeTheRoomOfOne) {
    Writes writes;
    for (int number = 0; number < 10000; ++number) {
        writes.add(write("Kept" + std::to_string(number % 3), number));
        writes.add(write("A", number));
    }
    EXPECT_THAT(writes.keyPaths(), UnorderedElementsAre("Kept0", "Kept1", "Kept2", "A"));
    EXPECT_EQ(applied(writes, nullptr),
              NSDictionary({{"A", 9999}, {"Kept0", 9999}, {"Kept1", 9997}, {"Kept2", 9998}}));
}

TEST(Writes, ARemovalCreatesTheLevelsAboveIt) {
    EXPECT_EQ(applied(writesOf({write("A.B.C", nullptr)}), nullptr),
              NSDictionary({{"A", NSDictionary{{"B", NSDictionary{}}}}}));
}

TEST(Writes, AValueOnTheWayGivesWayToAWriteAndNotToARemoval) {
    const NSDictionary tree{{"A", NSDictionary{{"B", "value"}, {"C", 1}}}};
    const SystemLogLines log;
    const Writes removal = writesOf({write("A.B.X.Y", nullptr)});
    EXPECT_EQ(removal.appliedTo(tree, Writes::Logging::On), tree);
    EXPECT_THAT(log.lines(), IsEmpty());
    const Writes value = writesOf({write("A.B.X.Y", 2)});
    const NSDictionary below{{"X", NSDictionary{{"Y", 2}}}};
    const NSDictionary result{{"A", NSDictionary{{"B", below}, {"C", 1}}}};
    EXPECT_EQ(value.appliedTo(tree, Writes::Logging::Off), result);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_EQ(value.appliedTo(tree, Writes::Logging::On), result);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_THAT(log.lines()[0], HasSubstr("A.B.X.Y"));
}

TEST(Writes, ARemovalThatFollowsAWriteReplacesWhatTheWriteWouldHave) {
    const Writes writes = writesOf({write("A.B", 1), write("A.B", nullptr)});
    EXPECT_EQ(applied(writes, NSDictionary{{"A", "value"}}), NSDictionary({{"A", NSDictionary{}}}));
    Writes later = writesOf({write("A.B", 1)});
    later.append(writesOf({write("A.B", nullptr)}));
    later.append(writesOf({write("A.B", nullptr)}));
    EXPECT_EQ(applied(later, NSDictionary{{"A", "value"}}), NSDictionary({{"A", NSDictionary{}}}));
}

RC_GTEST_PROP(WritesProperty, MakeTheSameAsOneAfterTheOther, ()) {
    const NSDictionary tree = anyTree();
    const std::vector<Write> list = anyWrites(12);
    NSDictionary oneByOne = tree;
    for (const Write& each : list) oneByOne = applied(writesOf({each}), oneByOne);
    const NSDictionary together = applied(writesOf(list), tree);
    for (const Write& each : list) RC_LOG() << each.keyPath << " = " << each.value << '\n';
    RC_ASSERT(leavesOf(together) == leavesOf(oneByOne));
    RC_ASSERT(together.isNull() == oneByOne.isNull());
    RC_ASSERT(leavesOf(together) == appliedByModel(list, tree));
}

RC_GTEST_PROP(WritesProperty, AppendedMakeTheSameAsInTwoSteps, ()) {
    const NSDictionary tree = anyTree();
    FlatSettings own;
    Writes all = writesOf(anyWrites(8, own));
    Writes later;
    const NSDictionary whole = anyTree();
    if (!whole.isNull() && *rc::gen::inRange(0, 3) == 0) {
        own = leavesOf(whole);
        later.replaceTree(whole);
    }
    for (const Write& each : anyWrites(8, own)) later.add(each);
    const NSDictionary inTwoSteps = applied(later, applied(all, tree));
    all.append(later);
    RC_ASSERT(leavesOf(applied(all, tree)) == leavesOf(inTwoSteps));
}

RC_GTEST_PROP(WritesProperty, LeaveTheTreeAsItIsAndTheResultFrozen, ()) {
    const NSDictionary tree = anyTree();
    const FlatSettings before = leavesOf(tree);
    const NSDictionary result = applied(writesOf(anyWrites(10)), tree);
    RC_ASSERT(leavesOf(tree) == before);
    RC_ASSERT(tree.isNull() || isFrozen(tree));
    RC_ASSERT(result.isNull() || isFrozen(result));
}

// --- Values that their owner changes afterwards

TEST(Frozen, IsTheValueWithEveryContainerImmutable) {
    const NSMutableDictionary inner{{"x", 1}};
    const NSMutableArray array{inner, NSMutableArray{1}};
    const PropertyListValue value = NSDictionary{{"L", array}, {"D", inner}};
    const PropertyListValue result = frozen(value);
    EXPECT_EQ(result, value);
    EXPECT_TRUE(isFrozen(result));
    inner.setObjectForKey(2, "x");
    array.addObject(3);
    EXPECT_EQ(result, NSDictionary({{"L", NSArray{NSDictionary{{"x", 1}}, NSArray{1}}},
                                    {"D", NSDictionary{{"x", 1}}}}));
    EXPECT_TRUE(frozen(nullptr).isNull());
}

TEST(Frozen, IsTheSameObjectWhenItIsImmutableAlready) {
    const NSDictionary dictionary{{"L", NSArray{1, NSDictionary{{"x", 1}}}}};
    EXPECT_TRUE(frozen(dictionary).dictionary().isIdenticalTo(dictionary));
    const PropertyListValue array = NSArray{1};
    EXPECT_TRUE(frozen(array).isIdenticalTo(array));
}

TEST(Writes, AValueThatIsChangedAfterwardsIsWrittenAsItWas) {
    const NSMutableDictionary inner{{"x", 1}};
    const NSMutableDictionary value{{"inner", inner}, {"list", NSMutableArray{inner}}};
    const Writes writes = writesOf({write("A", value)});
    const NSDictionary before = applied(writes, nullptr);
    inner.setObjectForKey(2, "x");
    value.setObjectForKey(3, "more");
    EXPECT_EQ(applied(writes, nullptr), before);
    EXPECT_EQ(before,
              NSDictionary({{"A", NSDictionary{{"inner", NSDictionary{{"x", 1}}},
                                               {"list", NSArray{NSDictionary{{"x", 1}}}}}}}));
}

TEST(Writes, AWriteBelowAWrittenDictionaryChangesNoneOfThoseHandedIn) {
    const NSDictionary value{{"x", 1}};
    const NSDictionary tree{{"Other", NSDictionary{{"y", 1}}}};
    const Writes writes =
        writesOf({write("A", value), write("A.x", 2), write("Other.y", 2), write("A.z", 3)});
    EXPECT_EQ(applied(writes, tree), NSDictionary({{"A", NSDictionary{{"x", 2}, {"z", 3}}},
                                                   {"Other", NSDictionary{{"y", 2}}}}));
    EXPECT_EQ(value, NSDictionary({{"x", 1}}));
    EXPECT_EQ(tree, NSDictionary({{"Other", NSDictionary{{"y", 1}}}}));
    EXPECT_EQ(applied(writes, nullptr), NSDictionary({{"A", NSDictionary{{"x", 2}, {"z", 3}}},
                                                      {"Other", NSDictionary{{"y", 2}}}}));
}

// --- Another tree, and records

TEST(Writes, AnotherTreeReplacesTheOldOneAndForgetsEarlierWrites) {
    Writes writes = writesOf({write("A", 1), write("B", 2)});
    writes.replaceTree(NSDictionary{{"T", 1}});
    EXPECT_TRUE(writes.replaceTheTree());
    EXPECT_FALSE(writes.isEmpty());
    EXPECT_THAT(writes.keyPaths(), IsEmpty());
    writes.add(write("A", 3));
    EXPECT_EQ(applied(writes, NSDictionary{{"B", 5}}), NSDictionary({{"T", 1}, {"A", 3}}));
}

TEST(Writes, AppendingAnotherTreeForgetsEarlierWrites) {
    Writes writes = writesOf({write("A", 1)});
    Writes later;
    later.replaceTree(NSDictionary{{"T", 1}});
    later.add(write("B", 2));
    writes.append(later);
    EXPECT_EQ(applied(writes, NSDictionary{{"C", 5}}), NSDictionary({{"T", 1}, {"B", 2}}));
}

TEST(Writes, RecordsAreKeptInOrderAlsoOfWritesThatAreReplaced) {
    const NSDictionary first{{"key", "A"}, {"time", 1.0}};
    const NSDictionary second{{"key", "A"}, {"time", 2.0}};
    Writes writes = writesOf({write("A", 1)});
    writes.addRecords(NSArray{first});
    writes.addRecords(nullptr);
    Writes later = writesOf({write("A", 2)});
    later.addRecords(NSArray{second});
    writes.append(later);
    EXPECT_EQ(writes.records(), NSArray({first, second}));
    EXPECT_EQ(later.records(), NSArray({second}));
}

// --- Writes that have only joined

namespace {

using QRVInside::NewWrite;

NSDictionary recordOf(const std::string& keyPath, double time) {
    return {{"key", keyPath}, {"time", time}};
}

/// Both do the same to writes: `added` write by write, `joined` as the host's thread does.
struct AddedAndJoined {
    Writes added;
    Writes joined;

    void write(const Write& one, double time, bool hasRecord) {
        joined.join({{one.keyPath, time}, hasRecord, one.isOfEmpty, one.value, one.unless});
        added.add(one);
        if (hasRecord) added.addRecords(NSArray::arrayWithObject(recordOf(one.keyPath, time)));
    }
    void change(double time) {
        const auto both = [this](auto&& edit) {
            edit(added);
            edit(joined);
        };
        switch (*rc::gen::inRange(0, 7)) {
            case 0:
                return both([tree = anyTree()](Writes& writes) {
                    if (!tree.isNull()) writes.replaceTree(tree);
                });
            case 1:
                return both([time](Writes& writes) {
                    writes.addRecords(NSArray::arrayWithObject(recordOf("R", time)));
                });
            case 2:
                return both([](Writes& writes) { writes.dropRecords(); });
            case 3:
                return both([](Writes& writes) { writes.dropEarlierRecords(); });
            case 4:
                return both([](Writes& writes) { static_cast<void>(writes.removeRefused()); });
            case 5:
                return both([one = anyWrite()](Writes& writes) { writes.add(one); });
            default:
                return both([one = anyWrite()](Writes& writes) {
                    Writes earlier = writesOf({one});
                    earlier.append(writes);
                    writes = earlier;
                });
        }
    }
};

}  // namespace

RC_GTEST_PROP(WritesProperty, JoiningIsAdding, ()) {
    AddedAndJoined writes;
    const auto flag = std::make_shared<const Settled>(Settled{"A", 1});
    for (int count = *rc::gen::inRange(0, 150); count > 0; --count) {
        const double time = -count;
        if (*rc::gen::inRange(0, 12) == 0) {
            writes.change(time);
            continue;
        }
        Write one = anyWrite();
        if (*rc::gen::inRange(0, 4) == 0) one.unless = flag;
        one.isOfEmpty = one.value.isNull() && *rc::gen::arbitrary<bool>();
        writes.write(one, time, *rc::gen::inRange(0, 4) > 0);
    }
    const NSDictionary tree = anyTree();
    RC_ASSERT(writes.joined.isEmpty() == writes.added.isEmpty());
    RC_ASSERT(writes.joined.keyPaths() == writes.added.keyPaths());
    RC_ASSERT(writes.joined.records() == writes.added.records());
    RC_ASSERT(applied(writes.joined, tree) == applied(writes.added, tree));
}

// --- Writes that may turn out not to be needed

TEST(Writes, AreLeftOutWhenTheFileHasWhatSettlesThem) {
    const auto flag = std::make_shared<const Settled>(Settled{"M.Flag", std::nullopt});
    const Writes writes =
        writesOf({write("A", 1, flag), write("M.Flag", true, flag), write("B", 2)});
    EXPECT_EQ(applied(writes, NSDictionary{{"A", 5}}),
              NSDictionary({{"A", 1}, {"B", 2}, {"M", NSDictionary{{"Flag", true}}}}));
    const NSDictionary settled{{"A", 5}, {"M", NSDictionary{{"Flag", false}}}};
    EXPECT_EQ(applied(writes, settled),
              NSDictionary({{"A", 5}, {"B", 2}, {"M", NSDictionary{{"Flag", false}}}}));
}

TEST(Writes, AreLeftOutForTheValueThatSettlesThemOnly) {
    const auto machine = std::make_shared<const Settled>(Settled{"Machine", "1"});
    const Writes writes = writesOf({write("A", nullptr, machine), write("Machine", "1", machine)});
    EXPECT_EQ(applied(writes, NSDictionary{{"A", 5}, {"Machine", "0"}}),
              NSDictionary({{"Machine", "1"}}));
    EXPECT_EQ(applied(writes, NSDictionary{{"A", 5}, {"Machine", "1"}}),
              NSDictionary({{"A", 5}, {"Machine", "1"}}));
}

TEST(Writes, OneThatIsLeftOutLeavesTheEarlierOneInForce) {
    const auto flag = std::make_shared<const Settled>(Settled{"Flag", std::nullopt});
    const Writes writes = writesOf({write("A", 1), write("A", 2, flag)});
    EXPECT_EQ(applied(writes, nullptr).objectForKey("A"), 2);
    EXPECT_EQ(applied(writes, NSDictionary{{"Flag", 1}}).objectForKey("A"), 1);
    const Writes decided = writesOf({write("A", 1), write("A", 2, flag), write("A", 3)});
    EXPECT_EQ(applied(decided, nullptr).objectForKey("A"), 3);
    EXPECT_EQ(applied(decided, NSDictionary{{"Flag", 1}}).objectForKey("A"), 3);
}

TEST(Writes, AreNeededWhenTheTreeWithWhatSettlesThemIsReplaced) {
    const auto flag = std::make_shared<const Settled>(Settled{"Flag", std::nullopt});
    Writes writes;
    writes.replaceTree(NSDictionary{{"T", 1}});
    writes.add(write("A", 1, flag));
    EXPECT_EQ(applied(writes, NSDictionary{{"Flag", 1}}), NSDictionary({{"T", 1}, {"A", 1}}));
}

// --- What no property list can hold

TEST(Writes, ExactlyThoseThatNoFileCanHoldAreRemoved) {
    const NSDictionary badKey{{"good", 1}, {"\xFF", 2}};
    Writes writes = writesOf({
        write("Good", 1),
        write("BadText", "\xFF"),
        write("BadKey", badKey),
        write("Key.\xFF", 1),
        write("Null", NSNull{}),
        write("InList", NSArray{1, NSNull{}}),
        write("Color", NSColor{1, 0, 0, 1}),
        write("Deep", nested(600)),
        write("Date", NSDate(1e300)),
        write("Dictionary", NSDictionary{{"x", NSArray{1, "text"}}}),
        write("Removed", nullptr),
        write("AsDeepAsItGoes", nested(511)),
    });
    const std::vector<RefusedWrite> refused = writes.removeRefused();
    EXPECT_THAT(keyPathsOf(refused), ElementsAre("BadText", "BadKey", "Key.\xFF", "Null", "InList",
                                                 "Color", "Deep", "Date"));
    for (const RefusedWrite& each : refused) EXPECT_FALSE(each.reason.empty());
    EXPECT_THAT(writes.keyPaths(), ElementsAre("Good", "Dictionary", "Removed", "AsDeepAsItGoes"));
    const auto written = NSPropertyListSerialization::dataWithPropertyList(
        applied(writes, NSDictionary{{"Removed", 1}}));
    EXPECT_FALSE(written.error);
    EXPECT_THAT(writes.removeRefused(), IsEmpty());
}

TEST(Writes, AKeyPathOfTooManyLevelsIsRefused) {
    std::string keyPath = "a";
    for (int level = 0; level < 600; ++level) keyPath += ".a";
    Writes writes = writesOf({write(keyPath, 1), write("Good", 1)});
    EXPECT_THAT(keyPathsOf(writes.removeRefused()), ElementsAre(keyPath));
    EXPECT_EQ(applied(writes, nullptr), NSDictionary({{"Good", 1}}));
}

TEST(Writes, AfterARefusalTheKeyPathCanBeWrittenAgain) {
    Writes writes = writesOf({write("A", NSNull{}), write("B", 1)});
    EXPECT_THAT(keyPathsOf(writes.removeRefused()), ElementsAre("A"));
    writes.add(write("A", 2));
    for (int number = 0; number < 100; ++number) writes.add(write("B", number));
    EXPECT_EQ(applied(writes, nullptr), NSDictionary({{"A", 2}, {"B", 99}}));
}

RC_GTEST_PROP(WritesProperty, WhatIsLeftAfterRefusalsCanBeWritten, ()) {
    std::vector<Write> list = anyWrites(10);
    std::vector<Write> good;
    for (Write& each : list) {
        if (*rc::gen::inRange(0, 3) == 0) each.value = frozen(NSDictionary{{"bad", NSNull{}}});
    }
    Writes writes = writesOf(list);
    writes.removeRefused();
    const NSDictionary tree = anyTree();
    const NSDictionary result = applied(writes, tree);
    RC_ASSERT(result.isNull() || !NSPropertyListSerialization::dataWithPropertyList(result).error);
}
