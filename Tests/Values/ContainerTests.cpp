// SPDX-License-Identifier: MIT
// Arrays and dictionaries: identity, copies, changes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <map>

#include "Platform/Values/PropertyListValue.h"

TEST(Containers, ANestedTreeIsBuiltInOneExpression) {
    const NSDictionary tree{{"CPU", NSDictionary{{"Enabled", true}, {"Width", 40}}},
                            {"Items", NSArray{"cpu", 2.5, NSArray{1, 2}}}};
    EXPECT_EQ(tree.count(), 2U);
    EXPECT_EQ(tree.objectForKey("CPU").dictionary().objectForKey("Width"), 40);
    EXPECT_EQ(tree.objectForKey("Items").array().objectAtIndex(2), NSArray({1, 2}));
}

TEST(Containers, AnArrayMayHoldNothingButAnArray) {
    const NSArray outer = NSArray::arrayWithObject(NSArray{1, 2});
    EXPECT_EQ(outer.count(), 1U);
    EXPECT_EQ(outer.objectAtIndex(0), NSArray({1, 2}));
    EXPECT_THROW(static_cast<void>(NSArray::arrayWithObject(nullptr)), NSInvalidArgumentException);
}

TEST(Containers, MutableContainersAreBuiltInOneExpressionToo) {
    const NSMutableDictionary dictionary{{"a", 1}, {"b", 2}};
    EXPECT_TRUE(dictionary.isMutable());
    dictionary.removeObjectForKey("a");
    EXPECT_EQ(dictionary, NSDictionary({{"b", 2}}));
    const NSMutableArray array{1, 2};
    EXPECT_TRUE(array.isMutable());
    array.addObject(3);
    EXPECT_EQ(array, NSArray({1, 2, 3}));
}

TEST(Containers, TheDefaultIsEmptyAndNullptrIsNone) {
    EXPECT_FALSE(NSDictionary().isNull());
    EXPECT_EQ(NSDictionary().count(), 0U);
    EXPECT_TRUE(NSDictionary(nullptr).isNull());
    EXPECT_FALSE(NSArray().isNull());
    EXPECT_TRUE(NSArray(nullptr).isNull());
    EXPECT_TRUE(PropertyListValue(NSDictionary(nullptr)).isNull());
    EXPECT_TRUE(PropertyListValue(NSArray(nullptr)).isNull());
}

TEST(Containers, NothingHappensToANullContainer) {
    const NSMutableDictionary dictionary(nullptr);
    dictionary.setObjectForKey(1, "a");
    dictionary.removeObjectForKey("a");
    dictionary.removeAllObjects();
    EXPECT_TRUE(dictionary.isNull());
    EXPECT_TRUE(dictionary.objectForKey("a").isNull());
    EXPECT_TRUE(dictionary.copy().isNull());
    EXPECT_TRUE(dictionary.mutableCopy().isNull());
    const NSMutableArray array(nullptr);
    array.addObject(1);
    array.removeObject(1);
    EXPECT_EQ(array.count(), 0U);
    EXPECT_TRUE(array.mutableCopy().isNull());
    for (const auto& element : array) ADD_FAILURE() << element;
    for (const auto& [key, value] : dictionary) ADD_FAILURE() << key << value;
}

TEST(Containers, TheLaterOfTwoEntriesWithOneKeyWins) {
    EXPECT_EQ(NSDictionary({{"a", 1}, {"a", 2}}), NSDictionary({{"a", 2}}));
}

TEST(Containers, ANullElementIsAnInvalidArgument) {
    EXPECT_THROW(NSArray({1, nullptr}), NSInvalidArgumentException);
    EXPECT_THROW(NSDictionary({{"a", nullptr}}), NSInvalidArgumentException);
    EXPECT_THROW(NSMutableArray().addObject(nullptr), NSInvalidArgumentException);
}

TEST(Containers, ANullValueRemovesTheKey) {
    const NSMutableDictionary dictionary;
    dictionary.setObjectForKey(1, "a");
    dictionary.setObjectForKey(nullptr, "a");
    dictionary.setObjectForKey(nullptr, "never there");
    EXPECT_EQ(dictionary.count(), 0U);
}

TEST(Containers, HandlesOfOneObjectSeeEachOthersChanges) {
    const NSMutableDictionary dictionary;
    const NSDictionary second = dictionary;
    dictionary.setObjectForKey(1, "a");
    EXPECT_TRUE(second.isIdenticalTo(dictionary));
    EXPECT_EQ(second.objectForKey("a"), 1);
    second.asMutable().setObjectForKey(2, "a");
    EXPECT_EQ(dictionary.objectForKey("a"), 2);
}

TEST(Containers, ACopyIsAnotherObjectThatKeepsTheOldEntries) {
    const NSMutableDictionary original;
    original.setObjectForKey(1, "a");
    const NSDictionary copy = original.copy();
    const NSMutableDictionary mutableCopy = original.mutableCopy();
    original.setObjectForKey(2, "a");
    mutableCopy.setObjectForKey(3, "a");
    EXPECT_FALSE(copy.isMutable());
    EXPECT_FALSE(copy.isIdenticalTo(original));
    EXPECT_EQ(copy.objectForKey("a"), 1);
    EXPECT_EQ(original.objectForKey("a"), 2);
    EXPECT_EQ(mutableCopy.objectForKey("a"), 3);
}

TEST(Containers, TheCopyOfAnImmutableObjectIsTheObject) {
    const NSDictionary dictionary{{"a", 1}};
    EXPECT_TRUE(dictionary.copy().isIdenticalTo(dictionary));
    EXPECT_TRUE(dictionary.asMutable().isNull());
    const NSArray array{1};
    EXPECT_TRUE(array.copy().isIdenticalTo(array));
    EXPECT_TRUE(array.asMutable().isNull());
}

TEST(Containers, CopiesAreShallow) {
    const NSMutableDictionary inner;
    const NSMutableDictionary outer;
    outer.setObjectForKey(inner, "inner");
    const NSDictionary copy = outer.copy();
    inner.setObjectForKey(1, "late");
    EXPECT_TRUE(copy.objectForKey("inner").dictionary().isIdenticalTo(inner));
    EXPECT_EQ(copy.objectForKey("inner").dictionary().objectForKey("late"), 1);
}

TEST(Containers, AnIterationKeepsToTheEntriesItStartedWith) {
    const NSMutableDictionary dictionary;
    for (int number = 0; number < 20; ++number) {
        dictionary.setObjectForKey(number, std::to_string(number));
    }
    int seen = 0;
    for (const auto& [key, value] : dictionary) {
        dictionary.removeObjectForKey(key);
        dictionary.setObjectForKey(value, "new " + std::string(key));
        ++seen;
    }
    EXPECT_EQ(seen, 20);
    EXPECT_EQ(dictionary.count(), 20U);
    const NSMutableArray array;
    array.addObjectsFromArray({1, 2, 3});
    for (const PropertyListValue& element : array) array.addObject(element);
    EXPECT_EQ(array, NSArray({1, 2, 3, 1, 2, 3}));
}

TEST(Containers, RemovingAnObjectRemovesEveryEqualElement) {
    const NSMutableArray array;
    array.addObjectsFromArray({1, "a", 1.0, true, "a"});
    array.removeObject(1);
    EXPECT_EQ(array, NSArray({"a", true, "a"}));
    array.removeAllObjects();
    EXPECT_EQ(array.count(), 0U);
}

TEST(Containers, RemovingAnObjectLeavesCopiesAndWalksAlone) {
    const NSMutableArray array{1, 2, 1, 3};
    const NSArray copy = array.copy();
    const NSMutableArray mutableCopy = array.mutableCopy();
    auto element = array.begin();
    array.removeObject(1);
    array.removeObject("never there");
    EXPECT_EQ(array, NSArray({2, 3}));
    EXPECT_EQ(copy, NSArray({1, 2, 1, 3}));
    EXPECT_EQ(mutableCopy, NSArray({1, 2, 1, 3}));
    EXPECT_EQ(*element, 1);
    array.removeObject(3);
    array.removeObject(2);
    EXPECT_EQ(array, NSArray());
}

TEST(Containers, AnArrayIsRemovedFromItself) {
    const NSMutableArray array{1};
    array.addObject(array);
    array.removeObject(array);
    EXPECT_EQ(array, NSArray({1}));
}

TEST(Containers, RemovingAnObjectBehavesLikeErasing) {
    const auto holds = rc::check("same elements after the same removals", [] {
        auto model = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 6));
        const NSMutableArray array;
        for (const int number : model) array.addObject(number);
        for (const int number : *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 6))) {
            std::erase(model, number);
            array.removeObject(number);
            RC_ASSERT(array.count() == model.size());
            for (std::size_t index = 0; index < model.size(); ++index)
                RC_ASSERT(array.objectAtIndex(index) == model[index]);
        }
    });
    EXPECT_TRUE(holds);
}

TEST(Containers, WhatIsReplacedOrRemovedMayUseTheContainerWhileItIsDestroyed) {
    const NSMutableDictionary dictionary;
    const NSMutableArray array;
    for (int round = 0; round < 3; ++round) {
        NSMutableArray nested;
        nested.addObject(dictionary);
        nested.addObject(array);
        dictionary.setObjectForKey(nested, "nested");
        array.addObject(nested);
    }
    array.removeObject(dictionary.objectForKey("nested"));
    dictionary.removeObjectForKey("nested");
    array.removeAllObjects();
    EXPECT_EQ(dictionary.count(), 0U);
    EXPECT_EQ(array.count(), 0U);
}

TEST(Containers, KeysMayHoldAnyCharacter) {
    const std::string withZero("a\0b", 3);
    const NSDictionary dictionary{{withZero, 1}, {"", 2}, {"a", 3}, {"\xC3\xA4.b", 4}};
    EXPECT_EQ(dictionary.count(), 4U);
    EXPECT_EQ(dictionary.objectForKey(withZero), 1);
    EXPECT_EQ(dictionary.objectForKey(""), 2);
    EXPECT_EQ(dictionary.objectForKey("a"), 3);
    EXPECT_EQ(dictionary.objectForKey("\xC3\xA4.b"), 4);
}

TEST(Containers, TextOfMoreThanFourGiBIsRefusedBeforeItIsRead) {
    const std::string_view tooLong("x", std::size_t{5} << 30U);
    EXPECT_THROW(PropertyListValue{tooLong}, std::length_error);
}

TEST(Containers, ADictionaryBehavesLikeAMap) {
    const auto holds = rc::check("same entries after the same changes", [] {
        std::map<std::string, int> model;
        const NSMutableDictionary dictionary;
        const auto changes = *rc::gen::container<std::vector<std::pair<int, int>>>(
            rc::gen::pair(rc::gen::inRange(0, 40), rc::gen::inRange(-1, 1000)));
        for (const auto& [number, value] : changes) {
            const std::string key = "key " + std::to_string(number);
            if (value < 0) {
                model.erase(key);
                dictionary.removeObjectForKey(key);
            } else {
                model[key] = value;
                dictionary.setObjectForKey(value, key);
            }
        }
        RC_ASSERT(dictionary.count() == model.size());
        for (int number = 0; number < 40; ++number) {
            const std::string key = "key " + std::to_string(number);
            const auto found = model.find(key);
            const PropertyListValue expected =
                found == model.end() ? PropertyListValue() : PropertyListValue(found->second);
            RC_ASSERT(dictionary.objectForKey(key) == expected);
        }
    });
    EXPECT_TRUE(holds);
}

TEST(Containers, AVeryDeepTreeIsDestroyedAndComparedWithoutExhaustingTheStack) {
    const auto deepTree = [](int levels) {
        PropertyListValue value = 1;
        for (int level = 0; level < levels; ++level) {
            value = level % 2 == 0 ? PropertyListValue(NSArray{value})
                                   : PropertyListValue(NSDictionary{{"down", value}});
        }
        return value;
    };
    constexpr int levels = 200000;
    EXPECT_TRUE(deepTree(levels) == deepTree(levels));
    EXPECT_FALSE(deepTree(levels) == deepTree(levels - 2));
}

TEST(Containers, ManyEntriesAreFoundAndRemoved) {
    const NSMutableDictionary dictionary;
    constexpr int entries = 20000;
    for (int number = 0; number < entries; ++number) {
        dictionary.setObjectForKey(number, "Some.Key.Path." + std::to_string(number));
    }
    for (int number = 0; number < entries; number += 2) {
        dictionary.removeObjectForKey("Some.Key.Path." + std::to_string(number));
    }
    EXPECT_EQ(dictionary.count(), entries / 2U);
    for (int number = 0; number < entries; ++number) {
        const PropertyListValue found =
            dictionary.objectForKey("Some.Key.Path." + std::to_string(number));
        EXPECT_EQ(found, number % 2 == 0 ? PropertyListValue() : PropertyListValue(number));
    }
}
TEST(MutableArray, TakesTheElementsOfAnotherArrayInOneStep) {
    const NSMutableArray array{1, 2, 3};
    const NSMutableArray values{"a", "b"};
    array.setArray(values);
    values.addObject("c");
    array.addObject(4);
    EXPECT_EQ(array, (NSArray{"a", "b", 4}));
    EXPECT_EQ(values, (NSArray{"a", "b", "c"}));
    array.setArray(nullptr);
    EXPECT_EQ(array.count(), 0U);
}
