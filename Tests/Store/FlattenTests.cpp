// SPDX-License-Identifier: MIT
// Trees as flat maps from key paths to leaves.
#include <gtest/gtest.h>

#include "QRVSettings/NSDictionary+QRV.h"

using NSDictionaryQRV::flatten;
using NSDictionaryQRV::hasValues;

namespace {

NSDictionary flattened(const NSDictionary& tree) {
    const NSMutableDictionary results;
    flatten(tree, results);
    return results;
}

}  // namespace

TEST(Flatten, LeavesStandUnderTheirKeyPaths) {
    EXPECT_EQ(flattened({{"A", NSDictionary{{"B", 1}}}, {"C", "x"}}),
              NSDictionary({{"A.B", 1}, {"C", "x"}}));
}

TEST(Flatten, AnArrayIsOneLeafAlsoWhenEmpty) {
    EXPECT_EQ(
        flattened({{"A", NSDictionary{{"L", NSArray{NSDictionary{{"x", 1}}}}}}, {"E", NSArray{}}}),
        NSDictionary({{"A.L", NSArray{NSDictionary{{"x", 1}}}}, {"E", NSArray{}}}));
}

TEST(Flatten, DictionariesWithoutLeavesContributeNothing) {
    EXPECT_EQ(flattened({{"A", NSDictionary{}}, {"B", NSDictionary{{"C", NSDictionary{}}}}}),
              NSDictionary());
}

TEST(Flatten, OnlyAMissingPrefixCountsAsNone) {
    const NSMutableDictionary results;
    flatten(NSDictionary{{"A", 1}}, results, "");
    flatten(NSDictionary{{"A", 2}}, results, "P");
    flatten(NSDictionary{{"A", 3}}, results, std::nullopt);
    EXPECT_EQ(results, NSDictionary({{".A", 1}, {"P.A", 2}, {"A", 3}}));
}

TEST(Flatten, EntriesOfTheSameKeyPathAreReplacedAndOthersKept) {
    const NSMutableDictionary results;
    results.setObjectForKey("old", "A");
    results.setObjectForKey("kept", "B");
    flatten(NSDictionary{{"A", "new"}}, results);
    EXPECT_EQ(results, NSDictionary({{"A", "new"}, {"B", "kept"}}));
}

TEST(Flatten, AValueThatIsNoDictionaryAddsNothing) {
    const NSMutableDictionary results;
    flatten(PropertyListValue(5), results, "P");
    flatten(NSArray{1}, results, "P");
    flatten(nullptr, results, "P");
    EXPECT_EQ(results.count(), 0U);
}

TEST(HasValues, IsTrueWhenThereIsALeafAtAnyDepth) {
    EXPECT_FALSE(hasValues(NSDictionary{}));
    EXPECT_FALSE(hasValues(NSDictionary{{"A", NSDictionary{{"B", NSDictionary{}}}}}));
    EXPECT_TRUE(hasValues(NSDictionary{{"A", NSDictionary{{"B", NSArray{}}}}}));
    EXPECT_TRUE(hasValues(NSDictionary{{"A", NSDictionary{}}, {"B", false}}));
}
