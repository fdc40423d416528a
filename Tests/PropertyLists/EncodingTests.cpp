// SPDX-License-Identifier: MIT
// Text formats in UTF-8, UTF-16 and UTF-32.

#include <gtest/gtest.h>

#include <string>

#include "PropertyLists/PropertyListTesting.h"

namespace {

using namespace std::string_literals;

struct Wide {
    const char* name;
    std::size_t unitSize;
    bool isBigEndian;
    std::string mark;
};

const std::vector<Wide>& wideEncodings() {
    static const std::vector<Wide> encodings{{"UTF-16LE", 2, false, "\xFF\xFE"},
                                             {"UTF-16BE", 2, true, "\xFE\xFF"},
                                             {"UTF-32LE", 4, false, "\xFF\xFE\0\0"s},
                                             {"UTF-32BE", 4, true, "\0\0\xFE\xFF"s}};
    return encodings;
}

std::string declared(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>" + plist("<string>abc</string>");
}

}  // namespace

TEST(Encoding, WideXMLIsReadByMarkByDeclarationAndByItsFirstCharacter) {
    for (const Wide& wide : wideEncodings()) {
        const auto file = [&wide](const std::string& text) {
            return widened(text, wide.unitSize, wide.isBigEndian);
        };
        EXPECT_TRUE(sameTree(readableXML(wide.mark + file(declared("UTF-16"))), "abc"))
            << wide.name;
        EXPECT_TRUE(sameTree(readableXML(wide.mark + file("<true/>")), true)) << wide.name;
        EXPECT_TRUE(sameTree(readableXML(wide.mark + file(" \n<true/>")), true)) << wide.name;
        EXPECT_TRUE(sameTree(readableXML(file(declared(wide.name))), "abc")) << wide.name;
        EXPECT_TRUE(sameTree(readableXML(file("<true/>")), true)) << wide.name;
    }
}

TEST(Encoding, WideOldStyleTextIsReadByMark) {
    for (const Wide& wide : wideEncodings()) {
        const std::string text = widened("{ a = \"b c\"; }", wide.unitSize, wide.isBigEndian);
        EXPECT_TRUE(sameTree(readableOldStyle(wide.mark + text), NSDictionary{{"a", "b c"}}))
            << wide.name;
        EXPECT_NE(refusal(text), "") << wide.name;
    }
}

TEST(Encoding, WideTextHoldsEveryCharacter) {
    const auto open = widened("<string>", 2, true);
    const auto close = widened("</string>", 2, true);
    EXPECT_TRUE(
        sameTree(readableXML("\xFE\xFF" + open + "\x00\xE9\x20\xAC\xD8\x3D\xDE\x00"s + close),
                 "\u00e9\u20ac\U0001F600"));
    EXPECT_TRUE(
        sameTree(readableXML("\0\0\xFE\xFF"s + widened("<string>", 4, true) +
                             "\x00\x01\xF6\x00\x00\x00\x20\xAC"s + widened("</string>", 4, true)),
                 "\U0001F600\u20ac"));
}

TEST(Encoding, BrokenWideTextIsRefusedWithItsPlace) {
    const auto open = "\xFE\xFF"s + widened("<plist>\n<string>ab", 2, true);
    const auto close = widened("</string></plist>", 2, true);
    const std::string message = "the text is not valid UTF-16BE, line 2, column 11";
    EXPECT_EQ(refusal(open + "\xD8\x3D" + close), message);
    EXPECT_EQ(refusal(open + "\xDE\x00"s + close), message);
    EXPECT_EQ(refusal(open + "\xD8\x3D"), message);
    EXPECT_EQ(refusal(open + "\0"s), message);
    for (const std::string& unit :
         {"\x00\x11\x00\x00"s, "\x00\x00\xD8\x3D"s, "\xFF\xFF\xFF\xFF"s, "\0\0\0"s}) {
        EXPECT_EQ(refusal("\0\0\xFE\xFF"s + widened("<a", 4, true) + unit),
                  "the text is not valid UTF-32BE, line 1, column 3");
    }
}

TEST(Encoding, BrokenUTF8IsRefusedWithItsPlace) {
    for (const char* bytes :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC3", "\xE0\x9F\xBF", "\xE2\x82",
          "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x9F\x98", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80", "\xFF", "\xC3("}) {
        EXPECT_EQ(refusal("<string>\n\u00e9" + std::string(bytes) + "</string>"),
                  "the text is not valid UTF-8, line 2, column 2");
        EXPECT_NE(refusal("{ a = \"" + std::string(bytes) + "\"; }"), "");
    }
}

TEST(Encoding, ValidUTF8OfEveryLengthIsRead) {
    const std::string text = "\x7F\u0080\u07FF\u0800\uD7FF\uE000\uFFFD\uFFFF\U00010000\U0010FFFF";
    EXPECT_TRUE(sameTree(readableXML("\xEF\xBB\xBF<string>" + text + "</string>"), text));
    EXPECT_TRUE(sameTree(readableOldStyle("\xEF\xBB\xBF\"" + text + "\""), text));
}

TEST(Encoding, NulCharactersAreRefused) {
    EXPECT_EQ(refusal("<string>a\0b</string>"s),
              "the text contains the character U+0000, line 1, column 10");
    EXPECT_NE(refusal("{ a = \"b\0\"; }"s), "");
    EXPECT_NE(refusal("{}\0"s), "");
    EXPECT_NE(refusal("a = b;\0"s), "");
    EXPECT_NE(refusal("\xFE\xFF"s + widened("{}", 2, true) + "\0\0"s), "");
}

TEST(Encoding, NulCharactersMayFollowXML) {
    EXPECT_TRUE(sameTree(readableXML("<true/>\0"s), true));
    EXPECT_TRUE(sameTree(readableXML("<plist><true/></plist>\n<!-- end -->\0\0 \n\0"s), true));
    EXPECT_TRUE(sameTree(readableXML("\xFE\xFF"s + widened("<true/>", 2, true) + "\0\0"s), true));
    const std::string message = "the text contains the character U+0000, line 1, column ";
    EXPECT_EQ(refusal("<true/>\0x"s), message + "8");
    EXPECT_EQ(refusal("<true/>\0<!-- -->"s), message + "8");
    EXPECT_EQ(refusal("<true/>\0\xFF"s), message + "8");
    EXPECT_EQ(refusal(" \0<true/>"s), message + "2");
    EXPECT_EQ(refusal("<plist><true/>\0</plist>"s), message + "15");
    EXPECT_EQ(refusal("<plist><true/>\0\0\0"s),
              "malformed XML: <plist> is not closed, line 1, column 1");
    EXPECT_NE(refusal("<string>abc\0"s), "");
}

TEST(Encoding, DeclarationsOfOtherEncodingsAreRefused) {
    EXPECT_EQ(refusal(declared("ISO-8859-1")), "unsupported encoding ISO-8859-1, line 1, column 1");
    EXPECT_NE(refusal(declared("Shift_JIS")), "");
    EXPECT_TRUE(sameTree(readableXML(declared("us-ascii")), "abc"));
}
