// SPDX-License-Identifier: MIT
// What a settings file keeps of a value.
#include "Text/FileForm.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"
#include "Tool/AnyValue.h"

using Tool::hasFractionsOfSeconds;
using Tool::isKeptAs;
using ToolSupport::anyTree;

namespace {

PropertyListValue inFile(const PropertyListValue& value) {
    return NSPropertyListSerialization::propertyListWithData(
               NSPropertyListSerialization::dataWithPropertyList(value).bytes)
        .value;
}

void expectNotKept(const PropertyListValue& given, const PropertyListValue& kept) {
    EXPECT_FALSE(isKeptAs(given, kept));
    EXPECT_FALSE(isKeptAs(NSArray{given}, NSArray{kept}));
    EXPECT_FALSE(isKeptAs(NSDictionary{{"key", given}}, NSDictionary{{"key", kept}}));
}

}  // namespace

TEST(FileForm, IsKeptByAFile) {
    EXPECT_TRUE(rc::check([] {
        const PropertyListValue value = *anyTree(3);
        RC_PRE(!NSPropertyListSerialization::dataWithPropertyList(value).error);
        RC_ASSERT(isKeptAs(value, inFile(value)));
    }));
}

TEST(FileForm, LosesFractionsOfSecondsAlone) {
    EXPECT_TRUE(hasFractionsOfSeconds(NSArray{NSDictionary{{"key", NSDate(0.5)}}}));
    EXPECT_TRUE(hasFractionsOfSeconds(NSDate(-0.25)));
    EXPECT_FALSE(hasFractionsOfSeconds(NSArray{NSDate(-1), 0.5, "0.5"}));
    EXPECT_TRUE(isKeptAs(NSDate(0.5), inFile(NSDate(0.5))));
    EXPECT_FALSE(inFile(NSDate(0.5)) == PropertyListValue(NSDate(0.5)));
}

TEST(FileForm, AnotherKindOrValueIsNotKept) {
    expectNotKept(1, 1.0);
    expectNotKept(1, true);
    expectNotKept("1", 1);
    expectNotKept("a", "b");
    expectNotKept(NSDate(0), NSDate(1));
    expectNotKept(NSData("a"), NSData("b"));
    EXPECT_FALSE(isKeptAs(nullptr, 1));
    EXPECT_FALSE(isKeptAs(1, nullptr));
    EXPECT_TRUE(isKeptAs(nullptr, nullptr));
    expectNotKept(NSArray{1}, NSArray{1, 2});
    expectNotKept(NSDictionary{{"a", 1}}, NSDictionary{{"b", 1}});
}

TEST(FileForm, RefusesWhatNoFileHolds) {
    EXPECT_THROW(Tool::requireStorable(NSArray{NSNull()}), Tool::Failure);
    EXPECT_THROW(Tool::requireUTF8("\xff"), Tool::Failure);
    EXPECT_NO_THROW(Tool::requireStorable(NSArray{"a"}));
    EXPECT_NO_THROW(Tool::requireUTF8("\u00e4"));
}
