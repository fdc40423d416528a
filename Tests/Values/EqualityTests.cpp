// SPDX-License-Identifier: MIT
// Equality of values, which is exact for numbers.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "Platform/Values/PropertyListValue.h"

namespace {
constexpr std::uint64_t twoTo63 = std::uint64_t{1} << 63U;
constexpr std::int64_t twoTo53 = std::int64_t{1} << 53U;
}  // namespace

TEST(Equality, NumbersAreComparedByNumericValue) {
    EXPECT_EQ(PropertyListValue(1), PropertyListValue(1.0));
    EXPECT_EQ(PropertyListValue(0.0), PropertyListValue(-0.0));
    EXPECT_NE(PropertyListValue(1), PropertyListValue(1.5));
    EXPECT_EQ(PropertyListValue(std::uint64_t{7}), PropertyListValue(7));
}

TEST(Equality, NumbersBeyondTwoToThe53AreComparedExactly) {
    EXPECT_EQ(PropertyListValue(twoTo53), PropertyListValue(static_cast<double>(twoTo53)));
    EXPECT_NE(PropertyListValue(twoTo53 + 1), PropertyListValue(static_cast<double>(twoTo53)));
    EXPECT_EQ(PropertyListValue(twoTo63), PropertyListValue(9223372036854775808.0));
    EXPECT_NE(PropertyListValue(twoTo63 + 1), PropertyListValue(9223372036854775808.0));
    EXPECT_NE(PropertyListValue(std::numeric_limits<std::int64_t>::max()),
              PropertyListValue(9223372036854775808.0));
    EXPECT_NE(PropertyListValue(std::numeric_limits<std::uint64_t>::max()),
              PropertyListValue(18446744073709551616.0));
    EXPECT_EQ(PropertyListValue(std::numeric_limits<std::int64_t>::min()),
              PropertyListValue(-9223372036854775808.0));
}

TEST(Equality, IntegersOfEqualBitsButOtherSignDiffer) {
    EXPECT_NE(PropertyListValue(-1), PropertyListValue(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_NE(PropertyListValue(std::numeric_limits<std::int64_t>::min()),
              PropertyListValue(twoTo63));
    EXPECT_NE(PropertyListValue(std::numeric_limits<std::int64_t>::max()),
              PropertyListValue(twoTo63));
}

TEST(Equality, ABooleanNeverEqualsANumber) {
    EXPECT_NE(PropertyListValue(true), PropertyListValue(1));
    EXPECT_NE(PropertyListValue(1.0), PropertyListValue(true));
    EXPECT_NE(PropertyListValue(false), PropertyListValue(0));
    EXPECT_EQ(PropertyListValue(true), PropertyListValue(true));
    EXPECT_NE(PropertyListValue(true), PropertyListValue(false));
}

TEST(Equality, ATreeWithNaNEqualsItself) {
    const double nan = std::nan("");
    EXPECT_EQ(PropertyListValue(nan), PropertyListValue(nan));
    EXPECT_NE(PropertyListValue(nan), PropertyListValue(0.0));
    EXPECT_NE(PropertyListValue(nan), PropertyListValue(0));
    EXPECT_EQ(NSArray({nan}), NSArray({nan}));
}

TEST(Equality, ValuesOfOtherKindsDiffer) {
    const PropertyListValue values[] = {nullptr,
                                        true,
                                        1,
                                        "1",
                                        NSDate(1),
                                        NSData("1"),
                                        NSColor{1, 1, 1, 1},
                                        NSNull{},
                                        NSArray{1},
                                        NSDictionary{{"1", 1}}};
    for (const auto& left : values) {
        for (const auto& right : values) {
            EXPECT_EQ(left == right, &left == &right) << left << " and " << right;
        }
    }
}

TEST(Equality, StringsDatesDataAndColoursAreComparedByContents) {
    EXPECT_EQ(PropertyListValue("abc"), PropertyListValue(std::string("abc")));
    EXPECT_NE(PropertyListValue("abc"), PropertyListValue("Abc"));
    EXPECT_NE(PropertyListValue(std::string("a\0b", 3)), PropertyListValue("a"));
    EXPECT_NE(PropertyListValue("\xC3\xA4"), PropertyListValue("a\xCC\x88"));
    EXPECT_EQ(PropertyListValue(NSDate(1.5)), PropertyListValue(NSDate(1.5)));
    EXPECT_NE(PropertyListValue(NSDate(1.5)), PropertyListValue(NSDate(1.25)));
    EXPECT_EQ(PropertyListValue(NSData("ab")), PropertyListValue(NSData("ab")));
    EXPECT_NE(PropertyListValue(NSData("ab")), PropertyListValue(NSData("ac")));
    EXPECT_EQ(PropertyListValue(NSData()), PropertyListValue(NSData("")));
    EXPECT_EQ(PropertyListValue(NSColor{1, 2, 3, 4}), PropertyListValue(NSColor{1, 2, 3, 4}));
    EXPECT_NE(PropertyListValue(NSColor{1, 2, 3, 4}), PropertyListValue(NSColor{1, 2, 3, 5}));
}

TEST(Equality, ArraysAreComparedInOrderAndDictionariesInAny) {
    EXPECT_NE(NSArray({1, 2}), NSArray({2, 1}));
    EXPECT_NE(NSArray({1, 2}), NSArray({1, 2, 3}));
    EXPECT_EQ(NSDictionary({{"a", 1}, {"b", 2}}), NSDictionary({{"b", 2}, {"a", 1}}));
    EXPECT_NE(NSDictionary({{"a", 1}}), NSDictionary({{"b", 1}}));
    EXPECT_NE(NSDictionary({{"a", NSArray{1, NSDictionary{{"x", 1}}}}}),
              NSDictionary({{"a", NSArray{1, NSDictionary{{"x", 2}}}}}));
    EXPECT_EQ(NSDictionary({{"a", 1}}), NSDictionary({{"a", 1}}).mutableCopy());
}

TEST(Equality, NullContainersEqualOnlyNullOnes) {
    EXPECT_EQ(NSArray(nullptr), NSArray(nullptr));
    EXPECT_FALSE(NSArray(nullptr) == NSArray());
    EXPECT_FALSE(NSDictionary(nullptr) == NSDictionary());
}

TEST(Equality, IntegerAndRealAreOneKindForTheComparisonWithADefault) {
    EXPECT_TRUE(PropertyListValue(1).isSameKindAs(2.5));
    EXPECT_FALSE(PropertyListValue(1).isSameKindAs(true));
    EXPECT_FALSE(PropertyListValue(1).isSameKindAs("1"));
    EXPECT_TRUE(PropertyListValue(NSDictionary()).isSameKindAs(NSMutableDictionary()));
    EXPECT_FALSE(PropertyListValue(NSArray()).isSameKindAs(NSDictionary()));
}

TEST(Equality, IdentityIsOfObjectsNotOfContents) {
    const NSArray array{1};
    EXPECT_TRUE(PropertyListValue(array).isIdenticalTo(array));
    EXPECT_FALSE(PropertyListValue(array).isIdenticalTo(NSArray({1})));
    EXPECT_TRUE(PropertyListValue(true).isIdenticalTo(true));
    EXPECT_FALSE(PropertyListValue(1).isIdenticalTo(1.0));
}
