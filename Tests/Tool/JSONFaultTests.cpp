// SPDX-License-Identifier: MIT
// What is said of JSON that is none: the place, what was expected and what stands there.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Reporting/Failure.h"
#include "Text/JSON.h"
#include "Text/SettingsText.h"

namespace {

struct Row {
    std::string text;
    std::string place;
    std::string reason;
};

// The parser itself takes it for a real, and for one that is infinite.
const std::string longInteger(400, '9');

const std::vector<Row> faults = {
    // What ends too early.
    {"", "line 1, column 1", "unexpected end of input; expected '[', '{', or a literal"},
    {"[", "line 1, column 2",
     "unexpected end of input; expected '[', '{', or a literal; the [ of line 1, column 1 is not "
     "closed"},
    {"{\n  \"a\": 1,\n  \"b\": {\n    \"c\": [1,", "line 4, column 13",
     "unexpected end of input; expected '[', '{', or a literal; the [ of line 4, column 10 is not "
     "closed"},
    {"{\"a\"", "line 1, column 5",
     "unexpected end of input; expected ':'; the { of line 1, column 1 is not closed"},
    {"{\"a\":1", "line 1, column 7",
     "unexpected end of input; expected ',' or '}'; the { of line 1, column 1 is not closed"},
    {"[[1],\n", "line 2, column 1",
     "unexpected end of input; expected '[', '{', or a literal; the [ of line 1, column 1 is not "
     "closed"},
    {"[\n\"abc", "line 2, column 1", "invalid string: missing closing quote"},
    {"\"a\\", "line 1, column 1", "invalid string: forbidden character after backslash"},
    {"\"\\u12", "line 1, column 1", "invalid string: '\\u' must be followed by 4 hex digits"},
    // What stands in the wrong place.
    {"{\"a\":}", "line 1, column 6", "unexpected '}'; expected '[', '{', or a literal"},
    {"[1,]", "line 1, column 4", "unexpected ']'; expected '[', '{', or a literal"},
    {"[1 , , 2]", "line 1, column 6", "unexpected ','; expected '[', '{', or a literal"},
    {"[,1]", "line 1, column 2", "unexpected ','; expected '[', '{', or a literal"},
    {"{\"a\":1,}", "line 1, column 8", "unexpected '}'; expected string literal"},
    {"{\"a\",1}", "line 1, column 5", "unexpected ','; expected ':'"},
    {"{\n\"a\": 1\n\"b\": 2}", "line 3, column 1",
     "unexpected string literal; expected ',' or '}'"},
    {"[1 2]", "line 1, column 4", "unexpected number literal; expected ',' or ']'"},
    {"[1-2]", "line 1, column 3", "unexpected number literal; expected ',' or ']'"},
    {"{\"ä\" 1}", "line 1, column 6", "unexpected number literal; expected ':'"},
    {"{x:1}", "line 1, column 2", "invalid literal x; expected string literal"},
    {"{} x", "line 1, column 4", "invalid literal x; expected end of input"},
    {"[1}", "line 1, column 3", "unexpected '}'; expected ',' or ']'"},
    {"[True]", "line 1, column 2", "invalid literal True"},
    {"[trap]", "line 1, column 2", "invalid literal trap"},
    {"['a']", "line 1, column 2", "invalid literal 'a'"},
    {"[ // no", "line 1, column 3", "invalid literal //"},
    // Keys and strings.
    {"{\"a\":1,\n \"b\":2,\"a\":3}", "line 2, column 8",
     "the key \"a\" stands in this object twice, first at line 1, column 2"},
    {"{\"a\":{\"\\u0062\":1,\"b\":2}}", "line 1, column 18",
     "the key \"b\" stands in this object twice, first at line 1, column 7"},
    {"[\"a\tb\"]", "line 1, column 4",
     "invalid string: control character U+0009 (HT) must be escaped to \\u0009 or \\t"},
    {"[\"\\x\"]", "line 1, column 4", "invalid string: forbidden character after backslash"},
    {"[\"\\ud800\"]", "line 1, column 9",
     "invalid string: surrogate U+D800..U+DBFF must be followed by U+DC00..U+DFFF"},
    {"[\"\\udc00\"]", "line 1, column 8",
     "invalid string: surrogate U+DC00..U+DFFF must follow U+D800..U+DBFF"},
    {"[\"\\ud800\\u0041\"]", "line 1, column 14",
     "invalid string: surrogate U+D800..U+DBFF must be followed by U+DC00..U+DFFF"},
    {"[\"\xff\"]", "line 1, column 3", "invalid string: ill-formed UTF-8 byte"},
    {"[\"\xed\xa0\x80\"]", "line 1, column 4", "invalid string: ill-formed UTF-8 byte"},
    // Numbers.
    {"[NaN]", "line 1, column 2", R"(NaN is no number of JSON; write {"$real":"nan"})"},
    {"[Infinity]", "line 1, column 2", R"(Infinity is no number of JSON; write {"$real":"inf"})"},
    {"[-Infinity]", "line 1, column 2",
     R"(-Infinity is no number of JSON; write {"$real":"-inf"})"},
    {"[01]", "line 1, column 3", "unexpected number literal; expected ',' or ']'"},
    {"[+1]", "line 1, column 2", "invalid literal +1"},
    {"[1.]", "line 1, column 2", "invalid number; expected digit after '.'"},
    {"[.5]", "line 1, column 2", "invalid literal .5"},
    {"[1e]", "line 1, column 2", "invalid number; expected '+', '-', or digit after exponent"},
    {"[0x10]", "line 1, column 3", "invalid literal x10; expected ',' or ']'"},
    {"[1, -1e999]", "line 1, column 5", "number too large or too small for a real: -1e999"},
    {"1e-999", "line 1, column 1", "number too large or too small for a real: 1e-999"},
    {"[18446744073709551616]", "line 1, column 2",
     "integer not between -2^63 and 2^64-1: 18446744073709551616"},
    {"[" + longInteger + "]", "line 1, column 2",
     "integer not between -2^63 and 2^64-1: " + Tool::shortened(longInteger)},
    // Values of settings.
    {"[null]", "line 1, column 2", "null is no value of a setting"},
    {"{\"d\":\n{\"$date\":\"soon\"}}", "line 2, column 10",
     "not a date (YYYY-MM-DDTHH:MM:SSZ): \"soon\""},
    {"{\"$date\":5}", "line 1, column 10", "not a date (YYYY-MM-DDTHH:MM:SSZ): 5"},
    {"{\"$data\":\"?\"}", "line 1, column 10", "not base64: \"?\""},
    {"{\"$real\":1}", "line 1, column 10", "not nan, inf or -inf: 1"},
    {"{\"$real\": -1.5e1 }", "line 1, column 11", "not nan, inf or -inf: -1.5e1"},
    {"{\"$dictionary\":[]}", "line 1, column 16", "not an object: []"},
    // The text as a whole.
    {"\xef\xbb\xbf{\"a\":1}", "line 1, column 1",
     "the text begins with a byte order mark; save it as UTF-8 without one"},
    {std::string("{\0\"\0", 4), "line 1, column 2",
     "a zero byte; the text is UTF-16 or binary, not UTF-8"},
    {std::string("\xff\xfe{\0", 4), "line 1, column 4",
     "a zero byte; the text is UTF-16 or binary, not UTF-8"},
    {std::string("{}\0x", 4), "line 1, column 3",
     "a zero byte; the text is UTF-16 or binary, not UTF-8"},
};

}  // namespace

TEST(JSONFault, NamesThePlaceAndTheReason) {
    for (const Row& row : faults) {
        try {
            Tool::valueFromJSON(row.text);
            ADD_FAILURE() << row.text;
        } catch (const Tool::Failure& failure) {
            EXPECT_EQ(failure.fault(), Tool::Fault::WrongValue);
            EXPECT_EQ(failure.what(), "wrong JSON at " + row.place + ": " + row.reason) << row.text;
        }
    }
}

TEST(JSONFault, OfAFileIsSaidWithoutAWordOfOtherFormats) {
    for (const Row& row : faults) {
        const std::size_t start = row.text.find_first_not_of("\xef\xbb\xbf\xff\xfe");
        if (start == row.text.npos || row.text[start] != '{') continue;
        try {
            Tool::settingsFromText(row.text);
            ADD_FAILURE() << row.text;
        } catch (const Tool::Failure& failure) {
            EXPECT_EQ(std::string(failure.what()).find("property list"), std::string::npos)
                << failure.what();
        }
    }
}
