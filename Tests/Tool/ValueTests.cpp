// SPDX-License-Identifier: MIT
// The values of `set`: how text becomes a value, and which text is refused.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::Outcome;
using ToolSupport::run;

namespace {

struct Sample {
    std::vector<std::string> arguments;  ///< after `set KEYPATH`
    std::string json;                    ///< what is stored then
};

void expectStored(const Sample& sample) {
    std::filesystem::remove(ToolSupport::settingsFile());
    std::vector<std::string> arguments = {"set", "a.b"};
    arguments.insert(arguments.end(), sample.arguments.begin(), sample.arguments.end());
    const Outcome outcome = run(arguments);
    ASSERT_EQ(outcome.exitCode, 0) << testing::PrintToString(arguments) << outcome.errors;
    EXPECT_EQ(outcome.output + outcome.errors, "") << testing::PrintToString(arguments);
    EXPECT_EQ(run({"get", "a.b", "--json"}).output, sample.json + "\n");
}

void expectRefused(const std::vector<std::string>& arguments, const std::string& reason = "",
                   const std::string& input = "") {
    std::vector<std::string> all = {"set", "a.b"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Outcome outcome = run(all, {input, {}});
    EXPECT_EQ(outcome.exitCode, 5) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: ")) << testing::PrintToString(arguments);
    EXPECT_THAT(outcome.errors, HasSubstr(reason));
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

}  // namespace

TEST(Values, TheTextDecidesTheKind) {
    const std::vector<Sample> samples = {
        {{"true"}, "true"},
        {{"false"}, "false"},
        {{"True"}, "\"True\""},
        {{"0"}, "0"},
        {{"-0"}, "0"},
        {{"-5"}, "-5"},
        {{"007"}, "7"},
        {{"-9223372036854775808"}, "-9223372036854775808"},
        {{"18446744073709551615"}, "18446744073709551615"},
        {{"0.5"}, "0.5"},
        {{"1."}, "1.0"},
        {{"-.5"}, "-0.5"},
        {{"-0.0"}, "-0.0"},
        {{"1e3"}, "1000.0"},
        {{"1E-2"}, "0.01"},
        {{"-1.5e300"}, "-1.5e+300"},
        {{"5e-324"}, "5e-324"},
        {{""}, "\"\""},
        {{"hello"}, "\"hello\""},
        {{"1.2.3"}, "\"1.2.3\""},
        {{"0x10"}, "\"0x10\""},
        {{"+5"}, "\"+5\""},
        {{" 5"}, "\" 5\""},
        {{"e5"}, "\"e5\""},
        {{"1e"}, "\"1e\""},
        {{"nan"}, "\"nan\""},
        {{"2020-01-01T00:00:00Z"}, "\"2020-01-01T00:00:00Z\""},
        {{"äöü \t x"}, "\"äöü \\t x\""},
        {{"[]"}, "[]"},
        {{"{}"}, "{}"},
        {{"\"5\""}, "\"5\""},
        {{R"({"b":[1,1.0,"x",true],"a":{}} )"}, R"({"a":{},"b":[1,1.0,"x",true]})"},
    };
    for (const Sample& sample : samples) expectStored(sample);
}

TEST(Values, TypeForcesTheKind) {
    const std::vector<Sample> samples = {
        {{"--type", "bool", "true"}, "true"},
        {{"--type", "int", "-5"}, "-5"},
        {{"--type", "real", "5"}, "5.0"},
        {{"--type", "real", "18446744073709551616"}, "1.8446744073709552e+19"},
        {{"--type", "real", "nan"}, "{\"$real\":\"nan\"}"},
        {{"--type", "real", "inf"}, "{\"$real\":\"inf\"}"},
        {{"-inf", "--type", "real"}, "{\"$real\":\"-inf\"}"},
        {{"--type", "string", "true"}, "\"true\""},
        {{"--type", "string", "[1"}, "\"[1\""},
        {{"--type", "date", "2020-02-29T23:59:59Z"}, "{\"$date\":\"2020-02-29T23:59:59Z\"}"},
        {{"--type", "date", "0000-01-01T00:00:00Z"}, "{\"$date\":\"0000-01-01T00:00:00Z\"}"},
        {{"--type", "date", "9999-12-31T23:59:59Z"}, "{\"$date\":\"9999-12-31T23:59:59Z\"}"},
        {{"--type", "data", ""}, "{\"$data\":\"\"}"},
        {{"--type", "data", "AQ=="}, "{\"$data\":\"AQ==\"}"},
        {{"--type", "data", "AQI="}, "{\"$data\":\"AQI=\"}"},
        {{"--type", "data", "AQ ID\n/+8="}, "{\"$data\":\"AQID/+8=\"}"},
        {{"--type", "json", "5"}, "5"},
        {{"--type", "json", "-5.5"}, "-5.5"},
        {{"--type", "json", " true\n"}, "true"},
    };
    for (const Sample& sample : samples) expectStored(sample);
}

TEST(Values, WhatIsNotOfTheTypeIsRefused) {
    for (const char* text : {"yes", "1", "TRUE", ""}) expectRefused({"--type", "bool", text});
    for (const char* text : {"5.0", "five", "", "+5", "0x5", "5 ", "9223372036854775808x"})
        expectRefused({"--type", "int", text});
    for (const char* text : {"five", "", ".", "1e", "0x1p3", "infinity", "NaN", "1,5"})
        expectRefused({"--type", "real", text});
    for (const char* text :
         {"2020-02-30T00:00:00Z", "2021-02-29T00:00:00Z", "2020-01-01", "2020-01-01T00:00:00",
          "2020-1-1T00:00:00Z", "2020-01-01T24:00:00Z", "2020-01-01T00:60:00Z",
          "2020-01-01T00:00:60Z", "2020-01-01T00:00:00.Z", "2020-01-01T00:00:00+01:00",
          "2020-01-01t00:00:00z", "12020-01-01T00:00:00Z", "2020-00-01T00:00:00Z",
          "2020-01-00T00:00:00Z", "2020-01-01T00:00:00Z ", ""})
        expectRefused({"--type", "date", text}, "not a date");
    for (const char* text : {"A", "AB", "ABC", "A===", "=AAA", "AA=A", "AA-_", "AAAAA==="})
        expectRefused({"--type", "data", text}, "not base64");
    for (const char* text : {"", "{", "[1,]", "tru", "'x'", "{\"a\":1}x", "\"\\ud800\"", "NaN"})
        expectRefused({"--type", "json", text}, "wrong JSON at line 1, column ");
}

TEST(Values, NumbersOutOfRangeAreRefused) {
    for (const char* text : {"18446744073709551616", "-9223372036854775809",
                             "100000000000000000000000000000000000000000"})
        expectRefused({text}, "integer");
    for (const char* text : {"1e999", "-1e999", "1e-999"}) expectRefused({text}, "real");
    for (const char* text : {"[18446744073709551616]", "[-9223372036854775809]"})
        expectRefused({text}, "wrong JSON at line 1, column 2: integer not between");
    for (const char* text : {"[1e999]", "[-1e999]", "[1e-999]"})
        expectRefused({text}, "wrong JSON at line 1, column 2: number too large or too small");
}

TEST(Values, FormsThatAreNotKnownAreRefused) {
    expectRefused({R"({"$date":"yesterday"})"}, "not a date");
    expectRefused({R"({"$date":5})"}, "not a date");
    expectRefused({R"({"$data":"x"})"}, "not base64");
    expectRefused({R"({"$data":5})"}, "not base64");
    expectRefused({R"({"$real":"1.5"})"}, "not nan");
    expectRefused({R"([{"a":{"$dictionary":5}}])"}, "not an object");
    expectRefused({R"({"$date":1e300})"}, "date");
    expectRefused({"--type", "json", "null"}, "null");
    expectRefused({"[null]"}, "null");
    expectRefused({R"({"a":null})"}, "null");
}

TEST(Values, TextThatIsNotUTF8IsRefused) {
    expectRefused({"\xff"}, "UTF-8");
    expectRefused({"\"\xc3\""});
    expectRefused({"--type", "string", "-"}, "UTF-8", "a\xed\xa0\x80\n");
    EXPECT_EQ(run({"set", "a\xff", "1"}).exitCode, 5);
    EXPECT_EQ(run({"get", "a\xff"}).exitCode, 5);
    EXPECT_EQ(run({"unset", "a\xff"}).exitCode, 5);
    EXPECT_EQ(run({"list", "a\xff"}).exitCode, 5);
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

TEST(Values, DepthIsLimitedWithoutCrashing) {
    const auto nested = [](std::size_t levels) {
        return std::string(levels, '[') + std::string(levels, ']');
    };
    expectRefused({"-"}, "512 levels", nested(513));
    expectRefused({"-"}, "512 levels", nested(1'000'000));
    expectRefused({"-"}, "512 levels", std::string(1'000'000, '['));
    std::string objects;
    for (int level = 0; level < 100'000; ++level) objects += "{\"$dictionary\":";
    expectRefused({"-"}, "512 levels", objects);
    ASSERT_EQ(run({"set", "a", "-"}, {nested(500), {}}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, nested(500) + "\n");
}

TEST(Values, StandardInputLosesExactlyOneNewline) {
    const std::vector<std::pair<std::string, std::string>> inputs = {
        {"text\n", "\"text\""},
        {"text", "\"text\""},
        {"text\n\n", "\"text\\n\""},
        {"\n", "\"\""},
        {"", "\"\""},
        {"a\r\n", "\"a\\r\""},
        {"40\n", "40"},
        {"[1,\n2]\n", "[1,2]"},
        {std::string("a\0b\n", 4), "\"a\\u0000b\""}};
    for (const auto& [input, json] : inputs) {
        ASSERT_EQ(run({"set", "a", "-"}, {input, {}}).exitCode, 0) << input;
        EXPECT_EQ(run({"get", "a", "--json"}).output, json + "\n");
    }
    ASSERT_EQ(run({"set", "a", "-", "--type", "data"}, {"AQID\nBAUG\n", {}}).exitCode, 0);
    EXPECT_EQ(run({"get", "a"}).output, "AQIDBAUG\n");
}

TEST(Values, EveryKindComesBackByWayOfItsJSON) {
    const std::vector<std::string> texts = {
        "true",
        "-5",
        "18446744073709551615",
        "1.0",
        "0.1",
        "{\"$real\":\"-inf\"}",
        "{\"$real\":\"nan\"}",
        "\"ä\\n\\u0007\\u007f\\u009b\\\"\\\\\"",
        "{\"$date\":\"1969-07-20T20:17:40Z\"}",
        "{\"$data\":\"//79\"}",
        R"([{"$dictionary":{"$date":"x"}},{"$dictionary":{"$dictionary":{}}},[[]],{}])",
        R"({"$date":1,"b":{"c":[1,1.0]}})"};
    for (const std::string& text : texts) {
        ASSERT_EQ(run({"set", "x", text}).exitCode, 0) << text;
        const std::string first = run({"get", "x", "--json"}).output;
        ASSERT_EQ(run({"set", "y.z", "-", "--type", "json"}, {first, {}}).exitCode, 0) << first;
        EXPECT_EQ(run({"get", "y.z", "--json"}).output, first);
        EXPECT_EQ(first, text + "\n");
    }
}

TEST(Values, WhatIsPrintedBareKeepsItsKindAsAnArgument) {
    for (const char* text : {"true", "40", "40.0", "1e+300", "-0.0", "text", "[1,2.0]"}) {
        ASSERT_EQ(run({"set", "a", text}).exitCode, 0);
        const std::string bare = run({"get", "a"}).output;
        const std::string json = run({"get", "a", "--json"}).output;
        ASSERT_EQ(run({"set", "b", "-"}, {bare, {}}).exitCode, 0);
        EXPECT_EQ(run({"get", "b", "--json"}).output, json);
    }
}

TEST(Values, TheUserLearnsThatFractionsOfSecondsAreNotKept) {
    const Outcome outcome = run({"set", "a", "--type", "date", "2020-01-01T00:00:00.75Z"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "qrvsettings: fractions of seconds are not kept, a\n");
    EXPECT_EQ(run({"get", "a"}).output, "2020-01-01T00:00:00Z\n");
}
