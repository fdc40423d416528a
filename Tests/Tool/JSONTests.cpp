// SPDX-License-Identifier: MIT
// Values as JSON and back.
#include "Text/JSON.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"
#include "Tool/AnyValue.h"

using Tool::jsonText;
using Tool::valueFromJSON;
using ToolSupport::anyTree;

namespace {

/// Tells kinds apart, which equality does not.
std::string fileForm(const PropertyListValue& value) {
    return NSPropertyListSerialization::dataWithPropertyList(value).bytes;
}

std::string refusal(std::string_view text) {
    try {
        valueFromJSON(text);
    } catch (const Tool::Failure& failure) {
        EXPECT_EQ(failure.fault(), Tool::Fault::WrongValue);
        return failure.what();
    }
    return {};
}

}  // namespace

TEST(JSON, AnyTreeComesBack) {
    EXPECT_TRUE(rc::check([] {
        const PropertyListValue tree = *anyTree(4);
        const std::string text = jsonText(tree);
        const PropertyListValue read = valueFromJSON(text);
        RC_ASSERT(read == tree);
        RC_ASSERT(fileForm(read) == fileForm(tree));
        RC_ASSERT(jsonText(read) == text);
    }));
}

TEST(JSON, HoldsNoControlCharacter) {
    EXPECT_TRUE(rc::check([] {
        const std::string text = jsonText(*anyTree(3));
        for (std::size_t index = 0; index < text.size(); ++index) {
            const auto byte = static_cast<unsigned char>(text[index]);
            RC_ASSERT(byte >= 0x20 && byte != 0x7F);
            RC_ASSERT(byte != 0xC2 || static_cast<unsigned char>(text[index + 1]) >= 0xA0);
        }
    }));
}

TEST(JSON, TextOfOtherLanguagesStandsAsItIs) {
    EXPECT_EQ(jsonText("ä€😀\xc2\xa0"), "\"ä€😀\xc2\xa0\"");
}

TEST(JSON, RealsAlwaysLookLikeReals) {
    EXPECT_EQ(jsonText(1.0), "1.0");
    EXPECT_EQ(jsonText(-0.0), "-0.0");
    EXPECT_EQ(jsonText(1e22), "1e+22");
    EXPECT_EQ(jsonText(123456789012.0), "123456789012.0");
    EXPECT_TRUE(valueFromJSON("1e2").isReal());
    EXPECT_TRUE(valueFromJSON("1.0").isReal());
    EXPECT_TRUE(valueFromJSON("-0.0").isReal());
    EXPECT_TRUE(std::signbit(valueFromJSON("-0.0").doubleValue()));
    EXPECT_TRUE(valueFromJSON("100").isInteger());
}

TEST(JSON, DictionariesThatLookLikeSomethingElseAreEscaped) {
    EXPECT_EQ(jsonText(NSDictionary{{"$date", "x"}}), R"({"$dictionary":{"$date":"x"}})");
    EXPECT_EQ(jsonText(NSDictionary{{"$dictionary", NSDictionary{{"$real", 1}}}}),
              R"({"$dictionary":{"$dictionary":{"$dictionary":{"$real":1}}}})");
    EXPECT_EQ(jsonText(NSDictionary{{"$date", "x"}, {"b", 1}}), R"({"$date":"x","b":1})");
    EXPECT_EQ(jsonText(NSDictionary{{"$other", 1}}), R"({"$other":1})");
}

TEST(JSON, AnEscapeMayStandWhereNoneIsNeeded) {
    EXPECT_EQ(valueFromJSON(R"({"$dictionary":{"a":1}})"),
              PropertyListValue(NSDictionary{{"a", 1}}));
    EXPECT_EQ(valueFromJSON(R"({"$dictionary":{"a":1},"b":2})"),
              PropertyListValue(NSDictionary{{"$dictionary", NSDictionary{{"a", 1}}}, {"b", 2}}));
}

TEST(JSON, DatesKeepTheirFractions) {
    EXPECT_EQ(jsonText(NSDate(0.25)), R"({"$date":"2001-01-01T00:00:00.25Z"})");
    EXPECT_EQ(jsonText(NSDate(-0.25)), R"({"$date":"2000-12-31T23:59:59.75Z"})");
    EXPECT_EQ(jsonText(NSDate(600'000'000.1)), R"({"$date":"2020-01-06T10:40:00.1Z"})");
    EXPECT_EQ(jsonText(NSDate(-1e-20)), R"({"$date":"2001-01-01T00:00:00Z"})");
    EXPECT_EQ(valueFromJSON(R"({"$date":"2001-01-01T00:00:00.25Z"})").date(), NSDate(0.25));
}

TEST(JSON, DatesKeepFractionsOfManyDigits) {
    EXPECT_EQ(jsonText(NSDate(1e-20)), R"({"$date":"2001-01-01T00:00:00.00000000000000000001Z"})");
    EXPECT_EQ(jsonText(NSDate(-0.05)), R"({"$date":"2000-12-31T23:59:59.95Z"})")
        << "nearest, where no fraction reads back";
    for (const double seconds : {1e-20, 0.012345678901234568, 5e-324})
        EXPECT_EQ(valueFromJSON(jsonText(NSDate(seconds))).date(), NSDate(seconds)) << seconds;
}

TEST(JSON, DatesBeyondTheCalendarAreSeconds) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(jsonText(NSDate(1e20)), R"({"$date":1e+20})");
    EXPECT_EQ(jsonText(NSDate(infinity)), R"({"$date":{"$real":"inf"}})");
    EXPECT_EQ(valueFromJSON(R"({"$date":1e+20})").date(), NSDate(1e20));
    EXPECT_EQ(valueFromJSON(R"({"$date":{"$real":"inf"}})").date(), NSDate(infinity));
    EXPECT_EQ(jsonText(NSDate(252'423'993'599)), R"({"$date":"9999-12-31T23:59:59Z"})");
    EXPECT_EQ(jsonText(NSDate(252'423'993'600)), R"({"$date":252423993600.0})");
    EXPECT_EQ(jsonText(NSDate(-63'113'904'000)), R"({"$date":"0001-01-01T00:00:00Z"})");
}

TEST(JSON, ManyLevelsAreRefusedAndFewerAreNot) {
    const auto nested = [](std::size_t levels) {
        return std::string(levels, '[') + std::string(levels, ']');
    };
    EXPECT_EQ(refusal(nested(512)), "");
    EXPECT_EQ(refusal(nested(513)), "wrong JSON at line 1, column 513: more than 512 levels");
    EXPECT_EQ(refusal(std::string(10'000'000, '[')),
              "wrong JSON at line 1, column 1026: more than 512 levels");
}

TEST(JSON, TheDeepestTreeComesBackThoughEachLevelIsEscaped) {
    PropertyListValue tree = NSDate(0);
    for (int level = 0; level < 512; ++level) tree = NSDictionary{{"$date", tree}};
    EXPECT_EQ(valueFromJSON(jsonText(tree)), tree);
}
