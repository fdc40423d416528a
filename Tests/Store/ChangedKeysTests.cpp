// SPDX-License-Identifier: MIT
// The key paths of the differences of two trees.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <set>

#include "QRVSettings/NSDictionary+QRV.h"

using testing::UnorderedElementsAre;

namespace {

std::vector<std::string> changes(const NSDictionary& before, const NSDictionary& after) {
    std::vector<std::string> keyPaths;
    for (const PropertyListValue& keyPath : NSDictionaryQRV::changedKeys(before, after))
        keyPaths.push_back(keyPath.stringValue());
    return keyPaths;
}

/// The second model: recursion over plain maps instead of a walk over two trees at once.
using FlatMap = std::map<std::string, PropertyListValue>;

void enterLeaves(const NSDictionary& tree, const std::string& start, FlatMap& leaves) {
    for (const auto& [key, value] : tree) {
        const std::string keyPath = start + std::string(key);
        if (value.isDictionary())
            enterLeaves(value.dictionary(), keyPath + ".", leaves);
        else
            leaves[keyPath] = value;
    }
}

std::set<std::string> modelChanges(const NSDictionary& before, const NSDictionary& after) {
    FlatMap old;
    FlatMap present;
    enterLeaves(before, "", old);
    enterLeaves(after, "", present);
    std::set<std::string> changed;
    for (const auto& [keyPath, value] : old)
        if (!present.contains(keyPath) || present[keyPath] != value) changed.insert(keyPath);
    for (const auto& [keyPath, value] : present)
        if (!old.contains(keyPath)) changed.insert(keyPath);
    return changed;
}

PropertyListValue leafFrom(int number) {
    switch (number % 7) {
        case 0:
            return true;
        case 1:
            return 1;
        case 2:
            return 1.0;
        case 3:
            return "1";
        case 4:
            return NSArray{1, NSDictionary{{"A", 1}}};
        case 5:
            return NSArray{};
        default:
            return NSDate(1);
    }
}

NSDictionary treeOf(int depth) {
    const NSMutableDictionary tree;
    const int count = *rc::gen::inRange(0, 4);
    for (int index = 0; index < count; ++index) {
        const std::string key = *rc::gen::element<std::string>("A", "B", "C", "");
        const bool isLevel = depth > 0 && *rc::gen::inRange(0, 2) == 0;
        const PropertyListValue value =
            isLevel ? PropertyListValue(treeOf(depth - 1)) : leafFrom(*rc::gen::inRange(0, 7));
        tree.setObjectForKey(value, key);
    }
    return tree;
}

/// The same tree with some of its levels replaced; the others stay the same objects.
NSDictionary variantOf(const NSDictionary& tree, int depth) {
    const NSMutableDictionary variant = tree.mutableCopy();
    for (const auto& [key, value] : tree) {
        const int choice = *rc::gen::inRange(0, 5);
        if (choice == 0) variant.removeObjectForKey(key);
        if (choice == 1) variant.setObjectForKey(leafFrom(*rc::gen::inRange(0, 7)), key);
        if (choice == 2) variant.setObjectForKey(treeOf(depth), key);
        if (choice == 3 && value.isDictionary())
            variant.setObjectForKey(variantOf(value.dictionary(), depth - 1), key);
    }
    return variant;
}

void expectAsTheModelSays(const NSDictionary& before, const NSDictionary& after) {
    const std::vector<std::string> list = changes(before, after);
    const std::set<std::string> set(list.begin(), list.end());
    RC_ASSERT(list.size() == set.size());
    RC_ASSERT(set == modelChanges(before, after));
}

}  // namespace

TEST(ChangedKeys, OfEqualTreesAreNone) {
    const NSDictionary tree{{"A", NSDictionary{{"B", 1}}}, {"L", NSArray{1}}};
    EXPECT_THAT(changes(tree, tree), UnorderedElementsAre());
    EXPECT_THAT(changes(tree, {{"A", NSDictionary{{"B", 1}}}, {"L", NSArray{1}}}),
                UnorderedElementsAre());
    EXPECT_THAT(changes(nullptr, nullptr), UnorderedElementsAre());
    EXPECT_TRUE(NSDictionaryQRV::changedKeys(tree, tree).isMutable());
}

TEST(ChangedKeys, NameALeafWithAnotherValue) {
    EXPECT_THAT(changes({{"A", NSDictionary{{"B", 1}}}}, {{"A", NSDictionary{{"B", 2}}}}),
                UnorderedElementsAre("A.B"));
}

TEST(ChangedKeys, LeaveOutDictionariesWithoutLeaves) {
    EXPECT_THAT(changes({{"A", NSDictionary{}}}, NSDictionary{}), UnorderedElementsAre());
    EXPECT_THAT(changes(NSDictionary{}, {{"A", NSDictionary{{"B", NSDictionary{}}}}}),
                UnorderedElementsAre());
    EXPECT_THAT(changes({{"A", 1}}, {{"A", NSDictionary{}}}), UnorderedElementsAre("A"));
}

TEST(ChangedKeys, NameBothSidesWhereALeafBecomesADictionary) {
    const NSDictionary leaf{{"A", 1}};
    const NSDictionary level{{"A", NSDictionary{{"B", 1}, {"C", 2}}}};
    EXPECT_THAT(changes(leaf, level), UnorderedElementsAre("A", "A.B", "A.C"));
    EXPECT_THAT(changes(level, leaf), UnorderedElementsAre("A", "A.B", "A.C"));
}

TEST(ChangedKeys, NameAnArrayAsAWhole) {
    EXPECT_THAT(changes({{"L", NSArray{1, 2}}}, {{"L", NSArray{2, 1}}}), UnorderedElementsAre("L"));
}

TEST(ChangedKeys, NameWhatIsInOneTreeOnly) {
    EXPECT_THAT(changes({{"A", 1}, {"Old", 1}}, {{"A", 1}, {"New", NSArray{}}}),
                UnorderedElementsAre("Old", "New"));
    EXPECT_THAT(changes(nullptr, {{"A", NSDictionary{{"B", 1}}}}), UnorderedElementsAre("A.B"));
    EXPECT_THAT(changes({{"A", NSDictionary{{"B", 1}}}}, nullptr), UnorderedElementsAre("A.B"));
}

TEST(ChangedKeys, CompareNumbersByValueAndKindsApart) {
    EXPECT_THAT(changes({{"A", 1}, {"B", 1}, {"C", 1}}, {{"A", 1.0}, {"B", true}, {"C", "1"}}),
                UnorderedElementsAre("B", "C"));
}

TEST(ChangedKeys, TakeKeyPathsThatLookAlikeForOne) {
    EXPECT_THAT(changes({{"A.B", 1}}, {{"A", NSDictionary{{"B", 1}}}}), UnorderedElementsAre());
    EXPECT_THAT(changes({{"A.B", 1}}, {{"A", NSDictionary{{"B", 2}}}}),
                UnorderedElementsAre("A.B"));
    EXPECT_THAT(changes({{"", NSDictionary{{"B", 1}}}}, {{".B", 1}}), UnorderedElementsAre());
}

TEST(ChangedKeys, SeeAChangeInALevelThatBothTreesHold) {
    const NSMutableDictionary shared{{"B", 1}};
    const NSDictionary before{{"A", shared.copy()}, {"Same", shared}};
    const NSDictionary after{{"A", NSDictionary{{"B", 2}}}, {"Same", shared}};
    EXPECT_THAT(changes(before, after), UnorderedElementsAre("A.B"));
}

TEST(ChangedKeys, OfDeepTreesCostNoStack) {
    NSDictionary before{{"leaf", 1}};
    NSDictionary after{{"leaf", 2}};
    std::string keyPath = "leaf";
    for (int level = 0; level < 20000; ++level) {
        before = {{"a", before}};
        after = {{"a", after}};
        keyPath.insert(0, "a.");
    }
    EXPECT_THAT(changes(before, after), UnorderedElementsAre(keyPath));
}

RC_GTEST_PROP(ChangedKeysProperty, OfAnyTwoTreesAreThoseOfTheModel, ()) {
    expectAsTheModelSays(treeOf(3), treeOf(3));
}

RC_GTEST_PROP(ChangedKeysProperty, OfATreeAndItsVariantAreThoseOfTheModel, ()) {
    const NSDictionary tree = treeOf(4);
    expectAsTheModelSays(tree, variantOf(tree, 3));
    expectAsTheModelSays(variantOf(tree, 3), tree);
}
