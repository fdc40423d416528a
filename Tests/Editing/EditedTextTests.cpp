// SPDX-License-Identifier: MIT
// Values as the text of an editor and back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>

#include "Edits/EditedText.h"
#include "Reporting/Failure.h"
#include "Text/JSON.h"
#include "Text/JSONReader.h"
#include "Tool/AnyValue.h"

using testing::HasSubstr;
using Tool::editedText;
using Tool::jsonText;
using Tool::valueFromEditedText;
using Kind = PropertyListValue::Kind;

namespace {

const std::vector<PropertyListValue>& values() {
    using Limits = std::numeric_limits<double>;
    static const auto& values = *new std::vector<PropertyListValue>{
        true,
        false,
        0,
        -5,
        1234567,
        9007199254740993,
        18446744073709551615U,
        std::numeric_limits<std::int64_t>::min(),
        0.1,
        1.0,
        -0.0,
        1e300,
        5e-324,
        Limits::infinity(),
        -Limits::infinity(),
        Limits::quiet_NaN(),
        "",
        "true",
        "007",
        " blank ",
        "1 0.321 0.341 1",
        "two\nlines\n",
        "äöü€😀",
        NSDate(0),
        NSDate(694224000.125),
        NSDate(0.1),
        NSDate(1e12),
        NSData("\x01\x02"),
        NSData(""),
        NSArray{},
        NSArray{1, 1.0, "1", true, NSArray{NSData("x")}},
        NSDictionary{},
        NSDictionary{{"$date", "none"}},
        NSDictionary{
            {"a.b", NSDictionary{{"", NSArray{1, 9007199254740993, 18446744073709551615U}}}},
            {"at", NSDate(0.5)},
            {"text", "a text that makes the whole of it longer than a line of an editor"}},
    };
    return values;
}

std::string refusal(const std::string& text, Kind kind,
                    const PropertyListValue& original = nullptr) {
    try {
        valueFromEditedText(text, kind, original);
    } catch (const Tool::Failure& failure) {
        return failure.what();
    }
    return "taken";
}

}  // namespace

TEST(EditedText, ThatIsUntouchedGivesTheValueItself) {
    for (const PropertyListValue& value : values())
        for (const Kind kind : {value.kind(), Kind::Null, Kind::Color, Kind::Boolean})
            EXPECT_TRUE(valueFromEditedText(editedText(value), kind, value).isIdenticalTo(value))
                << value;
}

TEST(EditedText, ThatWasEditedAndEditedBackGivesAnEqualValue) {
    for (const PropertyListValue& value : values()) {
        if (value == PropertyListValue(NSDate(1e12))) continue;  // no text of a date
        const PropertyListValue back =
            valueFromEditedText(editedText(value), value.kind(), nullptr);
        EXPECT_EQ(back.kind(), value.kind()) << value;
        EXPECT_EQ(jsonText(back), jsonText(value));
    }
}

RC_GTEST_PROP(EditedText, OfAnyValueReadsBackAsTheSameValue, ()) {
    const PropertyListValue value = *ToolSupport::anyTree(3);
    const std::string text = editedText(value);
    RC_ASSERT(valueFromEditedText(text, value.kind(), value).isIdenticalTo(value));
    if (value.isArray() || value.isDictionary())
        RC_ASSERT(jsonText(valueFromEditedText(text, value.kind(), nullptr)) == jsonText(value));
}

TEST(EditedText, OfALongContainerHasALineForEachEntry) {
    const NSArray few{1, 2};
    EXPECT_EQ(editedText(few), "[1,2]");
    const std::string filler(60, 'x');
    EXPECT_EQ(editedText(NSArray{1, filler}), "[\n  1,\n  \"" + filler + "\"\n]");
}

TEST(EditedText, KeepsTheKindOfTheEditor) {
    EXPECT_EQ(jsonText(valueFromEditedText("true", Kind::String, "x")), R"("true")");
    EXPECT_EQ(jsonText(valueFromEditedText("2", Kind::Real, 1.5)), "2.0");
    EXPECT_EQ(jsonText(valueFromEditedText("2", Kind::Null, "x")), "2");
    EXPECT_EQ(jsonText(valueFromEditedText("5", Kind::Real, nullptr)), "5.0");
    EXPECT_EQ(jsonText(valueFromEditedText(" 9007199254740993\n", Kind::Integer, 1)),
              "9007199254740993");
    EXPECT_EQ(jsonText(valueFromEditedText("18446744073709551615", Kind::Integer, 1)),
              "18446744073709551615");
    EXPECT_EQ(jsonText(valueFromEditedText("", Kind::String, "x")), R"("")");
}

TEST(EditedText, OfAColorKeepsTheDigitsOfItsNumbers) {
    EXPECT_EQ(jsonText(valueFromEditedText("1 0.321000  0.341", Kind::Color, "1 0 0 1")),
              R"("1 0.321000 0.341 1")");
    EXPECT_EQ(jsonText(valueFromEditedText("#ff0000", Kind::Color, "x")), R"("1 0 0 1")");
    EXPECT_THAT(refusal("1 0", Kind::Color), HasSubstr("neither R G B [A]"));
    EXPECT_THAT(refusal("1 0 red", Kind::Color), HasSubstr("not a number: red"));
}

TEST(EditedText, ThatIsWrongIsNamedWithItsPlace) {
    EXPECT_EQ(refusal("12x4", Kind::Integer), "not a decimal integer: 12x4, at character 3");
    EXPECT_EQ(refusal("1.0", Kind::Integer, 1.0), "taken");  // untouched
    EXPECT_EQ(refusal("1.0", Kind::Integer), "not a decimal integer: 1.0, at character 2");
    EXPECT_THAT(refusal("18446744073709551616", Kind::Integer), HasSubstr("not between -2^63"));
    EXPECT_THAT(refusal("1,5", Kind::Real), HasSubstr("at character 2"));
    EXPECT_THAT(refusal("AQI*", Kind::Data), HasSubstr("not base64: AQI*, at character 4"));
    EXPECT_THAT(refusal("2020-13-01T00:00:00Z", Kind::Date), HasSubstr("not a date"));
    EXPECT_EQ(refusal("yes", Kind::Boolean), "not true or false: yes");
    EXPECT_EQ(refusal("  ", Kind::Boolean), "a value is missing");
    EXPECT_THAT(refusal("\xff", Kind::String), HasSubstr("UTF-8"));
}

TEST(EditedText, ThatIsWrongJSONIsNamedWithLineAndColumn) {
    EXPECT_THAT(refusal("[1,\n 2,,3]", Kind::Array), HasSubstr("line 2, column 4"));
    EXPECT_THAT(refusal(" {}", Kind::Array),
                HasSubstr("line 1, column 2: a dictionary, not an array"));
    EXPECT_THAT(refusal("", Kind::Dictionary), HasSubstr("line 1, column 1"));
    EXPECT_THAT(refusal("[null]", Kind::Array), HasSubstr("null is no value of a setting"));
}
