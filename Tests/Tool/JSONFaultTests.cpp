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

const std::vector<Row> faults = {
    // What ends too early.
    {"", "line 1, column 1", "expected a value, found the end of the text"},
    {"[", "line 1, column 2",
     "expected a value or ], found the end of the text; the [ of line 1, column 1 is not closed"},
    {"{\n  \"a\": 1,\n  \"b\": {\n    \"c\": [1,", "line 4, column 13",
     "expected a value after the comma, found the end of the text; the [ of line 4, column 10 is "
     "not closed"},
    {"{\"a\"", "line 1, column 5",
     "expected a colon after the key, found the end of the text; the { of line 1, column 1 is not "
     "closed"},
    {"{\"a\":1", "line 1, column 7",
     "expected a comma or }, found the end of the text; the { of line 1, column 1 is not closed"},
    {"[\n\"abc", "line 2, column 1", "the string that begins here has no end"},
    {"\"a\\", "line 1, column 3", "no escape of JSON: \\"},
    {"\"\\u12", "line 1, column 6", "expected four hexadecimal digits after \\u"},
    // What stands in the wrong place.
    {"{\"a\":}", "line 1, column 6", "expected a value after the colon, found }"},
    {"[1,]", "line 1, column 4", "expected a value after the comma, found ]"},
    {"{\"a\":1,}", "line 1, column 8",
     "expected a key in quotation marks after the comma, found }"},
    {"{\n\"a\": 1\n\"b\": 2}", "line 3, column 1", "expected a comma or }, found \"b\""},
    {"[1 2]", "line 1, column 4", "expected a comma or ], found 2"},
    {"{\"ä\" 1}", "line 1, column 6", "expected a colon after the key, found 1"},
    {"{x:1}", "line 1, column 2", "expected a key in quotation marks or }, found x"},
    {"{} x", "line 1, column 4", "expected the end of the text, found x"},
    {"[1}", "line 1, column 3", "expected a comma or ], found }"},
    {"[True]", "line 1, column 2", "expected a value or ], found True"},
    {"['a']", "line 1, column 2", "a string stands in double quotation marks, not in single ones"},
    {"[ // no", "line 1, column 3", "expected a value or ], found /"},
    // Keys and strings.
    {"{\"a\":1,\n \"b\":2,\"a\":3}", "line 2, column 8",
     "the key \"a\" stands in this object twice, first at line 1, column 2"},
    {"{\"a\":{\"\\u0062\":1,\"b\":2}}", "line 1, column 18",
     "the key \"b\" stands in this object twice, first at line 1, column 7"},
    {"[\"a\tb\"]", "line 1, column 4",
     "a control character in a string; JSON writes it as \\n, \\t or \\u0000"},
    {"[\"\\x\"]", "line 1, column 3", "no escape of JSON: \\x"},
    {"[\"\\ud800\"]", "line 1, column 3", "half of a character: \\ud800"},
    {"[\"\\udc00\"]", "line 1, column 3", "half of a character: \\udc00"},
    {"[\"\\ud800\\u0041\"]", "line 1, column 3", "half of a character: \\ud800"},
    {"[\"\xff\"]", "line 1, column 3", "not UTF-8: \xff"},
    {"[\"\xed\xa0\x80\"]", "line 1, column 3", "not UTF-8: \xed\xa0\x80"},
    // Numbers.
    {"[NaN]", "line 1, column 2", R"(NaN is no number of JSON; write {"$real":"nan"})"},
    {"[Infinity]", "line 1, column 2", R"(Infinity is no number of JSON; write {"$real":"inf"})"},
    {"[-Infinity]", "line 1, column 2",
     R"(-Infinity is no number of JSON; write {"$real":"-inf"})"},
    {"[01]", "line 1, column 2", "not a number as JSON writes it: 01"},
    {"[+1]", "line 1, column 2", "not a number as JSON writes it: +1"},
    {"[1.]", "line 1, column 2", "not a number as JSON writes it: 1."},
    {"[.5]", "line 1, column 2", "not a number as JSON writes it: .5"},
    {"[1e]", "line 1, column 2", "not a number as JSON writes it: 1e"},
    {"[0x10]", "line 1, column 2", "not a number as JSON writes it: 0x10"},
    {"[-1e999]", "line 1, column 2", "number too large or too small for a real: -1e999"},
    {"[18446744073709551616]", "line 1, column 2",
     "integer not between -2^63 and 2^64-1: 18446744073709551616"},
    // Values of settings.
    {"[null]", "line 1, column 2", "null is no value of a setting"},
    {"{\"d\":\n{\"$date\":\"soon\"}}", "line 2, column 10",
     "not a date (YYYY-MM-DDTHH:MM:SSZ): \"soon\""},
    {"{\"$date\":5}", "line 1, column 10", "not a date (YYYY-MM-DDTHH:MM:SSZ): 5"},
    {"{\"$data\":\"?\"}", "line 1, column 10", "not base64: \"?\""},
    {"{\"$real\":1}", "line 1, column 10", "not nan, inf or -inf: 1"},
    {"{\"$dictionary\":[]}", "line 1, column 16", "not an object: []"},
    // The text as a whole.
    {"\xef\xbb\xbf{\"a\":1}", "line 1, column 1",
     "the text begins with a byte order mark; save it as UTF-8 without one"},
    {std::string("{\0\"\0", 4), "line 1, column 1", "the text is not UTF-8 but UTF-16 or UTF-32"},
    {std::string("\xff\xfe{\0", 4), "line 1, column 1",
     "the text is not UTF-8 but UTF-16 or UTF-32"},
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
