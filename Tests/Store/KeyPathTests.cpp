// SPDX-License-Identifier: MIT
// Reading and writing a tree by key path.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/StoreSupport.h"

using NSDictionaryQRV::objectAtKeyPath;
using NSDictionaryQRV::setObjectAtKeyPath;
using StoreSupport::SystemLogLines;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(KeyPath, NullIsNotTheEmptyKeyPath) {
    EXPECT_TRUE(QRVKeyPath(nullptr).isNull());
    EXPECT_TRUE(QRVKeyPath(std::nullopt).isNull());
    EXPECT_TRUE(QRVKeyPath(static_cast<const char*>(nullptr)).isNull());
    EXPECT_TRUE(QRVKeyPath(std::optional<std::string>()).isNull());
    EXPECT_FALSE(QRVKeyPath("").isNull());
    EXPECT_FALSE(QRVKeyPath(std::string_view()).isNull());
}

TEST(KeyPath, AKeyPathWithoutASeparatorAddressesTheRoot) {
    const NSMutableDictionary root;
    setObjectAtKeyPath(root, 1, "A");
    EXPECT_EQ(root, NSDictionary({{"A", 1}}));
    EXPECT_EQ(objectAtKeyPath(root, "A"), 1);
}

TEST(KeyPath, ReadingAMissingLevelIsNullAndLogsNothing) {
    const SystemLogLines log;
    EXPECT_TRUE(objectAtKeyPath(NSDictionary{}, "A.B.C").isNull());
    EXPECT_TRUE(objectAtKeyPath(NSDictionary{{"A", NSDictionary{{"X", 1}}}}, "A.B.C").isNull());
    EXPECT_TRUE(objectAtKeyPath(NSDictionary{{"A", NSDictionary{}}}, "A.B").isNull());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(KeyPath, ReadingThroughAStringOrAnArrayIsNullAndLogsTwoLines) {
    for (const PropertyListValue& leaf :
         {PropertyListValue("text"), PropertyListValue(NSArray{NSDictionary{{"B", 1}}})}) {
        const SystemLogLines log;
        EXPECT_TRUE(objectAtKeyPath(NSDictionary{{"A", leaf}}, "A.B").isNull());
        EXPECT_THAT(log.lines(), ElementsAre("object is not a dictionary", "A.B"));
    }
}

TEST(KeyPath, TheLoggedKeyPathIsTheWholeOneAndNoFormat) {
    const SystemLogLines log;
    EXPECT_TRUE(objectAtKeyPath(NSDictionary{{"A", 1}}, "A.%@.C.D").isNull());
    EXPECT_THAT(log.lines(), ElementsAre("object is not a dictionary", "A.%@.C.D"));
}

TEST(KeyPath, ReadingALeafThatIsADictionaryReturnsTheObjectItself) {
    const NSDictionary leaf{{"x", 1}};
    const NSDictionary root{{"A", NSDictionary{{"B", leaf}}}};
    EXPECT_TRUE(objectAtKeyPath(root, "A.B").dictionary().isIdenticalTo(leaf));
}

TEST(KeyPath, ReadingFromNoTreeOrWithoutAKeyPathIsNull) {
    EXPECT_TRUE(objectAtKeyPath(nullptr, "A.B").isNull());
    EXPECT_TRUE(objectAtKeyPath(NSDictionary{{"", 1}}, nullptr).isNull());
}

TEST(KeyPath, WritingCreatesMutableLevels) {
    const NSMutableDictionary root;
    setObjectAtKeyPath(root, "value", "A.B.C");
    EXPECT_EQ(root, NSDictionary({{"A", NSDictionary{{"B", NSDictionary{{"C", "value"}}}}}}));
    EXPECT_TRUE(objectAtKeyPath(root, "A").dictionary().isMutable());
    EXPECT_TRUE(objectAtKeyPath(root, "A.B").dictionary().isMutable());
}

TEST(KeyPath, WritingReplacesAnImmutableLevelByAMutableCopy) {
    const NSDictionary untouched{{"y", 2}};
    const NSDictionary old{{"x", 1}, {"Other", untouched}};
    const NSMutableDictionary root;
    root.setObjectForKey(old, "A");
    setObjectAtKeyPath(root, 3, "A.B");
    const NSDictionary level = root.objectForKey("A").dictionary();
    EXPECT_TRUE(level.isMutable());
    EXPECT_EQ(level, NSDictionary({{"x", 1}, {"Other", untouched}, {"B", 3}}));
    EXPECT_EQ(old, NSDictionary({{"x", 1}, {"Other", untouched}}));
    EXPECT_TRUE(level.objectForKey("Other").dictionary().isIdenticalTo(untouched))
        << "the copy is shallow";
}

TEST(KeyPath, WritingLeavesAMutableLevelInPlace) {
    const NSMutableDictionary level;
    const NSMutableDictionary root;
    root.setObjectForKey(level, "A");
    setObjectAtKeyPath(root, 1, "A.B");
    EXPECT_TRUE(root.objectForKey("A").dictionary().isIdenticalTo(level));
    EXPECT_EQ(level.objectForKey("B"), 1);
}

TEST(KeyPath, WritingNullCreatesTheLevelsAndStoresNothingElse) {
    const NSMutableDictionary root;
    setObjectAtKeyPath(root, nullptr, "A.B");
    EXPECT_EQ(root, NSDictionary({{"A", NSDictionary{}}}));
    EXPECT_TRUE(root.objectForKey("A").dictionary().isMutable());
}

TEST(KeyPath, WritingNullRemovesTheLeafAndKeepsTheLevels) {
    const NSMutableDictionary root;
    setObjectAtKeyPath(root, 1, "A.B");
    setObjectAtKeyPath(root, nullptr, "A.B");
    EXPECT_EQ(root, NSDictionary({{"A", NSDictionary{}}}));
}

TEST(KeyPath, WritingThroughANumberLogsOneLineAndFails) {
    const SystemLogLines log;
    const NSMutableDictionary root;
    root.setObjectForKey(7, "A");
    EXPECT_THROW(setObjectAtKeyPath(root, 1, "A.B"), NSInvalidArgumentException);
    EXPECT_THAT(log.lines(), ElementsAre("leaf is not a dictionary"));
    EXPECT_EQ(root, NSDictionary({{"A", 7}}));
}

TEST(KeyPath, WritingDeeperThroughAnArrayFailsAtTheNextLookUp) {
    const SystemLogLines log;
    const NSMutableDictionary root;
    root.setObjectForKey(NSArray{1}, "A");
    EXPECT_THROW(setObjectAtKeyPath(root, 1, "A.B.C.D"), NSInvalidArgumentException);
    EXPECT_THAT(log.lines(), ElementsAre("leaf is not a dictionary"));
}

TEST(KeyPath, AFailedWriteLeavesItsEarlierChangesInPlace) {
    const SystemLogLines log;
    const NSMutableDictionary root;
    root.setObjectForKey(NSDictionary{{"B", "leaf"}}, "A");
    EXPECT_THROW(setObjectAtKeyPath(root, 1, "A.B.C"), NSInvalidArgumentException);
    EXPECT_TRUE(root.objectForKey("A").dictionary().isMutable());
    EXPECT_EQ(root, NSDictionary({{"A", NSDictionary{{"B", "leaf"}}}}));
}

TEST(KeyPath, WritingIntoAnImmutableRootFails) {
    EXPECT_THROW(setObjectAtKeyPath(NSDictionary{}, 1, "A"), NSInvalidArgumentException);
    EXPECT_THROW(setObjectAtKeyPath(NSDictionary{}, 1, "A.B"), NSInvalidArgumentException);
    const NSDictionary root{{"A", NSDictionary{}}};
    EXPECT_THROW(setObjectAtKeyPath(root, 1, "A.B"), NSInvalidArgumentException);
    EXPECT_EQ(root, NSDictionary({{"A", NSDictionary{}}}));
}

TEST(KeyPath, WritingWithoutAKeyPathFails) {
    EXPECT_THROW(setObjectAtKeyPath(NSMutableDictionary(), 1, nullptr), NSInvalidArgumentException);
}

TEST(KeyPath, EmptyComponentsAreKept) {
    const NSMutableDictionary root;
    setObjectAtKeyPath(root, 1, "A..B");
    setObjectAtKeyPath(root, 2, "");
    setObjectAtKeyPath(root, 3, "C.");
    const NSDictionary expected{
        {"A", NSDictionary{{"", NSDictionary{{"B", 1}}}}}, {"", 2}, {"C", NSDictionary{{"", 3}}}};
    EXPECT_EQ(root, expected);
    EXPECT_EQ(objectAtKeyPath(root, "A..B"), 1);
    EXPECT_EQ(objectAtKeyPath(root, ""), 2);
    EXPECT_EQ(objectAtKeyPath(root, "C."), 3);
    EXPECT_EQ(objectAtKeyPath(NSDictionary{{"", NSDictionary{{"B", 4}}}}, ".B"), 4);
}

TEST(KeyPath, NothingIsTrimmedAndCaseMatters) {
    const NSDictionary root{{"A", NSDictionary{{"B", 1}}}};
    EXPECT_TRUE(objectAtKeyPath(root, "a.B").isNull());
    EXPECT_TRUE(objectAtKeyPath(root, "A. B").isNull());
    EXPECT_TRUE(objectAtKeyPath(root, "A.B ").isNull());
}

TEST(KeyPath, WhatIsWrittenIsRead) {
    EXPECT_TRUE(rc::check("write then read", [] {
        const auto path = *rc::gen::container<std::string>(rc::gen::element('a', 'b', '.'));
        const NSMutableDictionary root;
        setObjectAtKeyPath(root, 42, path);
        RC_ASSERT(objectAtKeyPath(root, path) == 42);
        setObjectAtKeyPath(root, nullptr, path);
        RC_ASSERT(objectAtKeyPath(root, path).isNull());
    }));
}

TEST(KeyPath, AKeyPathOfVeryManyComponentsIsWrittenAndRead) {
    const std::string path(100000, '.');
    const NSMutableDictionary root;
    setObjectAtKeyPath(root, 1, path);
    EXPECT_EQ(objectAtKeyPath(root, path), 1);
    EXPECT_TRUE(NSDictionaryQRV::hasValues(root));
}
