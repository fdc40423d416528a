// SPDX-License-Identifier: MIT
// Reading the XML format, whole and malformed.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "PropertyLists/PropertyListTesting.h"

namespace {

PropertyListValue element(std::string_view text) {
    return readableXML(plist(text));
}

std::string elementRefusal(std::string_view text) {
    return refusal(plist(text));
}

}  // namespace

TEST(XMLReading, ReadsEveryKindOfValue) {
    const auto value = element(
        "<dict><key>s</key><string>text</string><key>i</key><integer>1</integer>"
        "<key>r</key><real>1</real><key>t</key><true/><key>f</key><false/>"
        "<key>d</key><date>2001-01-01T00:00:10Z</date><key>b</key><data>AAEC</data>"
        "<key>a</key><array><string>x</string><dict/><array/></array></dict>");
    const PropertyListValue expected = NSDictionary{{"s", "text"},
                                                    {"i", 1},
                                                    {"r", 1.0},
                                                    {"t", true},
                                                    {"f", false},
                                                    {"d", NSDate(10)},
                                                    {"b", NSData(std::string_view("\0\1\2", 3))},
                                                    {"a", NSArray{"x", NSDictionary{}, NSArray{}}}};
    EXPECT_TRUE(sameTree(value, expected));
    EXPECT_FALSE(value.dictionary().isMutable());
    EXPECT_FALSE(value.dictionary().objectForKey("a").array().isMutable());
}

TEST(XMLReading, TheRootMayBeOfAnyKindAndStandWithoutPlist) {
    EXPECT_TRUE(sameTree(readableXML("<string>bare</string>"), "bare"));
    EXPECT_TRUE(sameTree(readableXML(" \n<!-- c --><array/>\n"), NSArray{}));
    EXPECT_TRUE(sameTree(element("<integer>7</integer>"), 7));
}

TEST(XMLReading, DeclarationDocumentTypeCommentsAndInstructionsAreAccepted) {
    const auto value = readableXML(
        "<?xml version='1.0' encoding='utf-8' standalone=\"yes\"?>\n<!-- one -->\n"
        "<!DOCTYPE plist PUBLIC \"-//x//DTD y//EN\" \"http://example.org/y.dtd\">\n<?app do it?>"
        "<plist version=\"1.0\"><!-- <dict> --><?x?><dict><!-- a --><key>k</key><!-- b -->"
        "<true/></dict></plist><!-- end -->\n");
    EXPECT_TRUE(sameTree(value, NSDictionary{{"k", true}}));
}

TEST(XMLReading, AttributesAreIgnored) {
    EXPECT_TRUE(
        sameTree(readableXML("<plist a='>' b=\"<!--\"><string c='1'>x</string></plist>"), "x"));
}

TEST(XMLReading, OfEqualKeysTheLastWins) {
    EXPECT_TRUE(sameTree(
        element("<dict><key>k</key><integer>1</integer><key>k</key><integer>2</integer></dict>"),
        NSDictionary{{"k", 2}}));
}

TEST(XMLReading, WhiteSpaceInTextIsKept) {
    EXPECT_TRUE(sameTree(element("<string>   </string>"), "   "));
    EXPECT_TRUE(sameTree(element("<string> \n\ta  b \n</string>"), " \n\ta  b \n"));
    EXPECT_TRUE(sameTree(element("<dict><key> </key><string>\t</string></dict>"),
                         NSDictionary{{" ", "\t"}}));
    EXPECT_TRUE(sameTree(element("<string> <!-- c --> </string>"), "  "));
    EXPECT_TRUE(sameTree(element("<string> <![CDATA[ ]]> </string>"), "   "));
    EXPECT_TRUE(sameTree(element("<dict> <key> </key> <!-- --> <string> </string> </dict>"),
                         NSDictionary{{" ", " "}}));
}

TEST(XMLReading, CDATAAndTextAroundCommentsAreJoined) {
    EXPECT_TRUE(sameTree(element("<string>a<![CDATA[<b>&amp;]]>&lt;<!-- c -->d<?p q?>e</string>"),
                         "a<b>&amp;<de"));
    EXPECT_TRUE(
        sameTree(element("<dict><key><![CDATA[k]]>1</key><integer><!-- x -->4</integer></dict>"),
                 NSDictionary{{"k1", 4}}));
    EXPECT_TRUE(sameTree(element("<string><![CDATA[]]></string>"), ""));
}

TEST(XMLReading, RawLineEndsBecomeLineFeedsAndReferencedOnesStay) {
    EXPECT_TRUE(sameTree(element("<string>a\r\nb\rc\n\r</string>"), "a\nb\nc\n\n"));
    EXPECT_TRUE(sameTree(element("<string>a&#13;\nb&#xD;</string>"), "a\r\nb\r"));
    EXPECT_TRUE(sameTree(element("<string><![CDATA[a\r\nb\r]]></string>"), "a\nb\n"));
}

TEST(XMLReading, EntitiesAndReferencesAreResolved) {
    EXPECT_TRUE(sameTree(element("<string>&lt;&gt;&amp;&quot;&apos;</string>"), "<>&\"'"));
    EXPECT_TRUE(sameTree(element("<string>&#65;&#x42;&#xe9;&#8364;&#x1F600;</string>"),
                         "AB\u00e9\u20ac\U0001F600"));
    EXPECT_TRUE(sameTree(element("<string>&#1;&#127;&#xFFFE;</string>"), "\x01\x7F\uFFFE"));
    EXPECT_TRUE(sameTree(element("<string>a&#0;b</string>"), std::string("a\0b", 3)));
    EXPECT_TRUE(sameTree(element("<string>&amp;lt;</string>"), "&lt;"));
}

TEST(XMLReading, RefusalsAreOneLineWhateverTheyQuote) {
    EXPECT_EQ(elementRefusal("<string>&a\nb\x7F;</string>"),
              "unknown entity &a\\x0Ab\\x7F;, line 1, column 30");
}

TEST(XMLReading, UnknownEntitiesAreRefused) {
    EXPECT_EQ(elementRefusal("<string>&nbsp;</string>"),
              "unknown entity &nbsp;, line 1, column 30");
    EXPECT_EQ(elementRefusal("<dict><key>&LT;</key><true/></dict>"),
              "unknown entity &LT;, line 1, column 33");
    for (const char* text :
         {"a & b; c", "&", "&amp", "&;", "&#;", "&#x;", "&#xG;", "&#-1;", "&# 1;", "&#1 ;",
          "&#X41;", "&#xD800;", "&#xDFFF;", "&#x110000;", "&#99999999999999999999;"}) {
        EXPECT_NE(elementRefusal("<string>" + std::string(text) + "</string>"), "") << text;
    }
}

TEST(XMLReading, UnknownAndMisplacedElementsAreRefusedWithTheirPlace) {
    EXPECT_EQ(refusal("<plist>\n<dict>\n  <key>\u00e9</key><foo/></dict></plist>"),
              "unknown element <foo>, line 3, column 15");
    EXPECT_EQ(elementRefusal("<key>k</key>"), "a key where a value is expected, line 1, column 22");
    EXPECT_EQ(elementRefusal("<dict><true/></dict>"),
              "<true> where a key is expected, line 1, column 28");
    EXPECT_EQ(elementRefusal("<dict><key>k</key></dict>"),
              "a key without a value, line 1, column 28");
    EXPECT_EQ(elementRefusal("<dict><key>k</key><key>l</key><true/></dict>"),
              "a key where a value is expected, line 1, column 40");
    EXPECT_EQ(elementRefusal("<string>a<b/></string>"),
              "unexpected element <b> inside <string>, line 1, column 31");
    EXPECT_NE(elementRefusal("<true>x</true>"), "");
    EXPECT_NE(elementRefusal("<true><true/></true>"), "");
    EXPECT_NE(elementRefusal("<plist><true/></plist>"), "");
    EXPECT_NE(elementRefusal("<Dict/>"), "");
}

TEST(XMLReading, LinesEndInAnyOfThreeWays) {
    EXPECT_EQ(refusal("<plist>\r\n\r\n\n\r <foo/></plist>"),
              "unknown element <foo>, line 5, column 2");
}

TEST(XMLReading, NamesInMessagesAreShortened) {
    EXPECT_EQ(elementRefusal("<" + repeated("\u00e9", 1000) + "/>"),
              "unknown element <" + repeated("\u00e9", 20) + "...>, line 1, column 22");
}

TEST(XMLReading, MoreOrLessThanOneValueIsRefused) {
    EXPECT_EQ(elementRefusal(""), "the plist element holds no value, line 1, column 1");
    EXPECT_EQ(elementRefusal("<true/><false/>"), "more than one value: <false>, line 1, column 29");
    EXPECT_EQ(refusal("<true/><false/>"), "more than one value: <false>, line 1, column 8");
    EXPECT_NE(refusal(plist("<true/>") + plist("<true/>")), "");
    EXPECT_NE(refusal("<?xml version=\"1.0\"?>"), "");
    EXPECT_NE(refusal("<!-- only a comment -->"), "");
}

TEST(XMLReading, TextBetweenElementsIsRefused) {
    EXPECT_EQ(elementRefusal("<array> junk <true/></array>"), "unexpected text, line 1, column 30");
    EXPECT_NE(elementRefusal("<dict>junk<key>k</key><true/></dict>"), "");
    EXPECT_NE(elementRefusal("<dict><key>k</key>junk<true/></dict>"), "");
    EXPECT_NE(elementRefusal("<dict><key>k</key><true/>junk</dict>"), "");
    EXPECT_NE(elementRefusal("<array><![CDATA[x]]></array>"), "");
    EXPECT_NE(elementRefusal("<array><!-- c -->junk</array>"), "");
    EXPECT_NE(elementRefusal("junk<true/>"), "");
    EXPECT_NE(elementRefusal("<true/>junk"), "");
    EXPECT_EQ(refusal("<true/>x"), "unexpected text, line 1, column 8");
    EXPECT_EQ(refusal("<!-- --><true><!-- --></true>\n<"), "unexpected text, line 2, column 1");
    EXPECT_NE(refusal("<!-- c -->junk<true/>"), "");
    EXPECT_NE(refusal("<array>&#32;</array>"), "");
}

TEST(XMLReading, AnInternalSubsetIsRefused) {
    EXPECT_EQ(refusal("<!DOCTYPE plist [<!ENTITY a \"aa\">]><plist><string>&a;</string></plist>"),
              "the document type has an internal subset, line 1, column 11");
    EXPECT_NE(refusal("<!DOCTYPE plist SYSTEM \"x\" []><plist><true/></plist>"), "");
    EXPECT_NE(refusal("<plist><true/></plist><!DOCTYPE plist>"), "");
    EXPECT_NE(refusal("<plist><!DOCTYPE plist><true/></plist>"), "");
}

TEST(XMLReading, MalformedMarkupIsRefused) {
    for (const char* text :
         {"<plist><true/>", "<plist><true></plist>", "<plist><true/></plist",
          "<plist><true/></plis>", "<", "<plist", "<plist><string>a</plist></string>",
          "<plist><string>a<</string></plist>", "<plist><true / ></plist>",
          "<plist></true></plist>", "</plist>", "<plist a=b><true/></plist>",
          "<plist><!-- <true/></plist>", "<plist><string><![CDATA[x</string></plist>"}) {
        EXPECT_NE(refusal(text), "") << text;
    }
}

TEST(XMLReading, IntegersReachFromTheLowestSignedToTheHighestUnsigned) {
    const auto integer = [](std::string_view text) {
        return element("<integer>" + std::string(text) + "</integer>");
    };
    EXPECT_TRUE(
        sameTree(integer("-9223372036854775808"), std::numeric_limits<std::int64_t>::min()));
    EXPECT_TRUE(sameTree(integer("9223372036854775807"), std::numeric_limits<std::int64_t>::max()));
    EXPECT_TRUE(sameTree(integer("9223372036854775808"), std::uint64_t{1} << 63U));
    EXPECT_TRUE(
        sameTree(integer("18446744073709551615"), std::numeric_limits<std::uint64_t>::max()));
    EXPECT_TRUE(sameTree(integer("0xFFFFFFFFFFFFFFFF"), std::numeric_limits<std::uint64_t>::max()));
    EXPECT_TRUE(sameTree(integer("-0x8000000000000000"), std::numeric_limits<std::int64_t>::min()));
    EXPECT_TRUE(sameTree(integer(" \n+0x1f\t"), 31));
    EXPECT_TRUE(sameTree(integer("-0"), 0));
    EXPECT_TRUE(sameTree(integer("007"), 7));
    EXPECT_TRUE(sameTree(integer("&#49;2"), 12));
    EXPECT_TRUE(sameTree(integer("- 1"), -1));
    EXPECT_TRUE(sameTree(integer("\n+ \t\r\n0x1F "), 31));
}

TEST(XMLReading, MalformedAndTooLargeIntegersAreRefused) {
    for (const char* text : {"",
                             " ",
                             "-",
                             "+",
                             "0x",
                             "1.0",
                             "1e3",
                             "1 2",
                             "- ",
                             "--1",
                             "+-1",
                             "- -1",
                             "- + 1",
                             "- 1 2",
                             "0x 1",
                             "-0 x1",
                             "-\v1",
                             "abc",
                             "0xG",
                             "1x",
                             "18446744073709551616",
                             "-9223372036854775809",
                             "0x10000000000000000",
                             "-0x8000000000000001",
                             "\u0661"}) {
        EXPECT_EQ(elementRefusal("<integer>" + std::string(text) + "</integer>"),
                  "malformed integer, line 1, column 22")
            << text;
    }
}

TEST(XMLReading, RealsAreReadExactly) {
    const auto real = [](std::string_view text) {
        return element("<real>" + std::string(text) + "</real>");
    };
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(sameTree(real("1"), 1.0));
    EXPECT_TRUE(sameTree(real("-0"), -0.0));
    EXPECT_TRUE(sameTree(real("0.1"), 0.1));
    EXPECT_TRUE(sameTree(real(" +1.5e3\n"), 1500.0));
    EXPECT_TRUE(sameTree(real("1E-2"), 0.01));
    EXPECT_TRUE(sameTree(real(".5"), 0.5));
    EXPECT_TRUE(sameTree(real("5."), 5.0));
    EXPECT_TRUE(sameTree(real("1e308"), 1e308));
    EXPECT_TRUE(sameTree(real("5e-324"), 5e-324));
    EXPECT_TRUE(sameTree(real("2.2250738585072011e-308"), 2.2250738585072011e-308));
    EXPECT_TRUE(sameTree(real("9007199254740993"), 9007199254740992.0));
    for (const char* text : {"inf", "+INF", "Infinity", "+infinity"}) {
        EXPECT_TRUE(sameTree(real(text), infinity)) << text;
    }
    for (const char* text : {"-inf", "-INFINITY"})
        EXPECT_TRUE(sameTree(real(text), -infinity)) << text;
    for (const char* text : {"nan", "NaN", "-nan", "+NAN"}) {
        EXPECT_TRUE(sameTree(real(text), std::nan(""))) << text;
    }
}

TEST(XMLReading, MalformedAndTooLargeRealsAreRefused) {
    for (const char* text : {"", ".", "-", "e5", "1e", "1e+", "1,5", "0x10", "1 2", "--1", "nan(1)",
                             "infinit", "1e309", "-1e999", "1d", "1.2.3"}) {
        EXPECT_EQ(elementRefusal("<real>" + std::string(text) + "</real>"),
                  "malformed real, line 1, column 22")
            << text;
    }
}

TEST(XMLReading, DatesOfAllYearsAreRead) {
    const auto date = [](std::string_view text) {
        return element("<date>" + std::string(text) + "</date>");
    };
    EXPECT_TRUE(sameTree(date("2001-01-01T00:00:00Z"), NSDate(0)));
    EXPECT_TRUE(sameTree(date("1970-01-01T00:00:00Z"), NSDate(-978307200)));
    EXPECT_TRUE(sameTree(date("1969-12-31T23:59:59Z"), NSDate(-978307201)));
    EXPECT_TRUE(sameTree(date("2000-02-29T12:00:00Z"), NSDate(-26481600)));
    EXPECT_TRUE(sameTree(date("2024-02-29T00:00:00Z"), NSDate(730857600)));
    EXPECT_TRUE(sameTree(date("0001-01-01T00:00:00Z"), NSDate(-63113904000)));
    EXPECT_TRUE(sameTree(date("0000-12-30T00:00:00Z"), NSDate(-63114076800)));
    EXPECT_TRUE(sameTree(date("9999-12-31T23:59:59Z"), NSDate(252423993599)));
    EXPECT_TRUE(sameTree(date(" 2001-01-01T00:00:01.25Z\n"), NSDate(1.25)));
    EXPECT_TRUE(sameTree(date("10000-01-01T00:00:00Z"), NSDate(252423993600)));
    EXPECT_TRUE(sameTree(date("-0001-12-31T23:59:59Z"), NSDate(-63145526401)));
    EXPECT_TRUE(sameTree(date("-0000-01-01T00:00:00Z"), NSDate(-63145526400)));
    EXPECT_TRUE(sameTree(date("02001-01-01T00:00:00Z"), NSDate(0)));
    EXPECT_TRUE(sameTree(date("402001-01-01T00:00:00Z"), NSDate(400000 / 400 * 146097 * 86400.0)));
}

TEST(XMLReading, FieldsOfDatesRollOver) {
    const std::vector<std::pair<std::string, std::string>> dates{
        {"2024-01-32T00:00:00Z", "2024-02-01T00:00:00Z"},
        {"2001-02-29T00:00:00Z", "2001-03-01T00:00:00Z"},
        {"1900-02-29T00:00:00Z", "1900-03-01T00:00:00Z"},
        {"2001-04-31T00:00:00Z", "2001-05-01T00:00:00Z"},
        {"2001-13-01T00:00:00Z", "2002-01-01T00:00:00Z"},
        {"2001-99-99T00:00:00Z", "2009-06-07T00:00:00Z"},
        {"2001-00-01T00:00:00Z", "2000-12-01T00:00:00Z"},
        {"2001-01-00T00:00:00Z", "2000-12-31T00:00:00Z"},
        {"0000-00-00T00:00:00Z", "-0001-11-30T00:00:00Z"},
        {"9999-12-31T24:00:00Z", "10000-01-01T00:00:00Z"},
        {"2001-01-01T99:99:99Z", "2001-01-05T04:40:39Z"},
        {"2001-01-01T00:60:00Z", "2001-01-01T01:00:00Z"},
        {"2016-12-31T23:59:60Z", "2017-01-01T00:00:00Z"},
        {"2016-12-31T23:59:60.5Z", "2017-01-01T00:00:00.5Z"},
    };
    for (const auto& [text, meaning] : dates) {
        EXPECT_TRUE(
            sameTree(element("<date>" + text + "</date>"), element("<date>" + meaning + "</date>")))
            << text;
    }
}

TEST(XMLReading, DatesBeyondAllYearsAreRefused) {
    const double furthest = NSPropertyListSerialization::maximumDateInterval;
    EXPECT_TRUE(sameTree(element("<date>146138514314-06-20T07:45:04Z</date>"), NSDate(furthest)));
    EXPECT_TRUE(sameTree(element("<date>-146138510313-07-15T16:14:56Z</date>"), NSDate(-furthest)));
    for (const char* text :
         {"146138514314-06-21T00:00:00Z", "-146138510313-07-15T00:00:00Z",
          "200000000001-01-01T00:00:00Z", "99999999999999999999999999999999-01-01T00:00:00Z",
          "-99999999999999999999999999999999-01-01T00:00:00Z"}) {
        EXPECT_EQ(elementRefusal("<date>" + std::string(text) + "</date>"),
                  "a date is more than 146 billion years from 2001, line 1, column 22")
            << text;
    }
}

TEST(XMLReading, MalformedDatesAreRefused) {
    for (const char* text : {"",
                             "2001-01-01",
                             "2001-01-01T00:00:00",
                             "2001-01-01 00:00:00Z",
                             "2001-1-01T00:00:00Z",
                             "2001-1-1T00:00:00Z",
                             "2001-01-1T00:00:00Z",
                             "2001-001-01T00:00:00Z",
                             "2001-01-032T00:00:00Z",
                             "2001-01-01T024:00:00Z",
                             "2001-01-01T00:00:060Z",
                             "2001--1-01T00:00:00Z",
                             "201-01-01T00:00:00Z",
                             "-01-01T00:00:00Z",
                             "--2001-01-01T00:00:00Z",
                             "+2001-01-01T00:00:00Z",
                             "- 2001-01-01T00:00:00Z",
                             "2001-01-01T00:00:00z",
                             "2001-01-01T00:00:00+01:00",
                             "2001-01-01T00:00:00.Z",
                             "2001-01-01T00:00:00.1e3Z",
                             "-001-01-01T00:00:00Z",
                             "2001-01-01T00:00:00ZZ",
                             "2001-01-01T-1:00:00Z"}) {
        EXPECT_EQ(elementRefusal("<date>" + std::string(text) + "</date>"),
                  "malformed date, line 1, column 22")
            << text;
    }
}

TEST(XMLReading, DataIsBase64WithWhiteSpaceAnywhere) {
    const auto data = [](std::string_view text) {
        return element("<data>" + std::string(text) + "</data>");
    };
    EXPECT_TRUE(sameTree(data(""), NSData()));
    EXPECT_TRUE(sameTree(data("\n\t"), NSData()));
    EXPECT_TRUE(sameTree(data("YQ=="), NSData("a")));
    EXPECT_TRUE(sameTree(data("YWI="), NSData("ab")));
    EXPECT_TRUE(sameTree(data("\n\tYW\r\nJj\n ZA = =\n"), NSData("abcd")));
    EXPECT_TRUE(sameTree(data("+/+/"), NSData("\xFB\xFF\xBF")));
    EXPECT_TRUE(sameTree(element("<data/>"), NSData()));
}

TEST(XMLReading, MalformedDataIsRefused) {
    for (const char* text :
         {"Y", "YQ", "YQ=", "Y===", "====", "YQ==YQ==", "YQ==YQ", "=", "Y*==", "YQ==="}) {
        EXPECT_EQ(elementRefusal("<data>" + std::string(text) + "</data>"),
                  "malformed base64 data, line 1, column 22")
            << text;
    }
}

TEST(XMLReading, HexadecimalOldStyleDataIsNotTakenForXML) {
    EXPECT_TRUE(sameTree(readableOldStyle("<da7a>"), NSData("\xDA\x7A")));
    EXPECT_EQ(NSPropertyListSerialization::propertyListWithData("<data>").format,
              PropertyListFormat::XML);
}
