// SPDX-License-Identifier: MIT
// Settings as text that gives the same tree again: JSON as a tree and by key path, property lists.
#include "Text/SettingsText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Tool/AnyValue.h"

using testing::HasSubstr;
using Tool::differencesBetween;
using Tool::DottedKeys;
using Tool::jsonOfSettings;
using Tool::jsonText;
using Tool::settingsFromText;

namespace {

NSDictionary anySettings() {
    const NSMutableDictionary root;
    const auto count = *rc::gen::inRange(0, 5);
    for (int index = 0; index < count; ++index)
        root.setObjectForKey(*ToolSupport::anyTree(3), *ToolSupport::anyText());
    RC_PRE(!NSPropertyListSerialization::dataWithPropertyList(root).error);
    return root;
}

/// Keys of arrays' elements are part of a value, not of a key path.
NSDictionary withoutDots(const NSDictionary& tree) {
    const NSMutableDictionary result;
    for (const auto& [key, value] : tree) {
        std::string name(key);
        std::replace(name.begin(), name.end(), '.', '_');
        result.setObjectForKey(
            value.isDictionary() ? PropertyListValue(withoutDots(value.dictionary())) : value,
            name);
    }
    return result;
}

std::string faultOf(const std::string& text) {
    try {
        settingsFromText(text, DottedKeys::Refused, "; advice");
    } catch (const Tool::Failure& failure) {
        EXPECT_EQ(failure.fault(), Tool::Fault::WrongValue);
        return failure.what();
    }
    return "";
}

std::string read(const std::string& text, DottedKeys dottedKeys = DottedKeys::Refused) {
    return jsonText(settingsFromText(text, dottedKeys));
}

}  // namespace

TEST(SettingsText, JSONGivesTheSameTreeAgain) {
    EXPECT_TRUE(rc::check([] {
        const NSDictionary tree = anySettings();
        RC_ASSERT(read(jsonOfSettings(tree)) == jsonText(tree));
    }));
}

TEST(SettingsText, ValuesByKeyPathGiveTheSameTreeAgain) {
    EXPECT_TRUE(rc::check([] {
        const NSDictionary tree = withoutDots(anySettings());
        const NSMutableDictionary values;
        for (const auto& leaf : differencesBetween(nullptr, tree))
            values.setObjectForKey(leaf.newValue, leaf.keyPath);
        RC_ASSERT(read(jsonText(values)) == jsonText(tree));
    }));
}

TEST(SettingsText, APropertyListGivesTheSameTreeAgain) {
    EXPECT_TRUE(rc::check([] {
        const NSDictionary tree = anySettings();
        const auto written = NSPropertyListSerialization::dataWithPropertyList(tree);
        const PropertyListValue kept =
            NSPropertyListSerialization::propertyListWithData(written.bytes).value;
        RC_ASSERT(read(written.bytes, DottedKeys::Kept) == jsonText(kept));
    }));
}

TEST(SettingsText, KeyPathsAndDictionariesAreMerged) {
    EXPECT_EQ(read(R"({"a":{"b":1},"a.c.d":2,"a.c":{"e":{}},"a.c.e.f":3,"x..y":4,".":5})"),
              R"({"":{"":5},"a":{"b":1,"c":{"d":2,"e":{"f":3}}},"x":{"":{"y":4}}})");
    EXPECT_EQ(read(R"({"a":{"b.c":1},"l.m":[{"n.o":2}]})"),
              R"({"a":{"b.c":1},"l":{"m":[{"n.o":2}]}})")
        << "only keys of the root are key paths";
}

TEST(SettingsText, KeyPathsThatExcludeEachOtherAreNamed) {
    EXPECT_EQ(faultOf(R"({"a.b":1,"a.b.c":2})"), "a.b has a value, so that there can be no a.b.c");
    EXPECT_EQ(faultOf(R"({"a":{"b":1},"a.b":1})"), "two values for one key path: a.b");
    EXPECT_EQ(faultOf(R"({"a":{"b":{"c":1}},"a.b":[]})"), "two values for one key path: a.b");
    EXPECT_EQ(faultOf(R"({"a":1,"a.\n":2})"), "a has a value, so that there can be no \"a.\\n\"");
}

TEST(SettingsText, KeysWithDotsAreKeptWhereTheTextSaysSo) {
    EXPECT_EQ(read(R"({"$dictionary":{"a.b":1,"c":2}})"), R"({"a.b":1,"c":2})");
    EXPECT_EQ(read(R"({"a.b":1,"a.b.c":2})", DottedKeys::Kept), R"({"a.b":1,"a.b.c":2})");
    EXPECT_EQ(read("{ \"a.b\" = c; }", DottedKeys::Kept), R"({"a.b":"c"})");
    EXPECT_EQ(faultOf("{ \"a.b\" = c; }"),
              "a key holds a dot, so that no key path reaches it: a.b; advice");
}

TEST(SettingsText, TooManyLevelsAreRefused) {
    std::string deep = "a";
    for (int level = 0; level < 100'000; ++level) deep += ".a";
    EXPECT_THAT(faultOf("{\"" + deep + "\":1}"), HasSubstr("512 levels"));
}
