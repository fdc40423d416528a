// SPDX-License-Identifier: MIT
// The bytes of written files, and values that cannot be written.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "PropertyLists/PropertyListTesting.h"

TEST(Writing, TheWholeFileIsTabbedAndSorted) {
    const PropertyListValue value =
        NSDictionary{{"b", NSArray{1, 2.0, "x", NSDictionary{}, NSArray{}}},
                     {"a", NSDictionary{{"t", true}, {"f", false}}},
                     {"B", NSDate(0)}};
    EXPECT_EQ(written(value),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n"
              "<dict>\n"
              "\t<key>B</key>\n"
              "\t<date>2001-01-01T00:00:00Z</date>\n"
              "\t<key>a</key>\n"
              "\t<dict>\n"
              "\t\t<key>f</key>\n"
              "\t\t<false/>\n"
              "\t\t<key>t</key>\n"
              "\t\t<true/>\n"
              "\t</dict>\n"
              "\t<key>b</key>\n"
              "\t<array>\n"
              "\t\t<integer>1</integer>\n"
              "\t\t<real>2</real>\n"
              "\t\t<string>x</string>\n"
              "\t\t<dict/>\n"
              "\t\t<array/>\n"
              "\t</array>\n"
              "</dict>\n"
              "</plist>\n");
}

TEST(Writing, KeysAreSortedByTheirBytes) {
    const std::string bytes = written(NSDictionary{{"\u00e9", 1},
                                                   {"z", 2},
                                                   {"", 3},
                                                   {"aa", 4},
                                                   {"a", 5},
                                                   {"\U0001F600", 6},
                                                   {"\uFFFD", 7},
                                                   {"A", 8}});
    std::size_t last = 0;
    for (const char* key : {"", "A", "a", "aa", "z", "\u00e9", "\uFFFD", "\U0001F600"}) {
        const std::size_t position = bytes.find("<key>" + std::string(key) + "</key>");
        ASSERT_NE(position, std::string::npos) << key;
        EXPECT_GT(position, last) << key;
        last = position;
    }
}

TEST(Writing, MutableTreesAreWrittenLikeImmutableOnes) {
    const NSMutableArray array;
    array.addObject("x");
    const NSMutableDictionary dictionary;
    dictionary.setObjectForKey(array, "a");
    EXPECT_EQ(written(dictionary), written(NSDictionary{{"a", NSArray{"x"}}}));
}

TEST(Writing, NumbersAreInTheShortestFormThatReadsBack) {
    EXPECT_EQ(writtenElement(std::numeric_limits<std::int64_t>::min()),
              "<integer>-9223372036854775808</integer>");
    EXPECT_EQ(writtenElement(std::numeric_limits<std::uint64_t>::max()),
              "<integer>18446744073709551615</integer>");
    EXPECT_EQ(writtenElement(0), "<integer>0</integer>");
    EXPECT_EQ(writtenElement(1.0), "<real>1</real>");
    EXPECT_EQ(writtenElement(0.1), "<real>0.1</real>");
    EXPECT_EQ(writtenElement(-0.0), "<real>-0</real>");
    EXPECT_EQ(writtenElement(1e308), "<real>1e+308</real>");
    EXPECT_EQ(writtenElement(5e-324), "<real>5e-324</real>");
    EXPECT_EQ(writtenElement(std::numeric_limits<double>::quiet_NaN()), "<real>nan</real>");
    EXPECT_EQ(writtenElement(std::numeric_limits<double>::infinity()), "<real>+infinity</real>");
    EXPECT_EQ(writtenElement(-std::numeric_limits<double>::infinity()), "<real>-infinity</real>");
}

TEST(Writing, TextIsEscapedSoThatNothingIsLost) {
    EXPECT_EQ(writtenElement("<a> & \"b\" 'c'"), "<string>&lt;a&gt; &amp; \"b\" 'c'</string>");
    EXPECT_EQ(writtenElement(" \t\n\u00e9\u0085 "), "<string> \t\n\u00e9\u0085 </string>");
    EXPECT_EQ(writtenElement("a\r\nb\r"), "<string>a&#13;\nb&#13;</string>");
    EXPECT_EQ(writtenElement(std::string("\0\x01\x1F\x7F", 4)),
              "<string>&#0;&#1;&#31;&#127;</string>");
    EXPECT_EQ(writtenElement("\uFFFD\uFFFE\uFFFF\U0001FFFE"),
              "<string>\uFFFD&#65534;&#65535;\U0001FFFE</string>");
    EXPECT_EQ(writtenElement("]]>"), "<string>]]&gt;</string>");
    EXPECT_EQ(writtenElement(""), "<string></string>");
}

TEST(Writing, KeysAreEscapedLikeStrings) {
    EXPECT_EQ(writtenElement(NSDictionary{{"<\r&", true}}),
              "<dict>\n\t<key>&lt;&#13;&amp;</key>\n\t<true/>\n</dict>");
}

TEST(Writing, DatesAreWholeSecondsRoundedDown) {
    EXPECT_EQ(writtenElement(NSDate(0.999)), "<date>2001-01-01T00:00:00Z</date>");
    EXPECT_EQ(writtenElement(NSDate(-0.001)), "<date>2000-12-31T23:59:59Z</date>");
    EXPECT_EQ(writtenElement(NSDate(-26481600)), "<date>2000-02-29T12:00:00Z</date>");
    EXPECT_EQ(writtenElement(NSDate(-978307200)), "<date>1970-01-01T00:00:00Z</date>");
    EXPECT_EQ(writtenElement(NSDate(-63114076800)), "<date>0000-12-30T00:00:00Z</date>");
    EXPECT_EQ(writtenElement(NSDate(252423993599.5)), "<date>9999-12-31T23:59:59Z</date>");
}

TEST(Writing, DatesOfAllYears) {
    EXPECT_EQ(writtenElement(NSDate(252423993600)), "<date>10000-01-01T00:00:00Z</date>");
    EXPECT_EQ(writtenElement(NSDate(-63145526400)), "<date>0000-01-01T00:00:00Z</date>");
    EXPECT_EQ(writtenElement(NSDate(-63145526400.5)), "<date>-0001-12-31T23:59:59Z</date>");
    EXPECT_EQ(writtenElement(NSDate(9007199254740992)), "<date>285428782-11-12T07:36:32Z</date>");
    EXPECT_EQ(writtenElement(NSDate(0x1p62)), "<date>146138514314-06-20T07:45:04Z</date>");
    EXPECT_EQ(writtenElement(NSDate(-0x1p62)), "<date>-146138510313-07-15T16:14:56Z</date>");
}

TEST(Writing, DatesThatNoFileHoldsAreRefused) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double seconds : {infinity, -infinity, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(writeRefusal(NSDate(seconds)), "a date is not finite, at the root") << seconds;
    for (const double seconds : {std::nextafter(0x1p62, infinity), 1e300, -1e300}) {
        EXPECT_EQ(writeRefusal(NSArray{1, NSDate(seconds)}),
                  "a date is more than 146 billion years from 2001, key path [1]")
            << seconds;
    }
}

TEST(Writing, DeepLevelsAreNotIndentedFurther) {
    const std::string file = written(nestedArrays(100));
    EXPECT_NE(file.find("\n" + std::string(16, '\t') + "<array>\n"), std::string::npos);
    EXPECT_EQ(file.find(std::string(17, '\t')), std::string::npos);
}

TEST(Writing, DataIsBase64InIndentedLines) {
    EXPECT_EQ(writtenElement(NSData("abcd")), "<data>\nYWJjZA==\n</data>");
    EXPECT_EQ(writtenElement(NSData()), "<data>\n</data>");
    EXPECT_EQ(writtenElement(NSData(std::string(58, '\0'))),
              "<data>\n" + std::string(76, 'A') + "\nAA==\n</data>");
    EXPECT_EQ(writtenElement(NSArray{NSData(std::string(52, '\0'))}),
              "<array>\n\t<data>\n\t" + std::string(68, 'A') + "\n\tAA==\n\t</data>\n</array>");
}

TEST(Writing, DeepDataKeepsLinesOfAUsefulLength) {
    const std::string bytes(100, 'x');
    PropertyListValue value = NSData(bytes);
    for (int level = 0; level < 100; ++level) value = NSArray{value};
    const std::string file = written(value);
    EXPECT_NE(file.find("\teHh4eHh4eHh4eHh4\n"), std::string::npos);
    EXPECT_TRUE(sameTree(readableXML(file), value));
}

TEST(Writing, WhatNoPropertyListHoldsIsRefusedWithItsKeyPath) {
    EXPECT_EQ(writeRefusal(NSDictionary{{"A", NSDictionary{{"B", NSColor{}}}}}),
              "a colour cannot be stored, key path A.B");
    EXPECT_EQ(writeRefusal(NSDictionary{{"A", NSArray{1, NSDictionary{{"B", NSNull{}}}}}}),
              "the null marker cannot be stored, key path A[1].B");
    EXPECT_EQ(writeRefusal(nullptr), "there is no value to store, at the root");
    EXPECT_EQ(writeRefusal(NSColor{}), "a colour cannot be stored, at the root");
    EXPECT_EQ(writeRefusal(NSArray::arrayWithObject(NSArray{"\xFF"})),
              "a string is not valid UTF-8, key path [0][0]");
    EXPECT_EQ(writeRefusal(NSDictionary{{"a", "\xED\xA0\x80"}}),
              "a string is not valid UTF-8, key path a");
    EXPECT_EQ(writeRefusal(NSDictionary{{"a", NSDictionary{{"\u00e9\xC3", 1}}}}),
              "a key is not valid UTF-8, key path a.\u00e9\\xC3");
    EXPECT_EQ(writeRefusal(NSDictionary{{"a\nb\t", NSNull{}}}),
              "the null marker cannot be stored, key path a\\x0Ab\\x09");
    const auto error = NSPropertyListSerialization::dataWithPropertyList(NSArray{NSNull{}}).error;
    ASSERT_TRUE(error);
    EXPECT_EQ(error->keyPath, "[0]");
    EXPECT_EQ(error->place, PropertyListError::Place::KeyPath);
}
