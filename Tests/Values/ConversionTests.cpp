// SPDX-License-Identifier: MIT
// Values made from C++ types, and the lenient conversions back.

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>

#include "Platform/Values/PropertyListValue.h"

using namespace QRVPlatform;

namespace {

constexpr auto maximum = std::numeric_limits<std::int64_t>::max();
constexpr auto minimum = std::numeric_limits<std::int64_t>::min();
constexpr auto infinity = std::numeric_limits<double>::infinity();

std::string printed(const PropertyListValue& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

}  // namespace

TEST(Conversions, KindsAreToldApart) {
    using Kind = PropertyListValue::Kind;
    EXPECT_EQ(PropertyListValue(true).kind(), Kind::Boolean);
    EXPECT_EQ(PropertyListValue(1).kind(), Kind::Integer);
    EXPECT_EQ(PropertyListValue(1.0).kind(), Kind::Real);
    EXPECT_EQ(PropertyListValue(1.0F).kind(), Kind::Real);
    EXPECT_EQ(PropertyListValue("x").kind(), Kind::String);
    EXPECT_EQ(PropertyListValue(static_cast<const char*>(nullptr)).kind(), Kind::Null);
    EXPECT_FALSE((std::is_convertible_v<int*, PropertyListValue>));
}

TEST(Conversions, IntegersReachFromMinusTwoToThe63ToTwoToThe64) {
    EXPECT_EQ(PropertyListValue(minimum).stringValue(), "-9223372036854775808");
    const PropertyListValue largest = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(largest.stringValue(), "18446744073709551615");
    EXPECT_EQ(largest.unsignedValue(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(largest.integerValue(), maximum);
    EXPECT_EQ(largest.doubleValue(), 18446744073709551616.0);
    EXPECT_EQ(PropertyListValue(-1).unsignedValue(), 0U);
    EXPECT_EQ(PropertyListValue(5).unsignedValue(), 5U);
}

TEST(Conversions, ANumberIsTrueWhenItIsNotZero) {
    EXPECT_TRUE(PropertyListValue(2).boolValue());
    EXPECT_TRUE(PropertyListValue(-0.5).boolValue());
    EXPECT_FALSE(PropertyListValue(0).boolValue());
    EXPECT_FALSE(PropertyListValue(-0.0).boolValue());
}

TEST(Conversions, AStringIsTrueByItsFirstMeaningfulCharacter) {
    for (const char* text :
         {"Y", "yes", "T", "true", "1", "9", " \t\n 1", "+1", "-5", "000y", " -0007"}) {
        EXPECT_TRUE(PropertyListValue(text).boolValue()) << text;
    }
    for (const char* text : {"", "0", "no", "false", "on", "+", "--1", "- 1", "0.5", "00", "x1"}) {
        EXPECT_FALSE(PropertyListValue(text).boolValue()) << text;
    }
}

TEST(Conversions, WhatIsNeitherNumberNorStringIsFalseAndZero) {
    for (const PropertyListValue& value :
         {PropertyListValue(), PropertyListValue(NSDate(1)), PropertyListValue(NSData("1")),
          PropertyListValue(NSArray{1}), PropertyListValue(NSDictionary{{"1", 1}}),
          PropertyListValue(NSNull{})}) {
        EXPECT_FALSE(value.boolValue());
        EXPECT_EQ(value.integerValue(), 0);
        EXPECT_EQ(value.doubleValue(), 0);
    }
}

TEST(Conversions, ToIntegerCutsTowardsZeroAndStopsAtTheEnds) {
    EXPECT_EQ(PropertyListValue(-2.9).integerValue(), -2);
    EXPECT_EQ(PropertyListValue(1e30).integerValue(), maximum);
    EXPECT_EQ(PropertyListValue(-infinity).integerValue(), minimum);
    EXPECT_EQ(PropertyListValue(std::nan("")).integerValue(), 0);
    EXPECT_EQ(PropertyListValue(true).integerValue(), 1);
    EXPECT_EQ(PropertyListValue(" 42 apples").integerValue(), 42);
    EXPECT_EQ(PropertyListValue("+7").integerValue(), 7);
    EXPECT_EQ(PropertyListValue("-7").integerValue(), -7);
    EXPECT_EQ(PropertyListValue("+-7").integerValue(), 0);
    EXPECT_EQ(PropertyListValue("0x10").integerValue(), 0);
    EXPECT_EQ(PropertyListValue("99999999999999999999").integerValue(), maximum);
    EXPECT_EQ(PropertyListValue("-99999999999999999999").integerValue(), minimum);
    EXPECT_EQ(PropertyListValue("word").integerValue(), 0);
}

TEST(Conversions, ToRealReadsDecimalNumbersOnly) {
    EXPECT_EQ(PropertyListValue("0.5").doubleValue(), 0.5);
    EXPECT_EQ(PropertyListValue(" +1.5e3x").doubleValue(), 1500);
    EXPECT_EQ(PropertyListValue("-.25").doubleValue(), -0.25);
    EXPECT_EQ(PropertyListValue("0x10").doubleValue(), 0);
    EXPECT_EQ(PropertyListValue("inf").doubleValue(), 0);
    EXPECT_EQ(PropertyListValue("-nan").doubleValue(), 0);
    EXPECT_EQ(PropertyListValue("+-1").doubleValue(), 0);
    EXPECT_EQ(PropertyListValue("1e999").doubleValue(), infinity);
    EXPECT_EQ(PropertyListValue("-1e999").doubleValue(), -infinity);
    EXPECT_EQ(PropertyListValue("1e-999").doubleValue(), 0);
    EXPECT_EQ(PropertyListValue("0.000001e-400").doubleValue(), 0);
    EXPECT_EQ(PropertyListValue("1000000e400").doubleValue(), infinity);
    EXPECT_EQ(PropertyListValue("0.321").floatValue(), 0.321F);
}

TEST(Conversions, ToStringIsTheShortestThatReadsBack) {
    EXPECT_EQ(PropertyListValue(0.1).stringValue(), "0.1");
    EXPECT_EQ(PropertyListValue(1.0).stringValue(), "1");
    EXPECT_EQ(PropertyListValue(40).stringValue(), "40");
    EXPECT_EQ(PropertyListValue(true).stringValue(), "1");
    EXPECT_EQ(PropertyListValue(NSArray{1}).stringValue(), "");
    EXPECT_EQ(PropertyListValue(NSDate::dateWithTimeIntervalSince1970(0)).stringValue(),
              "1970-01-01T00:00:00Z");
    EXPECT_EQ(PropertyListValue(NSDate::dateWithTimeIntervalSince1970(-0.75)).stringValue(),
              "1969-12-31T23:59:59.25Z");
    EXPECT_EQ(PropertyListValue(NSDate(std::nan(""))).stringValue(), "invalid date");
}

TEST(Conversions, DatesOfAllYearsHaveText) {
    const auto text = [](double seconds) {
        return PropertyListValue(NSDate(seconds)).stringValue();
    };
    EXPECT_EQ(text(-63145526400.5), "-0001-12-31T23:59:59.5Z");
    EXPECT_EQ(text(252423993600), "10000-01-01T00:00:00Z");
    EXPECT_EQ(text(0x1p53), "285428782-11-12T07:36:32Z");
    EXPECT_EQ(text(0x1p62), "146138514314-06-20T07:45:04Z");
    EXPECT_EQ(text(-0x1p62), "-146138510313-07-15T16:14:56Z");
    EXPECT_EQ(text(std::nextafter(0x1p62, 0x1p63)), "invalid date");
    EXPECT_EQ(text(-std::numeric_limits<double>::infinity()), "invalid date");
    EXPECT_EQ(text(-0.0000004), "2001-01-01T00:00:00Z") << "rounded to microseconds";
    EXPECT_EQ(text(0.9999996), "2001-01-01T00:00:01Z");
    EXPECT_EQ(text(0.0000006), "2001-01-01T00:00:00.000001Z");
}

TEST(Conversions, TheUsersLocaleChangesNothing) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "the locale is not installed";
    EXPECT_EQ(PropertyListValue("1,5").doubleValue(), 1);
    EXPECT_EQ(PropertyListValue("1.5").doubleValue(), 1.5);
    EXPECT_EQ(PropertyListValue(1.5).stringValue(), "1.5");
}

TEST(Conversions, ValuesPrintWithTheirKinds) {
    EXPECT_EQ(printed(NSDictionary{{"b", NSArray{"x\"y", 1, 1.0, true}}, {"a", NSDictionary()}}),
              R"({a = {}, b = ["x\"y", 1, 1.0, true]})");
    EXPECT_EQ(printed(nullptr), "(null)");
    EXPECT_EQ(printed(NSData("\x01\xFF")), "<01ff>");
    EXPECT_EQ(printed(NSColor{1, 0.5, 0, 1}), "color(1 0.5 0 1)");
    EXPECT_EQ(description("bare"), "bare");
    EXPECT_EQ(description(NSNull{}), "<null>");
}

TEST(Conversions, ADeepTreeIsPrintedUpToALimit) {
    PropertyListValue value = 1;
    for (int level = 0; level < 100000; ++level) value = NSArray({value});
    EXPECT_EQ(printed(value), std::string(65, '[') + "..." + std::string(65, ']'));
}

TEST(Conversions, StrictAccessAnswersOnlyForItsKind) {
    const PropertyListValue text = "text";
    const PropertyListValue number = 1;
    EXPECT_EQ(text.stringView(), "text");
    EXPECT_EQ(number.stringView(), "");
    EXPECT_TRUE(text.array().isNull());
    EXPECT_TRUE(text.dictionary().isNull());
    EXPECT_EQ(text.data().size(), 0U);
    EXPECT_EQ(PropertyListValue(NSDate(2)).date(), NSDate(2));
    EXPECT_EQ(PropertyListValue(NSColor{1, 2, 3, 4}).color(), (NSColor{1, 2, 3, 4}));
}
