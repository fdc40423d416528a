// SPDX-License-Identifier: MIT
// What a settings file keeps of a value.
#include "Text/FileForm.h"

#include <gtest/gtest.h>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"

using Tool::hasFractionsOfSeconds;

namespace {

PropertyListValue inFile(const PropertyListValue& value) {
    return NSPropertyListSerialization::propertyListWithData(
               NSPropertyListSerialization::dataWithPropertyList(value).bytes)
        .value;
}

}  // namespace

TEST(FileForm, LosesFractionsOfSecondsAlone) {
    EXPECT_TRUE(hasFractionsOfSeconds(NSArray{NSDictionary{{"key", NSDate(0.5)}}}));
    EXPECT_TRUE(hasFractionsOfSeconds(NSDate(-0.25)));
    EXPECT_FALSE(hasFractionsOfSeconds(NSArray{NSDate(-1), 0.5, "0.5"}));
    EXPECT_FALSE(inFile(NSDate(0.5)) == PropertyListValue(NSDate(0.5)));
    EXPECT_EQ(inFile(NSDate(-1)), PropertyListValue(NSDate(-1)));
}

TEST(FileForm, RefusesWhatNoFileHolds) {
    EXPECT_THROW(Tool::requireStorable(NSArray{NSNull()}), Tool::Failure);
    EXPECT_THROW(Tool::requireUTF8("\xff"), Tool::Failure);
    EXPECT_NO_THROW(Tool::requireStorable(NSArray{"a"}));
    std::string keyPath = "a";
    for (int level = 0; level < 600; ++level) keyPath += ".a";
    EXPECT_THROW(Tool::requireStorable(1, keyPath), Tool::Failure);
    EXPECT_NO_THROW(Tool::requireStorable(1, "a.a"));
    EXPECT_NO_THROW(Tool::requireUTF8("\u00e4"));
}
